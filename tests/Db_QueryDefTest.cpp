#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "support/CatalogHelpers.h"
#include "support/TestHelpers.h"

namespace {

using quillet::test::TakeLog;
using quillet::test::ThrownMessage;
using testing::Contains;
using testing::IsEmpty;

class DbQueryDefTest : public testing::Test {
protected:
    DbQueryDefTest() {
        m_database->CreateTable("t", DbTableInfo::Table)
            ->GetDescr()
            ->CreateField("a", false, DbFieldDescr::Long);
        TakeLog(*m_database);
    }

    std::unique_ptr<DbDatabase> m_database = std::make_unique<DbDatabase>();
    DbQueryDef m_def{m_database.get()};
};

TEST_F(DbQueryDefTest, Construct_IsClosedAndHasNoText) {
    EXPECT_FALSE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetSQL(), "");
    EXPECT_EQ(m_def.GetName(), "");
    EXPECT_EQ(m_def.GetDatabase(), m_database.get());
}

TEST_F(DbQueryDefTest, Create_WithAGoodText_IsOpen) {
    m_def.Create("q", "select a from t where a > 1");
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetSQL(), "select a from t where a > 1");
    EXPECT_EQ(m_def.GetName(), "q");
    EXPECT_EQ(m_database->GetTablesCount(), 1) << "nothing is built";
}

TEST_F(DbQueryDefTest, Create_OverAnUnknownTable_ThrowsAndTheLogSaysWhy) {
    EXPECT_EQ(ThrownMessage([&] { m_def.Create("q", "select x from nosuchtable"); }),
              "Quillet exception thrown\r\nFile: Db/Quillet/Db_QueryDef @ 55\r\n"
              "Message: Invalid 'select x from nosuchtable' query");
    const auto lines = TakeLog(*m_database);
    EXPECT_THAT(lines, Contains("SQL Analyze - no table 'nosuchtable' found"));
    EXPECT_THAT(lines, Contains("SQL Analyze - failed"));
}

TEST_F(DbQueryDefTest, Create_ThatThrows_KeepsNameAndText) {
    EXPECT_NE(ThrownMessage([&] { m_def.Create("q", "select x from t"); }), "");
    EXPECT_EQ(m_def.GetName(), "q");
    EXPECT_EQ(m_def.GetSQL(), "select x from t");
    EXPECT_FALSE(m_def.IsOpen());
    m_database->GetTableDescr("t")->CreateField("x", false, DbFieldDescr::Long);
    EXPECT_TRUE(m_def.IsOpen());
}

TEST_F(DbQueryDefTest, Create_TableName_Throws) {
    EXPECT_NE(ThrownMessage([&] { m_def.Create("q", "t"); }), "") << "only a query is one";
}

TEST_F(DbQueryDefTest, Create_WithoutADatabase_ThrowsAndKeepsNameAndText) {
    DbQueryDef def(nullptr);
    EXPECT_EQ(ThrownMessage([&] { def.Create("q", "select a from t"); }),
              "Quillet exception thrown\r\nFile: Db/Quillet/Db_QueryDef @ 55\r\n"
              "Message: Invalid 'select a from t' query");
    EXPECT_EQ(def.GetSQL(), "select a from t");
    EXPECT_EQ(def.GetName(), "q");
    EXPECT_FALSE(def.IsOpen());
    EXPECT_EQ(def.GetDatabase(), nullptr);
}

TEST_F(DbQueryDefTest, IsOpen_AnalysesTheTextByEveryCall) {
    m_def.Create("q", "select a from t");
    TakeLog(*m_database);
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_THAT(TakeLog(*m_database), Contains("SQL Analyze - ok"));
    m_database->DeleteTable("t");
    EXPECT_FALSE(m_def.IsOpen());
    EXPECT_THAT(TakeLog(*m_database), Contains("SQL Analyze - failed"));
}

TEST_F(DbQueryDefTest, Close_LetsGoOfDatabaseAndTextButKeepsTheName) {
    m_def.Create("q", "select a from t");
    TakeLog(*m_database);
    m_def.Close();
    EXPECT_FALSE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetDatabase(), nullptr);
    EXPECT_EQ(m_def.GetSQL(), "");
    EXPECT_EQ(m_def.GetName(), "q");
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
}

TEST_F(DbQueryDefTest, Copy_HasDatabaseTextAndName) {
    m_def.Create("q", "select a from t");
    DbQueryDef copy(m_def);
    DbQueryDef assigned(nullptr);
    assigned = m_def;
    m_def.Close();
    for (DbQueryDef* const def : {&copy, &assigned}) {
        EXPECT_TRUE(def->IsOpen());
        EXPECT_EQ(def->GetDatabase(), m_database.get());
        EXPECT_EQ(def->GetSQL(), "select a from t");
        EXPECT_EQ(def->GetName(), "q");
    }
}

TEST_F(DbQueryDefTest, DatabaseGone_IsClosed) {
    m_def.Create("q", "select a from t");
    m_database.reset();
    EXPECT_FALSE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetDatabase(), nullptr);
    EXPECT_EQ(m_def.GetSQL(), "select a from t");
    EXPECT_NE(ThrownMessage([&] { m_def.Create("q", "select a from t"); }), "");
}

}  // namespace
