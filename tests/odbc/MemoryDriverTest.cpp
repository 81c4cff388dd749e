// Cursors over a driver with keysets, positioned deletion, and a choice of the order in which columns may be
// read: the tests' own, since drivers for files have neither.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/AccessHelpers.h"

namespace quillet::test {
namespace {

using odbc::Connection;
using odbc::Cursor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The calls that the driver got, such as "BindCol 1" or "SetPos 3", by their first word.
constexpr char Deletion[] = "SetPos";
constexpr char DeletionOfAll[] = "Execute DELETE FROM [parts]";

class MemoryDriverTest : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        if (!IsSkipped()) {
            m_observer = Connect();
        }
    }

    // A connection to the table of this test, with a driver of these capabilities.
    static CString ConnectString(const CString& claims) {
        return CString(
                   "Driver={Memory};Table=parts;Columns=number integer,memo longtext,name text 20,rank "
                   "integer;"
                   "Rows=1|first memo|one|10/2|NULL|two|20/3|third memo|NULL|30;Database=") +
               testing::UnitTest::GetInstance()->current_test_info()->name() + ";" + claims;
    }
    static std::shared_ptr<Connection> Connect(const CString& claims = "") {
        auto connection = std::make_shared<Connection>();
        connection->Open(ConnectString(claims), Connection::NoDialog);
        return connection;
    }

    static std::string TextOf(Cursor& cursor, int field) {
        CDBVariant value;
        cursor.GetFieldValue(field, value);
        if (value.IsNull()) {
            return "NULL";
        }
        return value.GetString() == nullptr ? std::to_string(value.GetInteger())
                                            : value.GetString()->ToUtf8();
    }
    static std::string Row(Cursor& cursor) {
        std::string row;
        for (int field = 0; field < cursor.GetODBCFieldCount(); ++field) {
            row += (field == 0 ? "" : "|") + TextOf(cursor, field);
        }
        return row;
    }
    // The rows from the cursor's position to the end.
    static std::vector<std::string> RowsFrom(Cursor& cursor) {
        std::vector<std::string> rows;
        for (; !cursor.IsEOF(); cursor.MoveNext()) {
            rows.push_back(Row(cursor));
        }
        return rows;
    }
    static std::vector<std::string> Answer(const std::shared_ptr<Connection>& connection,
                                           const CString& sql) {
        Cursor cursor(connection);
        cursor.Open(Cursor::Dynaset, sql.GetString(), Cursor::ReadOnly);
        return RowsFrom(cursor);
    }
    // The contents of the table.
    std::vector<std::string> Rows() const { return Answer(m_observer, "SELECT * FROM parts"); }
    // The driver's calls since the test began that start with this text.
    std::vector<std::string> Calls(const std::string& begin) const {
        std::vector<std::string> calls;
        for (const std::string& call : Answer(m_observer, "SELECT calls")) {
            if (call.rfind(begin, 0) == 0) {
                calls.push_back(call);
            }
        }
        return calls;
    }

    // Reads the table over a driver that claims that much, and expects what stands in it.
    static void ExpectRows(const CString& claims) {
        EXPECT_THAT(Answer(Connect(claims), "SELECT * FROM parts"),
                    ElementsAre("1|first memo|one|10", "2|NULL|two|20", "3|third memo|NULL|30"));
    }

    // Deletes a row, counted from 0 as the table is now, through another cursor.
    static void DeleteAt(int position) {
        Cursor other(Connect());
        ASSERT_TRUE(other.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
        for (int i = 0; i < position; ++i) {
            other.MoveNext();
        }
        other.Delete();
    }

    // Writes a table of one row over a driver that claims that much.
    void ExpectRowsReplaced(const CString& claims) const {
        const ConnectFormat format(ConnectString(claims));
        DBACCESS access(OLESTR(""), DBACCESS::NoDialog);
        ASSERT_TRUE(access.IsOpen()) << access.GetOpenError();
        const DBACCESS_VECTOR rows(1, Record({Column("number", 7L), Column("memo", "seventh memo"),
                                              Column("name", "seven"), Column("rank", 70L)}));
        EXPECT_TRUE(access.SetTableData("parts", rows));
        EXPECT_THAT(m_messages.m_texts, IsEmpty());
        EXPECT_THAT(Rows(), ElementsAre("7|seventh memo|seven|70"));
    }

    // Keeps the table.
    std::shared_ptr<Connection> m_observer;
    ShownMessages m_messages;
};

// ---- Which columns come with the row

TEST_F(MemoryDriverTest, WhereAnyColumnMayBeAskedFor_OnlyALongOneDoesNotComeWithTheRow) {
    ExpectRows("GetData=AnyColumn");
    EXPECT_THAT(Calls("BindCol"), ElementsAre("BindCol 1", "BindCol 3", "BindCol 4"));
    EXPECT_THAT(Calls("GetData"), ElementsAre("GetData 2", "GetData 2", "GetData 2"));
}

TEST_F(MemoryDriverTest, WhereOnlyLaterColumnsMayBeAskedFor_NoneAfterALongOneComesWithTheRow) {
    ExpectRows("");
    EXPECT_THAT(Calls("BindCol"), ElementsAre("BindCol 1"));
    EXPECT_THAT(Calls("GetData"), ElementsAre("GetData 2", "GetData 3", "GetData 4", "GetData 2", "GetData 3",
                                              "GetData 4", "GetData 2", "GetData 3", "GetData 4"));
}

TEST_F(MemoryDriverTest, WithoutScrolling_NoColumnComesWithTheRowWhereverItMayBeAskedFor) {
    ExpectRows("GetData=AnyColumn;Without=SQLFetchScroll");
    EXPECT_THAT(Calls("BindCol"), IsEmpty());
}

// ---- Keysets

TEST_F(MemoryDriverTest, AKeyset_HasTheRowsThatWereThereWhenTheCursorOpened) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    {
        VorqOdbcRecordset other(Connect(), "parts", Record({Column("name", "")}));
        ASSERT_TRUE(other.Open());
        other.AddNew();
        other["name"] = "four";
        other.Update();
    }
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_THAT(RowsFrom(cursor),
                    ElementsAre("1|first memo|one|10", "2|NULL|two|20", "3|third memo|NULL|30"));
        cursor.MoveFirst();
    }
    EXPECT_EQ(Rows().size(), 4U);
}

TEST_F(MemoryDriverTest, ARowThatWasDeletedElsewhere_IsPassedOver) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    DeleteAt(1);
    EXPECT_THAT(RowsFrom(cursor), ElementsAre("1|first memo|one|10", "3|third memo|NULL|30"));
    DeleteAt(0);
    cursor.MoveFirst();
    EXPECT_THAT(RowsFrom(cursor), ElementsAre("3|third memo|NULL|30"));
    DeleteAt(0);
    cursor.MoveFirst();
    EXPECT_TRUE(cursor.IsEOF());
}

TEST_F(MemoryDriverTest, ARowThatWasDeletedElsewhere_LeavesTheSlotsOfTheNext) {
    VorqOdbcRecordset cursor(Connect(), "parts", Record({Column("number", 0L), Column("name", "")}));
    ASSERT_TRUE(cursor.Open());
    DeleteAt(1);
    cursor.MoveNext();
    EXPECT_EQ(cursor.GetLong("number"), 3);
    EXPECT_EQ(cursor.GetString("name"), "");
    cursor.MoveNext();
    EXPECT_TRUE(cursor.IsEOF());
}

TEST_F(MemoryDriverTest, ACursorThatOnlyGoesForward_RefusesToGoBack) {
    Cursor cursor(Connect("Cursor=forward"));
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    cursor.MoveFirst();
    EXPECT_EQ(Row(cursor), "1|first memo|one|10") << "it stands there";
    cursor.MoveNext();
    EXPECT_THAT(ErrorOf([&] { cursor.MoveFirst(); }), HasSubstr("does not move that way"));
    EXPECT_TRUE(cursor.IsEOF());
}

// ---- Deleting at the position

TEST_F(MemoryDriverTest, Delete_RemovesTheRowWhereTheCursorStandsAndNoOther) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    EXPECT_TRUE(cursor.CanDelete());
    cursor.MoveNext();
    cursor.Delete();
    EXPECT_THAT(Rows(), ElementsAre("1|first memo|one|10", "3|third memo|NULL|30"));
    cursor.MoveNext();
    EXPECT_EQ(Row(cursor), "3|third memo|NULL|30");
    EXPECT_THAT(Calls(Deletion), ElementsAre("SetPos 3"));
}

TEST_F(MemoryDriverTest, Delete_WhereTheDriverTakesAnotherConcurrency_RemovesTheRow) {
    Cursor cursor(Connect("Concurrency=lock"));
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    EXPECT_TRUE(cursor.CanDelete());
    EXPECT_EQ(ErrorOf([&] { cursor.Delete(); }), "");
    EXPECT_EQ(Rows().size(), 2U);
}

TEST_F(MemoryDriverTest, Delete_Twice_ThrowsWhatTheDriverSays) {
    Cursor cursor(Connect());
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    cursor.Delete();
    EXPECT_THAT(ErrorOf([&] { cursor.Delete(); }), HasSubstr("at no row"));
    EXPECT_EQ(Rows().size(), 2U);
}

TEST_F(MemoryDriverTest, SetTableData_DeletesTheRowsOneByOne) {
    ExpectRowsReplaced("");
    EXPECT_THAT(Calls(Deletion), ElementsAre("SetPos 3", "SetPos 3", "SetPos 3"));
    EXPECT_THAT(Calls(DeletionOfAll), IsEmpty());
}

TEST_F(MemoryDriverTest, SetTableData_WithoutAKeyset_DeletesTheRowsAtOnce) {
    ExpectRowsReplaced("Cursor=static");
    EXPECT_THAT(Calls(Deletion), IsEmpty());
    EXPECT_THAT(Calls(DeletionOfAll), ElementsAre(DeletionOfAll));
}

TEST_F(MemoryDriverTest, SetTableData_WithoutWritingAtAPosition_DeletesTheRowsAtOnce) {
    ExpectRowsReplaced("Without=SQLSetPos");
    EXPECT_THAT(Calls(Deletion), IsEmpty());
    EXPECT_THAT(Calls(DeletionOfAll), ElementsAre(DeletionOfAll));
}

TEST_F(MemoryDriverTest, ADatabaseThatCanOnlyBeRead_RefusesInTheDriversWords) {
    const auto connection = Connect("Writes=no");
    EXPECT_FALSE(connection->CanWrite());
    EXPECT_TRUE(m_observer->CanWrite());
    Cursor cursor(connection);
    ASSERT_TRUE(cursor.Open(Cursor::Dynaset, OLESTR("SELECT * FROM parts")));
    EXPECT_FALSE(cursor.CanDelete());
    EXPECT_THAT(ErrorOf([&] { cursor.Delete(); }), HasSubstr("will only read"));
    EXPECT_THAT(Calls(Deletion), IsEmpty());
    EXPECT_EQ(Rows().size(), 3U);
}

}  // namespace
}  // namespace quillet::test
