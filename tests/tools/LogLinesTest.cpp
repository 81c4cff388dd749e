#include "LogLines.h"

#include <gtest/gtest.h>

#include "Quillet/Db_Database.h"
#include "platform/TemporaryFolder.h"

namespace quillet::tool {
namespace {

TEST(LogLines, IsFault_EveryLineOfASoundCatalog_IsNone) {
    const test::TemporaryFolder folder;
    std::filesystem::copy_file(std::filesystem::path(QUILLET_SOURCE_DIR) / "examples/catalogs/materials.xml",
                               folder / "sound.xml");
    for (const bool sequential : {false, true}) {
        DbDatabase database(test::Utf8(folder / "sound.xml"));
        database.GetSource()->SetSequentialAccess(sequential);
        database.LoadTables();
        for (int i = 0; i < database.GetTablesCount(); ++i) {
            EXPECT_TRUE(database.GetTableData(static_cast<std::size_t>(i))->ParseXmlData());
        }
        database.RenameTable("Timber", "Wood");
        std::vector<CString> lines;
        database.GetError(lines);
        EXPECT_GT(lines.size(), 7U);
        for (const CString& line : lines) {
            EXPECT_FALSE(IsFault(line.ToUtf8())) << line;
        }
        database.Sync();
    }
}

TEST(LogLines, IsFault_AnyOtherLine_IsOne) {
    EXPECT_TRUE(IsFault("Invalid xml database file format"));
    EXPECT_TRUE(IsFault("Table 'x' has malformed rows"));
    EXPECT_TRUE(IsFault("something new"));
    EXPECT_TRUE(IsFault(""));
}

TEST(LogLines, IsFault_TableNameThatReadsLikeAReport_StaysAFault) {
    EXPECT_TRUE(IsFault("Table 'a' created, index = 2' has malformed rows"));
    EXPECT_TRUE(IsFault("Table 'a' [1 row] data parsed in: 0.1 [s]' has malformed rows"));
}

}  // namespace
}  // namespace quillet::tool
