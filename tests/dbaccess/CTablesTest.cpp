// The catalog of tables.
#include "Quillet/dbaccess/CTables.h"

#include <gmock/gmock.h>

#include "support/AccessHelpers.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CTablesTest : public WritingTest {
protected:
    void SetUp() override {
        WritingTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        Execute("CREATE TABLE [a table] (x double)");
        Execute("CREATE VIEW [a view] AS SELECT * FROM [a table]");
        Execute("CREATE TABLE other (x double)");
    }
    static std::vector<std::string> NamesOf(CTables& tables) {
        std::vector<std::string> names;
        for (; !tables.IsEOF(); tables.MoveNext()) {
            names.push_back(tables.m_name.ToUtf8() + ": " + tables.m_type.ToUtf8());
        }
        return names;
    }
};

TEST_F(CTablesTest, Defaults_AreThoseOfACursorWithoutAStatement) {
    CTables tables(nullptr);
    EXPECT_EQ(tables.GetDefaultConnect(), "ODBC;");
    EXPECT_EQ(tables.GetDefaultSQL(), "!");
    EXPECT_TRUE(tables.m_qualifierFilter.IsEmpty());
    EXPECT_TRUE(tables.m_ownerFilter.IsEmpty());
    EXPECT_TRUE(tables.m_nameFilter.IsEmpty());
    EXPECT_EQ(tables.m_typeFilter, "'TABLE'");
}

TEST_F(CTablesTest, RunTimeClass_IsDerivedFromTheCursor) {
    const CTables tables(nullptr);
    EXPECT_EQ(tables.GetRuntimeClass(), &CTables::classCTables);
    EXPECT_TRUE(tables.IsKindOf(&odbc::Cursor::classCursor));
    EXPECT_TRUE(tables.IsKindOf(&CObject::classCObject));
    EXPECT_FALSE(tables.IsKindOf(&DBACCESS_RECORDSET::classDBACCESS_RECORDSET));
}

TEST_F(CTablesTest, Open_WithoutAConnection_GivesFalse) {
    CTables nowhere(nullptr);
    EXPECT_FALSE(nowhere.Open());
    EXPECT_TRUE(nowhere.IsEOF());
    CTables closed(std::make_shared<odbc::Connection>());
    EXPECT_FALSE(closed.Open());
}

TEST_F(CTablesTest, Open_StandsAtTheFirstTable) {
    CTables tables(Connect());
    ASSERT_TRUE(tables.Open(odbc::Cursor::Dynaset, nullptr, odbc::Cursor::ReadOnly));
    EXPECT_EQ(tables.GetODBCFieldCount(), 5);
    EXPECT_THAT(NamesOf(tables), ElementsAre("a table: TABLE", "other: TABLE"));
    tables.MoveNext();
    EXPECT_TRUE(tables.IsEOF());
    tables.MoveFirst();
    EXPECT_EQ(tables.m_name, "a table");
}

TEST_F(CTablesTest, Filters_ChooseNamesAndTypes) {
    CTables tables(Connect());
    tables.m_nameFilter = "other";
    ASSERT_TRUE(tables.Open());
    EXPECT_THAT(NamesOf(tables), ElementsAre("other: TABLE"));
    tables.m_nameFilter = "absent";
    ASSERT_TRUE(tables.Open());
    EXPECT_THAT(NamesOf(tables), IsEmpty());
    tables.m_nameFilter = "";
    tables.m_typeFilter = "'VIEW'";
    ASSERT_TRUE(tables.Open());
    EXPECT_THAT(NamesOf(tables), ElementsAre("a view: VIEW"));
}

TEST_F(CTablesTest, SystemTablesThatADriverLists_ArePassedOver) {
    const std::filesystem::path path = SharedDatabase("types.mdb");
    if (!std::filesystem::exists(path)) {
        GTEST_SKIP() << "no " << path;
    }
    auto connection = std::make_shared<odbc::Connection>();
    CString text = "DBQ=%s;Driver={Microsoft Access Driver (*.mdb)}";
    text.Replace("%s", platform::DriverPath(Utf8(path)));
    connection->Open(text, odbc::Connection::ReadOnly | odbc::Connection::NoDialog);
    CTables tables(connection);
    ASSERT_TRUE(tables.Open());
    EXPECT_THAT(NamesOf(tables), ElementsAre("values: TABLE", "no_rows: TABLE", "desc_48: TABLE"));
    tables.m_typeFilter = "";
    ASSERT_TRUE(tables.Open());
    EXPECT_THAT(NamesOf(tables), testing::Contains("MSysObjects: SYSTEM TABLE"));
}

}  // namespace
}  // namespace quillet::test
