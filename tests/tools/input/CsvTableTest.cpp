#include "input/CsvTable.h"

#include <gtest/gtest.h>

#include "Quillet/Db_Database.h"
#include "support/TemporaryFolder.h"

namespace quillet::tool {
namespace {

TEST(CsvTable, Progress_MovesThroughBothReadings) {
    constexpr std::uint64_t Rows = 1000;
    const test::TemporaryFolder folder;
    std::string text = "name,h\r\n";
    for (std::uint64_t i = 0; i < Rows; ++i) {
        text += "row,1\r\n";
    }
    test::WriteBytes(folder / "in.csv", text);

    CsvTable csv(test::Utf8(folder / "in.csv"), std::nullopt);
    std::vector<std::uint64_t> steps;
    const auto step = [&](std::uint64_t done) { steps.push_back(done); };
    csv.ReadStructure(false, step);
    ASSERT_EQ(steps.size(), Rows);
    EXPECT_LE(steps.front(), csv.Work() / 100) << "from the beginning";
    EXPECT_EQ(steps.back(), csv.Work() / 2);

    DbDatabase database;
    DbTableInfo& table = *database.CreateTable("Mine", DbTableInfo::Table);
    for (const DbFieldDescr* field : csv.Structure()) {
        AppendField(*table.GetDescr()) = *field;
    }
    csv.FillRows(*table.GetData(), step);
    database.Sync();
    ASSERT_EQ(steps.size(), 2 * Rows);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(steps.back(), csv.Work());
}

}  // namespace
}  // namespace quillet::tool
