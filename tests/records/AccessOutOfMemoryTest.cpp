// Reading an Access file while chosen allocations fail.
#include "support/AccessHelpers.h"
#include "support/AllocationPlan.h"
#include "support/CatalogHelpers.h"

namespace quillet::test {
namespace {

using AccessOutOfMemory = WritingTest;

TEST_F(AccessOutOfMemory, ReadingThatRunsOutOfMemory_LeavesTheDatabaseAsBeforeItBegan) {
    const StaticsGuard guard;
    DbSource::ForceXML = false;
    Execute("CREATE TABLE Bolts (name VARCHAR(20), d DOUBLE, n INTEGER)");
    Execute("INSERT INTO Bolts VALUES ('M8', 8.5, 1)");
    Execute("INSERT INTO Bolts VALUES ('M10', 10, NULL)");
    const CString path(Utf8(m_folder / "tables.mdb"));
    std::filesystem::copy_file(File(), m_folder / "tables.mdb");
    const std::string bytes = ReadBytes(m_folder / "tables.mdb");
    const auto sound = [&] {
        DbDatabase database(path);
        return Dump(database);
    }();
    ASSERT_NE(sound.find("M10"), std::string::npos) << sound;
    const std::size_t failed = SweepAllocations([&](std::size_t failing) {
        DbDatabase database(path);
        AllocationPlan plan(failing, Failing::Once, Callers::Ours);
        bool isThrown = false;
        try {
            database.GetTablesCount();
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        plan.Disarm();
        EXPECT_FALSE(database.IsChanged()) << failing;
        EXPECT_EQ(isThrown, !database.LastReadError().IsEmpty()) << failing;
        EXPECT_EQ(Dump(database), sound) << failing;
        return plan.HasFailed();
    });
    EXPECT_GT(failed, 100U);
    EXPECT_EQ(ReadBytes(m_folder / "tables.mdb"), bytes);
}

}  // namespace
}  // namespace quillet::test
