#include "input/LogLines.h"

#include <gtest/gtest.h>

#include "Quillet/Db_Database.h"
#include "TestPaths.h"
#include "support/TemporaryFolder.h"

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

TEST(LogLines, IsOfQuery_EveryLineOfAQuery_IsSo) {
    DbDatabase database;
    ASSERT_NE(database.CreateTable("Bolts", DbTableInfo::Table), nullptr);
    ASSERT_TRUE(database.GetTableDescr("Bolts")->CreateField("name", true, DbFieldDescr::Text));
    std::vector<CString> ignored;
    database.GetError(ignored);
    CString name;
    for (const char* query :
         {"Bolts", "Nuts", "select * from Bolts", "select nam from Bolts where d > 1 or d"}) {
        database.Query(query, name);
        std::vector<CString> lines;
        database.GetError(lines);
        for (const CString& line : lines) {
            EXPECT_TRUE(IsOfQuery(line.ToUtf8())) << line;
        }
    }
}

TEST(LogLines, IsOfQuery_LinesAboutTables_AreNot) {
    EXPECT_FALSE(IsOfQuery("Table 'SQL Analyze - ' has malformed rows"));
    EXPECT_FALSE(IsOfQuery("Query 'x' stands on itself, or on too many other queries"));
    EXPECT_FALSE(IsOfQuery("Table 'Query_0' created, index = 7, type = QUERY, sql = 'x'"));
}

TEST(LogLines, IsQueryRead_OnlyWhereTheTextIsTakenApart_IsTrue) {
    EXPECT_TRUE(IsQueryRead({"SQL Analyze - query 'select'", "SQL Analyze - failed"}));
    EXPECT_FALSE(IsQueryRead({"SQL Analyze - table 'query ' not found"}));
    EXPECT_FALSE(IsQueryRead({}));
}

TEST(LogLines, QueryComplaint_LinesOfTheAnalyzer_AreJoinedWithoutItsAccount) {
    EXPECT_EQ(QueryComplaint({"SQL Analyze - query 'x'", "SQL Analyze - a", "SQL Analyze - b",
                              "SQL Analyze - failed", "Query 'x' processed in 1.0000 [s]"}),
              "SQL Analyze - a; b");
    EXPECT_EQ(QueryComplaint({"SQL Analyze - query 'x'", "SQL Analyze - ok"}),
              "the brackets of the conditions don't match");
}

TEST(LogLines, QueryComplaint_QueryThatStandsOnItself_IsNoMatterOfBrackets) {
    const std::string cycle = "Query 'select n from t' stands on itself, or on too many other queries";
    EXPECT_EQ(QueryComplaint({"SQL Analyze - query 'x'", "SQL Analyze - ok", cycle}), cycle);
    EXPECT_EQ(QueryComplaint({"SQL Analyze - query 'x'", "SQL Analyze - a", cycle, "SQL Analyze - failed"}),
              "SQL Analyze - a; " + cycle);
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
