// Reading, querying and saving while chosen allocations fail: nothing is lost, and no answer is wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/AllocationPlan.h"
#include "support/ReadingTest.h"

namespace {

using namespace quillet::test;

class OutOfMemory : public ReadingTest {
protected:
    static void Change(DbDatabase& database) {
        (*database.GetTableData("Header"))[0][uint64{0}].SetValue("Changed");
    }
};

INSTANTIATE_TEST_SUITE_P(, OutOfMemory, testing::Values(Reading::Whole, Reading::Sequential), ReadingName);

// Reads every table, and ignores failures out of memory.
std::string ReadText(DbDatabase& database) {
    try {
        return Dump(database);
    } catch (const std::bad_alloc&) {
        return "no memory";
    }
}

TEST_P(OutOfMemory, ReadingThatRunsOutOfMemory_LeavesTheDatabaseAsBeforeItBegan) {
    WriteBytes(File(), SmallCatalog());
    const std::string sound = Dump(*Open(File(), GetParam()));
    bool isThrown = false;
    const std::size_t failed = SweepAllocations([&](std::size_t failing) {
        const auto database = Open(File(), GetParam());
        AllocationPlan plan(failing);
        const std::string seen = ReadText(*database);
        plan.Disarm();
        isThrown = isThrown || seen == "no memory";
        EXPECT_FALSE(database->IsChanged()) << failing;
        EXPECT_EQ(Dump(*database), sound) << failing;
        EXPECT_FALSE(database->IsChanged()) << failing;
        EXPECT_EQ(database->LastReadError(), CString()) << failing;
        return plan.HasFailed();
    });
    EXPECT_GT(failed, 100U);
    EXPECT_TRUE(isThrown);
    EXPECT_EQ(ReadBytes(File()), SmallCatalog());
}

TEST_P(OutOfMemory, ADatabaseThatOnlyLooksWhileMemoryIsShort_LeavesTheFileAlone) {
    WriteBytes(File(), SmallCatalog());
    SweepAllocations([&](std::size_t failing) {
        auto database = Open(File(), GetParam());
        AllocationPlan plan(failing, Failing::FromThereOn);
        ReadText(*database);
        database.reset();
        plan.Disarm();
        const bool isKept = ReadBytes(File()) == SmallCatalog();
        EXPECT_TRUE(isKept) << failing;
        return plan.HasFailed() && isKept;
    });
}

TEST_P(OutOfMemory, SaveThatRunsOutOfMemory_LeavesTheOldFileOrTheNew) {
    WriteBytes(File(), SmallCatalog());
    const auto database = Open(File(), GetParam());
    Change(*database);
    const std::string changed = Dump(*database);
    ASSERT_TRUE(database->Save(Path("expected.xml")));
    const std::string expected = ReadBytes(m_folder / "expected.xml");
    SweepAllocations([&](std::size_t failing) {
        WriteBytes(File(), SmallCatalog());
        const auto other = Open(File(), GetParam());
        Change(*other);
        const CString path = Path();
        AllocationPlan plan(failing);
        const bool isSaved = other->Save(path);
        plan.Disarm();
        EXPECT_EQ(ReadBytes(File()), isSaved ? expected : SmallCatalog()) << failing;
        EXPECT_EQ(other->LastSaveError().IsEmpty(), isSaved) << failing;
        EXPECT_EQ(Dump(*other), changed) << failing;
        EXPECT_TRUE(other->Save(Path())) << failing << ": " << other->LastSaveError();
        EXPECT_EQ(ReadBytes(File()), expected) << failing;
        return plan.HasFailed();
    });
}

TEST_P(OutOfMemory, AQueryThatRunsOutOfMemory_IsRightOrSaysSo) {
    WriteBytes(File(), SmallCatalog());
    const char* const texts[] = {"select name from Alpha where count > 1",
                                 "select * from Alpha order by count desc",
                                 "select distinct name from Alpha"};
    for (const char* text : texts) {
        CString name;
        const auto sound = Open(File(), GetParam());
        ASSERT_TRUE(sound->Query(text, name));
        const auto expected = RowsOf(*sound, name);
        SweepAllocations([&](std::size_t failing) {
            const auto database = Open(File(), GetParam());
            bool isAnswered = false;
            AllocationPlan plan(failing);
            try {
                isAnswered = database->Query(text, name);
            } catch (const std::bad_alloc&) {
                isAnswered = false;
            }
            plan.Disarm();
            if (isAnswered) {
                EXPECT_EQ(RowsOf(*database, name), expected) << text << ", " << failing;
            }
            EXPECT_TRUE(database->Query(text, name)) << text << ", " << failing;
            EXPECT_EQ(RowsOf(*database, name), expected) << text << ", " << failing;
            database->Sync();
            return plan.HasFailed();
        });
    }
}

}  // namespace
