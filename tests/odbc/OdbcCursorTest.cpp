// Cursors and connections over the driver that can write.
#include "Quillet/odbc/Cursor.h"

#include <gmock/gmock.h>

#include "Quillet/odbc/Transaction.h"
#include "support/AccessHelpers.h"

namespace quillet::test {
namespace {

using odbc::Connection;
using odbc::Cursor;
using odbc::DatabaseError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// ---- DatabaseError

TEST(DatabaseErrorTest, GetErrorMessage_CopiesAndCutsTheText) {
    DatabaseError error("HY000", "no such table");
    WCHAR buffer[8] = {};
    unsigned int context = 7;
    EXPECT_EQ(error.GetErrorMessage(buffer, 8, &context), 1);
    EXPECT_EQ(CString(buffer), "no such");
    EXPECT_EQ(context, 0U);
    EXPECT_EQ(error.GetErrorMessage(buffer, 0, nullptr), 0);
    EXPECT_EQ(error.GetErrorMessage(nullptr, 8, nullptr), 0);
    EXPECT_EQ(error.State(), "HY000");
    EXPECT_TRUE(error.IsKindOf(&CException::classCException));
    EXPECT_EQ(error.GetRuntimeClass(), &DatabaseError::classDatabaseError);
}

// ---- Connection

class OdbcConnectionTest : public WritingTest {};

TEST_F(OdbcConnectionTest, ExecuteSql_ThrowsWhatTheDriverSays) {
    const auto connection = Connect();
    EXPECT_THAT(ErrorOf([&] { connection->ExecuteSql("DROP TABLE absent"); }),
                HasSubstr("no such table: absent"));
    EXPECT_EQ(ErrorOf([&] { connection->ExecuteSql("CREATE TABLE t (x double)"); }), "");
    EXPECT_EQ(ErrorOf([&] { connection->ExecuteSql("DELETE FROM t"); }), "");
}

TEST_F(OdbcConnectionTest, ExecuteSql_OnAConnectionThatIsClosedOrReadOnly_IsRefused) {
    Connection closed;
    EXPECT_THAT(ErrorOf([&] { closed.ExecuteSql("CREATE TABLE t (x double)"); }), HasSubstr("not open"));
    const auto connection = Connect();
    EXPECT_TRUE(connection->IsOpen());
    connection->Close();
    EXPECT_FALSE(connection->IsOpen());
    EXPECT_THAT(ErrorOf([&] { connection->ExecuteSql("CREATE TABLE t (x double)"); }), HasSubstr("not open"));
    CString text = SqliteFormat;
    text.Replace("%s", platform::DriverPath(File()));
    connection->Open(text, Connection::ReadOnly | Connection::NoDialog);
    EXPECT_TRUE(connection->IsReadOnly());
    EXPECT_THAT(ErrorOf([&] { connection->ExecuteSql("CREATE TABLE t (x double)"); }),
                HasSubstr("read only"));
}

TEST_F(OdbcConnectionTest, Open_OfAnUnknownDriver_ThrowsAndLeavesItClosed) {
    Connection connection;
    EXPECT_THAT(ErrorOf([&] { connection.Open("Driver={No such driver}", Connection::NoDialog); }),
                testing::Not(IsEmpty()));
    EXPECT_FALSE(connection.IsOpen());
    EXPECT_THAT(ErrorOf([&] { connection.Open(CString(std::string(40000, 'x')), Connection::NoDialog); }),
                HasSubstr("too long"));
}

TEST_F(OdbcConnectionTest, Close_WhileACursorReads_LeavesTheCursorItsRows) {
    Execute("CREATE TABLE t (x double)");
    Execute("INSERT INTO t VALUES (1.5)");
    Execute("INSERT INTO t VALUES (2.5)");
    auto connection = Connect();
    Cursor cursor(connection);
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t")));
    connection->Close();
    connection.reset();
    cursor.MoveNext();
    CDBVariant value;
    cursor.GetFieldValue(0, value);
    EXPECT_EQ(value.GetDouble(), 2.5);
    cursor.MoveNext();
    EXPECT_TRUE(cursor.IsEOF());
}

TEST_F(OdbcConnectionTest, ATransaction_KeepsWhatWasWrittenInAnyCase) {
    const auto connection = Connect();
    connection->ExecuteSql("CREATE TABLE t (x double)");
    {
        const odbc::Transaction transaction(*connection);
        connection->ExecuteSql("INSERT INTO t VALUES (1.5)");
        EXPECT_NE(ErrorOf([&] { connection->ExecuteSql("INSERT INTO absent VALUES (1.5)"); }), "");
    }
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("1.5"));
    odbc::Transaction transaction(*connection);
    connection->ExecuteSql("INSERT INTO t VALUES (2.5)");
    transaction.Commit();
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("1.5", "2.5"));
}

// ---- Cursor

class OdbcCursorTest : public WritingTest {
protected:
    void SetUp() override {
        WritingTest::SetUp();
        if (!IsSkipped()) {
            Execute("CREATE TABLE t (x double, name Char(20), bytes Binary(32768))");
            Execute("INSERT INTO t VALUES (1.5, 'one', x'0102')");
            Execute("INSERT INTO t VALUES (NULL, NULL, NULL)");
            Execute("INSERT INTO t VALUES (3.5, 'three', x'')");
        }
    }
};

TEST_F(OdbcCursorTest, Open_WithoutAConnection_GivesFalseAndNothingElseDoesHarm) {
    Cursor cursor(nullptr);
    EXPECT_FALSE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t")));
    EXPECT_FALSE(cursor.IsOpen());
    EXPECT_TRUE(cursor.IsEOF());
    cursor.MoveFirst();
    cursor.MoveNext();
    EXPECT_EQ(cursor.GetODBCFieldCount(), 0);
    EXPECT_TRUE(cursor.GetODBCFieldInfo(0).m_name.IsEmpty());
    CDBVariant value(CDBVariant::Double);
    cursor.GetFieldValue(0, value);
    EXPECT_TRUE(value.IsNull());
    EXPECT_THAT(ErrorOf([&] { cursor.AddNew(); }), HasSubstr("not open"));
    EXPECT_THAT(ErrorOf([&] { cursor.Update(); }), HasSubstr("not open"));
    EXPECT_THAT(ErrorOf([&] { cursor.Delete(); }), HasSubstr("not open"));
    cursor.Close();
    EXPECT_EQ(cursor.GetRuntimeClass(), &Cursor::classCursor);
}

TEST_F(OdbcCursorTest, Open_OfAWrongStatement_ThrowsAndLeavesItClosed) {
    Cursor cursor(Connect());
    EXPECT_THAT(ErrorOf([&] { cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM absent")); }),
                HasSubstr("no such table"));
    EXPECT_FALSE(cursor.IsOpen());
    EXPECT_TRUE(cursor.IsEOF());
    EXPECT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t")));
}

TEST_F(OdbcCursorTest, FieldInfo_TellsNamesAndTypes) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t")));
    ASSERT_EQ(cursor.GetODBCFieldCount(), 3);
    EXPECT_EQ(cursor.GetODBCFieldInfo(0).m_name, "x");
    EXPECT_EQ(cursor.GetODBCFieldInfo(0).m_sqlType, 8);
    EXPECT_EQ(cursor.GetODBCFieldInfo(1).m_name, "name");
    EXPECT_EQ(cursor.GetODBCFieldInfo(1).m_precision, 20U);
    EXPECT_EQ(cursor.GetODBCFieldInfo(2).m_sqlType, -4) << "the driver calls bytes a long text";
    EXPECT_TRUE(cursor.GetODBCFieldInfo(-1).m_name.IsEmpty());
    EXPECT_TRUE(cursor.GetODBCFieldInfo(3).m_name.IsEmpty());
}

TEST_F(OdbcCursorTest, Rows_AreReadForwardAndFromTheFirstAgain) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t"), Cursor::ReadOnly));
    for (int pass = 0; pass < 2; ++pass) {
        CDBVariant value;
        cursor.GetFieldValue(0, value);
        EXPECT_EQ(value.GetType(), CDBVariant::Double);
        EXPECT_EQ(value.GetDouble(), 1.5);
        cursor.GetFieldValue(1, value);
        EXPECT_EQ(*value.GetString(), "one");
        cursor.GetFieldValue(2, value);
        ASSERT_NE(value.GetBinary(), nullptr);
        EXPECT_EQ(value.GetBinary()->GetSize(), 2);
        cursor.MoveNext();
        for (const int field : {0, 1, 2, 3, -1}) {
            cursor.GetFieldValue(field, value);
            EXPECT_TRUE(value.IsNull());
        }
        cursor.MoveNext();
        cursor.GetFieldValue(0, value, -8);
        EXPECT_EQ(*value.GetString(), "3.5") << "in another type than its own";
        EXPECT_FALSE(cursor.IsEOF());
        cursor.MoveNext();
        EXPECT_TRUE(cursor.IsEOF());
        cursor.MoveNext();
        EXPECT_TRUE(cursor.IsEOF());
        cursor.MoveFirst();
        EXPECT_FALSE(cursor.IsEOF());
    }
}

TEST_F(OdbcCursorTest, WithoutValues_RowsAreOnlyCounted) {
    Cursor cursor(Connect());
    ASSERT_TRUE(
        cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t"), Cursor::ReadOnly | Cursor::WithoutValues));
    CDBVariant value(CDBVariant::Double);
    cursor.GetFieldValue(0, value);
    EXPECT_TRUE(value.IsNull());
    int count = 0;
    for (; !cursor.IsEOF(); cursor.MoveNext()) {
        ++count;
    }
    EXPECT_EQ(count, 3);
}

TEST_F(OdbcCursorTest, AStatementWithoutColumns_HasNoRows) {
    Cursor cursor(Connect());
    EXPECT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("CREATE TABLE other (x double)")));
    EXPECT_TRUE(cursor.IsEOF());
    EXPECT_EQ(cursor.GetODBCFieldCount(), 0);
}

TEST_F(OdbcCursorTest, Delete_WhereTheDriverHasNoKeyset_IsRefusedInItsWords) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM t")));
    EXPECT_FALSE(cursor.CanDelete());
    EXPECT_THAT(ErrorOf([&] { cursor.Delete(); }), HasSubstr("[SQLite]"));
    EXPECT_EQ(Answers("SELECT x FROM t").size(), 3U);
}

TEST_F(OdbcCursorTest, ReadOnlyCursors_RefuseToWrite) {
    VorqOdbcRecordset cursor(Connect(), "t", Record({Column("x", 1.0)}));
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, nullptr, Cursor::ReadOnly));
    EXPECT_FALSE(cursor.CanDelete());
    EXPECT_THAT(ErrorOf([&] { cursor.AddNew(); }), HasSubstr("read only"));
    EXPECT_THAT(ErrorOf([&] { cursor.Delete(); }), HasSubstr("read only"));
}

TEST_F(OdbcCursorTest, Update_WithoutAddNew_IsRefused) {
    VorqOdbcRecordset cursor(Connect(), "t", Record({Column("x", 1.0)}));
    ASSERT_TRUE(cursor.Open());
    EXPECT_THAT(ErrorOf([&] { cursor.Update(); }), HasSubstr("begun"));
}

// ---- Cursors over a record

class VorqOdbcRecordsetTest : public OdbcCursorTest {};

TEST_F(VorqOdbcRecordsetTest, DefaultSql_NamesTheTableBetweenBrackets) {
    VorqOdbcRecordset cursor(nullptr, "a \"table\"", DBACCESS_RECORD());
    EXPECT_EQ(cursor.GetDefaultSQL(), "SELECT * FROM [a \"table\"]");
    EXPECT_EQ(cursor.GetDefaultConnect(), "ODBC;");
    EXPECT_EQ(cursor.GetRuntimeClass(), &VorqOdbcRecordset::classVorqOdbcRecordset);
    EXPECT_TRUE(cursor.IsKindOf(&DBACCESS_RECORDSET::classDBACCESS_RECORDSET));
    EXPECT_TRUE(cursor.IsKindOf(&Cursor::classCursor));
}

TEST_F(VorqOdbcRecordsetTest, TheRecord_HoldsTheCurrentRow) {
    const DBACCESS_RECORD record =
        Record({Column("x", 0.0), Column("name", ""),
                Column("bytes", CByteArray(reinterpret_cast<const BYTE*>("?"), 1))});
    VorqOdbcRecordset cursor(Connect(), "t", record);
    EXPECT_EQ(cursor.size(), 3U) << "a copy of the record";
    ASSERT_TRUE(cursor.Open());
    EXPECT_EQ(cursor.GetDouble("x"), 1.5);
    EXPECT_EQ(cursor.GetString("name"), "one");
    EXPECT_EQ(cursor.GetBinary("bytes").GetSize(), 1) << "as many bytes as the column had";
    cursor.MoveNext();
    EXPECT_EQ(cursor.GetDouble("x"), 0.0);
    EXPECT_EQ(cursor.GetString("name"), "");
    EXPECT_EQ(cursor.GetBinary("bytes").GetSize(), 0);
    cursor.MoveNext();
    EXPECT_EQ(cursor.GetString("name"), "three");
}

TEST_F(VorqOdbcRecordsetTest, Columns_AreBoundByNameOrElseByPosition) {
    VorqOdbcRecordset cursor(Connect(), "t", Record({Column("NAME", ""), Column("unknown", "")}));
    ASSERT_TRUE(cursor.Open());
    EXPECT_EQ(cursor.GetString("NAME"), "one");
    EXPECT_EQ(cursor.GetString("unknown"), "one") << "the second field";
}

TEST_F(VorqOdbcRecordsetTest, ColumnsOfUnknownCodes_AreNotBound) {
    DBACCESS_RECORD record = Record({Column("x", 7.5), Column("name", "before")});
    record[1].m_type = 2;
    VorqOdbcRecordset cursor(Connect(), "t", record);
    ASSERT_TRUE(cursor.Open());
    EXPECT_EQ(cursor.GetDouble("x"), 1.5);
    EXPECT_EQ(cursor.GetString("name"), "before");
}

TEST_F(VorqOdbcRecordsetTest, ATextBeyond255Units_IsCutInTheRecordOnly) {
    Execute("DELETE FROM t");
    Execute(CString("INSERT INTO t (name) VALUES ('") + CString(std::string(300, 'x')) + "')");
    VorqOdbcRecordset cursor(Connect(), "t", Record({Column("name", "")}));
    ASSERT_TRUE(cursor.Open());
    EXPECT_EQ(cursor.GetString("name").GetLength(), 255);
    CDBVariant value;
    cursor.GetFieldValue(1, value);
    EXPECT_EQ(value.GetString()->GetLength(), 300);
}

TEST_F(VorqOdbcRecordsetTest, AddNewAndUpdate_AppendTheRecord) {
    VorqOdbcRecordset cursor(Connect(), "t", Record({Column("name", "")}));
    ASSERT_TRUE(cursor.Open());
    cursor.AddNew();
    cursor["name"] = "four";
    cursor.Update();
    cursor.AddNew();
    cursor["name"] = "";
    cursor["a column more"] = 5.5;
    cursor.Update();
    EXPECT_THAT(Answers("SELECT name FROM t"), ElementsAre("one", "NULL", "three", "four", ""));
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("1.5", "NULL", "3.5", "NULL", "NULL"));
}

}  // namespace
}  // namespace quillet::test
