#include "Quillet/registry/Registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "support/AllocationPlan.h"
#include "support/CatalogHelpers.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

constexpr int Many = 50000;

CString Numbered(const char* name, int number) {
    return CString(name + std::to_string(number));
}

// Looking at all tables for each table would take minutes with so many, instead of a second or two.
class ManyTables : public testing::TestWithParam<Reading> {
protected:
    std::unique_ptr<DbDatabase> OpenMany() {
        CatalogParts parts;
        for (int i = 0; i < Many; ++i) {
            const std::string name = "Table " + std::to_string(i);
            parts.m_bodyStructure += TableXml(name, FieldXml("n", LongType));
            parts.m_bodyData += TableXml(name, "<row n=\"" + std::to_string(i) + "\" />\n");
        }
        WriteBytes(m_folder / "many.xml", parts.Xml());
        return Open(m_folder / "many.xml", GetParam());
    }

    TemporaryFolder m_folder;
};

INSTANTIATE_TEST_SUITE_P(, ManyTables, testing::Values(Reading::Whole, Reading::Sequential), ReadingName);

TEST_P(ManyTables, Open_ReadAndDestroy_CostEachTableTheSame) {
    const auto database = OpenMany();
    const int count = database->GetTablesCount();
    ASSERT_GE(count, Many);
    for (int i = count - Many; i < count; ++i) {
        ASSERT_EQ(database->GetTableData(static_cast<std::size_t>(i))->size(), 1U);
    }
    EXPECT_EQ(Cell(database->GetTableData("table 777"), 0, 0), "777");
    EXPECT_TRUE(LogHolds(*database, "Table 'Table 777' [1 row] data parsed in: "));
    EXPECT_FALSE(database->IsChanged());
}

class ManyAnswers : public testing::Test {
protected:
    ManyAnswers() {
        DbTableInfo* const base = m_database->CreateTable("Base", DbTableInfo::Table);
        for (int i = 0; i < Many; ++i) {
            m_database->CreateTable(Numbered("Answer ", i), DbTableInfo::Query,
                                    Numbered("select n from Base where n = ", i), base);
        }
        EXPECT_EQ(m_database->GetTablesCount(), Many + 1);
    }

    std::unique_ptr<DbDatabase> m_database = std::make_unique<DbDatabase>();
};

TEST_F(ManyAnswers, DropAnswers_CostsEachTheSame) {
    EXPECT_EQ(m_database->DropAnswers(), Many);
    EXPECT_EQ(m_database->GetTablesCount(), 1);
}

TEST_F(ManyAnswers, DeleteTable_BelowThem_CostsEachTheSame) {
    m_database->DeleteTable("base");
    EXPECT_EQ(m_database->GetTablesCount(), 0);
}

TEST_F(ManyAnswers, Destroy_CostsEachTheSame) {
    m_database.reset();
}

TEST(Registry, TwoTablesOfOneContents_AreNamedByTheFirstInOrderOfTheirNames) {
    DbDatabase database;
    DbTableInfo* const made = database.CreateTable("B", DbTableInfo::Table);
    made->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
    DbTableData& data = *made->GetData();
    DbTableInfo shared("a", DbTableInfo::Table, 0, "", made->GetDescr(), &data, nullptr);
    const auto nameInLog = [&] {
        TakeLog(database);
        EXPECT_TRUE(data.Load(ElementOf("<t><row n='1'/></t>").Get()));
        const std::string line = TakeLog(database).back();
        return line.substr(0, line.find(" ["));
    };
    EXPECT_EQ(nameInLog(), "Table 'B'");
    ASSERT_NE(database.CreateTable(&shared), nullptr);
    EXPECT_EQ(nameInLog(), "Table 'a'");
    EXPECT_TRUE(database.RenameTable("a", "c"));
    EXPECT_EQ(nameInLog(), "Table 'B'");
    database.DeleteTable("B");
    EXPECT_EQ(nameInLog(), "Table 'c'");
    EXPECT_EQ(database.GetTableInfo("c")->GetIndex(), 0U);
}

// ---- Out of memory

// Tables A, B and C, a query Q over B, a query R over Q, and a join.
std::unique_ptr<DbDatabase> SixTables() {
    auto database = std::make_unique<DbDatabase>();
    for (const char* name : {"A", "B", "C"}) {
        DbTableInfo* const info = database->CreateTable(name, DbTableInfo::Table);
        info->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
        info->GetData()->AddRow();
    }
    DbTableInfo* const query =
        database->CreateTable("Q", DbTableInfo::Query, "select n from B", database->GetTableInfo("B"));
    database->CreateTable("R", DbTableInfo::Query, "select n from Q", query);
    database->inner_join("A", "C", "n", "=", "n");
    // The queries are answered now, so that no later step answers them.
    database->GetTableData("R");
    database->Sync();
    TakeLog(*database);
    return database;
}

// The whole state of the registry, and what its lookups find. Without the log: a step succeeds even if there
// is no memory for its line.
Strings StateOf(DbDatabase& database) {
    Strings state;
    for (int i = 0; i < database.GetTablesCount(); ++i) {
        const auto index = static_cast<std::size_t>(i);
        const CString name = database.GetTableName(index);
        const DbTableInfo* const info = database.GetTableInfo(name);
        const bool isWhole = info != nullptr && info->GetIndex() == index &&
                             info->GetDescr() == database.GetTableDescr(index) &&
                             info->GetData()->GetParent() == &database && info->GetName() == name;
        const DbTableInfo* const related = info == nullptr ? nullptr : info->GetRelated();
        state.push_back(name.ToUtf8() + (isWhole ? "" : " broken") +
                        (related == nullptr ? "" : " over " + related->GetName().ToUtf8()));
    }
    state.push_back(database.IsChanged() ? "changed" : "unchanged");
    return state;
}

// Fails each allocation of the step once, each time in a fresh database: the step happens completely or not
// at all.
void ExpectWholeOrNotAtAll(const std::function<void(DbDatabase&)>& step) {
    const Strings before = StateOf(*SixTables());
    Strings after;
    {
        const auto database = SixTables();
        step(*database);
        after = StateOf(*database);
    }
    ASSERT_NE(before, after);
    const std::size_t failures = SweepAllocations([&](std::size_t failing) {
        const auto database = SixTables();
        bool isOutOfMemory = false;
        AllocationPlan plan(failing);
        try {
            step(*database);
        } catch (const std::bad_alloc&) {
            isOutOfMemory = true;
        }
        plan.Disarm();
        // Standard algorithms may do without the memory that they request.
        EXPECT_TRUE(plan.HasFailed() || !isOutOfMemory) << failing;
        EXPECT_EQ(StateOf(*database), isOutOfMemory ? before : after) << failing;
        step(*database);
        EXPECT_THAT(StateOf(*database), testing::Not(testing::Contains(testing::HasSubstr("broken"))));
        return plan.HasFailed();
    });
    EXPECT_GT(failures, 3U);
}

TEST(DbRegistryOutOfMemory, CreateTable_HappensWhollyOrNotAtAll) {
    ExpectWholeOrNotAtAll([](DbDatabase& database) {
        database.CreateTable("A table whose name is too long for any string to hold in itself",
                             DbTableInfo::Table);
    });
}

TEST(DbRegistryOutOfMemory, CreateTable_OfAQuery_HappensWhollyOrNotAtAll) {
    ExpectWholeOrNotAtAll([](DbDatabase& database) {
        database.CreateTable("Another query over the table B", DbTableInfo::Query,
                             "select n from B where n > 0", database.GetTableInfo("B"));
    });
}

TEST(DbRegistryOutOfMemory, CreateTableOfInfo_TakesOverWhollyOrNothing) {
    const Strings before = StateOf(*SixTables());
    SweepAllocations([&](std::size_t failing) {
        const auto database = SixTables();
        auto descr = std::make_unique<DbTableDescr>(database.get());
        auto data = std::make_unique<DbTableData>(database.get(), descr.get());
        DbTableInfo info("A name that is too long for any string to hold in itself", DbTableInfo::Table, 0,
                         "", descr.get(), data.get(), nullptr);
        const DbTableInfo* made = nullptr;
        bool isOutOfMemory = false;
        AllocationPlan plan(failing);
        try {
            made = database->CreateTable(&info);
        } catch (const std::bad_alloc&) {
            isOutOfMemory = true;
        }
        plan.Disarm();
        EXPECT_EQ(made == nullptr, isOutOfMemory) << failing;
        if (made != nullptr) {
            static_cast<void>(descr.release());
            static_cast<void>(data.release());
        } else {
            // They are still the caller's.
            data.reset();
            descr.reset();
            EXPECT_EQ(StateOf(*database), before);
        }
        return plan.HasFailed();
    });
}

TEST(DbRegistryOutOfMemory, RenameTable_HappensWhollyOrNotAtAll) {
    for (const char* name : {"b", "q", "r"}) {
        ExpectWholeOrNotAtAll([&](DbDatabase& database) {
            database.RenameTable(name, "A new name that is too long for any string to hold in itself");
        });
    }
}

TEST(DbRegistryOutOfMemory, RenameTable_OntoAnExistingName_HappensWhollyOrNotAtAll) {
    const Strings before = StateOf(*SixTables());
    SweepAllocations([&](std::size_t failing) {
        const auto database = SixTables();
        bool isOutOfMemory = false;
        AllocationPlan plan(failing);
        try {
            database->RenameTable("B", "C");
        } catch (const std::bad_alloc&) {
            isOutOfMemory = true;
        }
        plan.Disarm();
        EXPECT_EQ(StateOf(*database) == before, isOutOfMemory) << failing;
        database->DeleteTable("C");
        database->DeleteTable("A");
        return plan.HasFailed();
    });
}

TEST(DbRegistryOutOfMemory, DeleteTable_HappensWhollyOrNotAtAll) {
    for (const char* name : {"a", "B", "Q", "R"}) {
        ExpectWholeOrNotAtAll([&](DbDatabase& database) { database.DeleteTable(name); });
    }
}

TEST(DbRegistryOutOfMemory, DropAnswers_HappensWhollyOrNotAtAll) {
    ExpectWholeOrNotAtAll([](DbDatabase& database) { database.DropAnswers(); });
}

TEST(DbRegistryOutOfMemory, Destroy_WithoutAnyMemory_DeletesEverything) {
    const std::ptrdiff_t before = LiveBlocks();
    auto database = SixTables();
    AllocationPlan plan(1, Failing::FromThereOn);
    database.reset();
    plan.Disarm();
    EXPECT_EQ(LiveBlocks() - before, 0);
}

}  // namespace
