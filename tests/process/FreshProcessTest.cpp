// Counters that start with the process: nothing may have counted before. The order of the tests matters,
// because opening a cursor also runs a query.
#include <gtest/gtest.h>

#include "Quillet/IQuillet.h"

namespace {

TEST(FreshProcessTest, FirstQueryTable_IsNumberedZero) {
    EXPECT_EQ(DbDatabase::m_queriesCount, 0);
    EXPECT_EQ(DbDatabase::m_openDbCount, 0);
    DbDatabase database;
    DbTableInfo* const info = database.CreateTable("t", DbTableInfo::Table);
    info->GetDescr()->CreateField("a", false, DbFieldDescr::Long);
    quillet::CString name;
    ASSERT_TRUE(database.Query("select * from t where a = 1", name));
    EXPECT_EQ(name, "Query_0");
    EXPECT_EQ(DbDatabase::m_queriesCount, 1);
    EXPECT_EQ(DbDatabase::m_openDbCount, 1);
}

TEST(FreshProcessTest, FirstBookmark_IsTwo) {
    EXPECT_EQ(DbRecordset::bookmarkid, 0U);
    DbDatabase database;
    database.CreateTable("t", DbTableInfo::Table);
    DbRecordset rs(&database);
    ASSERT_TRUE(rs.Open("t"));
    EXPECT_EQ(rs.GetBookmark(), 2U);
    EXPECT_EQ(rs.GetBookmark(), 3U);
    EXPECT_EQ(DbRecordset::bookmarkid, 2U);
}

}  // namespace
