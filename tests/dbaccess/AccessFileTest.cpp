// Real Access files through the driver that can read them, and files that only look like one.
#include "Quillet/dbaccess/AccessFile.h"

#include <gmock/gmock.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <sstream>

#include "support/AccessHelpers.h"
#include "support/TestHelpers.h"
#if defined(_WIN32)
#include "support/WindowsHandle.h"
#endif

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// Whether drivers run on the system below Wine, which does not pass on everything that Windows would.
bool IsUnderWine(const std::string& path) {
    return platform::DriverPath(path) != path;
}

class DbAccessFileTest : public SharedFileTest {
protected:
    DbAccessFileTest() : SharedFileTest("aisc.mdb") {}
    static DBACCESS OpenFile(const std::filesystem::path& path, unsigned long options = 10) {
        return DBACCESS(CString(Utf8(path)).GetString(), options);
    }
    // Reads whatever can be read of a damaged file: nothing may crash or hang.
    static std::size_t ReadWhole(const std::filesystem::path& path) {
        DBACCESS access = OpenFile(path);
        std::vector<CString> names;
        access.GetTables(names);
        std::size_t count = 0;
        for (const CString& name : names) {
            DBACCESS_VECTOR rows;
            access.GetTableData(name, rows);
            count += rows.size();
            DBACCESS_RECORD record;
            access.GetRecordset(name, record);
        }
        return count;
    }
    void ReadAtEveryPage(const std::string& name) const {
        const std::string bytes = ReadBytes(SharedDatabase(name));
        ASSERT_FALSE(bytes.empty());
        const std::size_t whole = ReadWhole(SharedDatabase(name));
        for (std::size_t length = 0; length < bytes.size(); length += 4096) {
            SCOPED_TRACE(length);
            const std::filesystem::path path = m_folder / "cut.mdb";
            WriteBytes(path, bytes.substr(0, length));
            ASSERT_LE(ReadWhole(path), whole);
        }
    }
};

std::vector<std::vector<std::string>> LinesOf(const std::filesystem::path& path) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream file(ReadBytes(path));
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        std::vector<std::string>& cells = lines.emplace_back();
        std::string cell;
        for (std::istringstream rest(line + ","); std::getline(rest, cell, ',');) {
            cells.push_back(cell);
        }
    }
    return lines;
}

// A dash (U+2013) stands for nothing, which is a zero or an empty text.
const std::string Dash = "–";

double NumberOf(const std::string& text) {
    double number = 0;
    if (text != Dash) {
        const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
        EXPECT_EQ(end.ptr, text.data() + text.size()) << text;
    }
    return number;
}

TEST_F(DbAccessFileTest, EveryTableOfSteel_EqualsItsText) {
    DBACCESS access = OpenFile(SharedDatabase("aisc.mdb"));
    std::vector<CString> names;
    ASSERT_TRUE(access.GetTables(names));
    EXPECT_THAT(Utf8Of(names), ElementsAre("W", "M", "S", "HP", "C", "MC", "L", "WT", "MT", "ST", "DBL_L",
                                           "HSS", "HSS_R", "PIPE", "Properties", "Header"));
    std::size_t count = 0;
    for (const CString& name : names) {
        const auto text = SharedDatabase("steel/" + name.ToUtf8() + "_shapes.csv");
        if (!std::filesystem::exists(text)) {
            continue;
        }
        SCOPED_TRACE(name.ToUtf8());
        const auto lines = LinesOf(text);
        DBACCESS_VECTOR rows;
        ASSERT_TRUE(access.GetTableData(name, rows));
        ASSERT_EQ(rows.size() + 1, lines.size());
        EXPECT_EQ(access.GetRecordsetsNumber(name), static_cast<int>(rows.size()));
        for (std::size_t row = 0; row < rows.size(); ++row) {
            ASSERT_EQ(rows[row].size(), lines[0].size());
            for (std::size_t column = 0; column < rows[row].size(); ++column) {
                const DBACCESS_COLUMN& cell = rows[row][column];
                const std::string& expected = lines[row + 1][column];
                // The file distinguishes names that differ only in case by a number.
                const CString heading(lines[0][column]);
                ASSERT_EQ(cell.m_name.Left(heading.GetLength()), heading);
                if (cell.m_type == DBACCESS_COLUMN::Double) {
                    ASSERT_EQ(cell.m_double, NumberOf(expected));
                } else {
                    ASSERT_EQ(cell.m_type, DBACCESS_COLUMN::Text);
                    ASSERT_EQ(cell.m_text, CString(expected == Dash ? "" : expected));
                }
            }
        }
        count += rows.size();
    }
    EXPECT_EQ(count, 2299U);
}

TEST_F(DbAccessFileTest, EveryKindOfField_HasItsCodeAndValue) {
    for (const char* table : {"values", "desc_48"}) {
        SCOPED_TRACE(table);
        DBACCESS_VECTOR rows;
        ASSERT_TRUE(OpenFile(SharedDatabase("types.mdb")).GetTableData(table, rows));
        ASSERT_THAT(rows, SizeIs(4));
        std::vector<std::vector<int>> codes;
        for (const DBACCESS_RECORD& row : rows) {
            std::vector<int>& of = codes.emplace_back();
            for (const DBACCESS_COLUMN& column : row) {
                of.push_back(column.m_type);
            }
        }
        // A byte and a date have no code, but their NULLs do; a long's NULL is a short zero.
        EXPECT_THAT(codes, ElementsAre(ElementsAre(1, 0, 3, 4, 6, 7, 10, 10, 0, 9, 10),
                                       ElementsAre(1, 0, 3, 4, 6, 7, 10, 10, 0, 9, 10),
                                       ElementsAre(1, 3, 3, 3, 6, 7, 10, 10, 10, 10, 10),
                                       ElementsAre(1, 0, 3, 4, 6, 7, 10, 10, 0, 10, 10)));
        EXPECT_EQ(rows[0].GetBool("a bool"), 1);
        EXPECT_EQ(rows[0].GetInt("an_int"), -1234);
        EXPECT_EQ(rows[0].GetLong("a_long"), 123456789);
        EXPECT_EQ(rows[0].GetFloat("a_float"), 1.5F);
        EXPECT_EQ(rows[0].GetDouble("a_double"), -0.00225);
        EXPECT_EQ(rows[0].GetString("a_text"), "plain text");
        EXPECT_EQ(rows[0].GetString("a_memo"), "memo one");
        EXPECT_EQ(rows[0].GetString("a_money"), "12.3400");
        EXPECT_EQ(rows[1].GetBool("a bool"), 0);
        EXPECT_EQ(rows[1].GetInt("an_int"), 32767);
        EXPECT_EQ(rows[1].GetLong("a_long"), INT32_MIN);
        EXPECT_EQ(rows[1].GetFloat("a_float"), 3.4e38F);
        EXPECT_EQ(rows[1].GetDouble("a_double"), std::numeric_limits<double>::max());
        EXPECT_EQ(rows[1].GetString("a_text"),
                  "za\u017C\u00F3\u0142\u0107 g\u0119\u015Bl\u0105 ja\u017A\u0144 <&>\"'");
        EXPECT_EQ(rows[1].GetString("a_memo"), "line one\r\nline two");
        EXPECT_EQ(rows[2].GetDouble("a_double"), 0.0);
        EXPECT_EQ(rows[2].GetString("a_date"), "");
        EXPECT_EQ(rows[3].GetString("a_money"), "0.0000");
    }
}

TEST_F(DbAccessFileTest, ATableWithoutRows_IsDescribedWhereThatIsForced) {
    DBACCESS access = OpenFile(SharedDatabase("types.mdb"));
    DBACCESS_VECTOR rows;
    ASSERT_TRUE(access.GetTableData("no_rows", rows));
    EXPECT_THAT(rows, IsEmpty());
    EXPECT_TRUE(rows.m_noRows);
    DBACCESS::m_forceExtractTableDefiniton = true;
    const bool result = access.GetTableData("no_rows", rows);
    DBACCESS::m_forceExtractTableDefiniton = false;
    ASSERT_TRUE(result);
    ASSERT_THAT(rows, SizeIs(1));
    std::vector<std::string> columns;
    for (const DBACCESS_COLUMN& column : rows[0]) {
        columns.push_back(column.m_name.ToUtf8() + " " + std::to_string(column.m_type));
    }
    EXPECT_THAT(columns,
                ElementsAre("a bool 1", "a_byte 3", "an_int 3", "a_long 3", "a_float 6", "a_double 7",
                            "a_text 10", "a_memo 10", "a_date 10", "a_binary 10", "a_money 10"));
}

TEST_F(DbAccessFileTest, GetRecordset_GivesTheFirstRow) {
    DBACCESS_RECORD record;
    ASSERT_TRUE(OpenFile(SharedDatabase("aisc.mdb")).GetRecordset("W", record));
    EXPECT_EQ(record.GetString("shape"), "W44X408");
    EXPECT_EQ(record.GetDouble("weight"), 408.0);
}

TEST_F(DbAccessFileTest, ADriverThatOnlyReads_RefusesToWriteInItsOwnWords) {
    const std::filesystem::path path = m_folder / "copy.mdb";
    const std::string bytes = ReadBytes(SharedDatabase("aisc.mdb"));
    WriteBytes(path, bytes);
    DBACCESS access = OpenFile(path, DBACCESS::NoDialog);
    EXPECT_FALSE(access.SetTableData("W", Rows({Record({Column("shape", "x")})})));
    EXPECT_FALSE(access.SetTableData("new", Rows({Record({Column("shape", "x")})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre("Couldn't parse SQL", "Couldn't parse SQL"));
    EXPECT_EQ(access.GetRecordsetsNumber("W"), 289);
    access.Close();
    EXPECT_TRUE(ReadBytes(path) == bytes);
}

TEST_F(DbAccessFileTest, ACursorThatOnlyGoesForward_StaysAtTheFirstRowOrRefuses) {
    auto connection = std::make_shared<odbc::Connection>();
    connection->Open(
        ConnectString(DefaultConnectFormat, platform::DriverPath(Utf8(SharedDatabase("aisc.mdb")))),
        odbc::Connection::NoDialog);
    odbc::Cursor cursor(connection);
    ASSERT_TRUE(cursor.Open(odbc::Cursor::Dynaset, OLESTR("SELECT * FROM [W]")));
    cursor.MoveFirst();
    CDBVariant value;
    cursor.GetFieldValue(0, value);
    EXPECT_EQ(*value.GetString(), "W44X408");
    EXPECT_FALSE(cursor.CanDelete());
    EXPECT_THAT(ErrorOf([&] { cursor.Delete(); }), HasSubstr("river"));
    cursor.MoveNext();
    cursor.GetFieldValue(0, value);
    EXPECT_EQ(*value.GetString(), "W44X368");
    EXPECT_THAT(ErrorOf([&] { cursor.MoveFirst(); }), HasSubstr("river"));
}

TEST_F(DbAccessFileTest, ATruncatedFile_GivesWhatIsLeftOfIt) {
    ReadAtEveryPage("types.mdb");
    ReadAtEveryPage("aisc.mdb");
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DbAccessFileTest, AFileCutInThePage_GivesWhatIsLeftOfIt) {
    const std::string bytes = ReadBytes(SharedDatabase("types.mdb"));
    for (std::size_t length = 1; length < bytes.size(); length += 3001) {
        SCOPED_TRACE(length);
        WriteBytes(m_folder / "cut.mdb", bytes.substr(0, length));
        ASSERT_LE(ReadWhole(m_folder / "cut.mdb"), 8U);
    }
}

TEST_F(DbAccessFileTest, WhatIsNoAccessFile_IsNotOpened) {
    const std::filesystem::path folder = m_folder / "folder.mdb";
    std::filesystem::create_directory(folder);
    const std::filesystem::path text = m_folder / "text.mdb";
    WriteBytes(text, std::string(10000, 'x'));
    const std::filesystem::path empty = m_folder / "empty.mdb";
    WriteBytes(empty, "");
    for (const std::filesystem::path& path : {folder, text, empty, m_folder / "absent.mdb"}) {
        SCOPED_TRACE(path);
        for (const unsigned long options : {10UL, 8UL}) {
            DBACCESS access = OpenFile(path, options);
            EXPECT_FALSE(access.IsOpen());
            EXPECT_THAT(access.GetOpenError().ToUtf8(), HasSubstr(Utf8(path)));
            std::vector<CString> names;
            EXPECT_FALSE(access.GetTables(names));
            EXPECT_THAT(names, IsEmpty());
        }
    }
    EXPECT_FALSE(std::filesystem::exists(m_folder / "absent.mdb"));
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DbAccessFileTest, ANameOfOtherLetters_IsOpened) {
    const std::filesystem::path path = m_folder / std::filesystem::path(u8"Stahlträger 日本.mdb");
    if (IsUnderWine(Utf8(path))) {
        GTEST_SKIP() << "Wine cuts the letters of a path to bytes";
    }
    WriteBytes(path, ReadBytes(SharedDatabase("types.mdb")));
    EXPECT_EQ(OpenFile(path).GetRecordsetsNumber("values"), 4);
}

TEST_F(DbAccessFileTest, NamesOfTablesAndFieldsOfOtherLetters_AreRead) {
    // Names of the same length, in place of the existing ones.
    std::string bytes = ReadBytes(SharedDatabase("types.mdb"));
    const auto replace = [&bytes](std::u16string_view from, std::u16string_view to) {
        const std::string_view old(reinterpret_cast<const char*>(from.data()), from.size() * 2);
        const std::string_view with(reinterpret_cast<const char*>(to.data()), to.size() * 2);
        for (std::size_t at = bytes.find(old); at != std::string::npos;
             at = bytes.find(old, at + old.size())) {
            bytes.replace(at, old.size(), with);
        }
    };
    replace(u"no_rows", u"n\u00F3_r\u017Cws");
    replace(u"a_byte", u"\u65E5_byte");
    WriteBytes(m_folder / "names.mdb", bytes);
    DBACCESS access = OpenFile(m_folder / "names.mdb");
    std::vector<CString> names;
    ASSERT_TRUE(access.GetTables(names));
    EXPECT_THAT(Utf8Of(names), ElementsAre("values", "n\u00F3_r\u017Cws", "desc_48"));
    DBACCESS_VECTOR rows;
    EXPECT_TRUE(access.GetTableData(names[1], rows));
    DBACCESS_RECORD record;
    ASSERT_TRUE(access.GetRecordset("values", record));
    EXPECT_EQ(record[1].m_name, "\u65E5_byte");
}

#if defined(_WIN32)
TEST_F(DbAccessFileTest, AFileThatSomebodyLocks_IsNotOpened) {
    const std::filesystem::path path = m_folder / "locked.mdb";
    WriteBytes(path, ReadBytes(SharedDatabase("types.mdb")));
    {
        const WindowsHandle locked(path, GENERIC_READ | GENERIC_WRITE, 0);
        EXPECT_FALSE(OpenFile(path).IsOpen());
    }
    EXPECT_TRUE(OpenFile(path).IsOpen());
}
#endif

// ---- Connect strings

TEST(ConnectStringTest, ThePathStandsForTheMark) {
    EXPECT_EQ(ConnectString(DefaultConnectFormat, "C:\\a b.mdb"),
              "DBQ=C:\\a b.mdb;Driver={Microsoft Access Driver (*.mdb)}");
    EXPECT_EQ(ConnectString("Database=%s;x=%s", "100%s%d"), "Database=100%s%d;x=%s");
    EXPECT_EQ(ConnectString("DSN=catalog", "x"), "DSN=catalog");
}

TEST(ConnectStringTest, APathDoesNotBreakOut) {
    EXPECT_EQ(ConnectString("D=%s;E=1", "a;E=2"), "D={a;E=2};E=1");
    EXPECT_EQ(ConnectString("D=%s;E=1", "a{b}"), "D=a{b};E=1");
    for (const char* path : {"{a}", "a};E=2", "a;{b", "{a;b}"}) {
        EXPECT_THAT(ErrorOf([path] { ConnectString("D=%s;E=1", path); }), HasSubstr(path));
    }
}

// ---- Drivers: the tests that run with other lists of drivers

TEST(Drivers_none, WithoutADriver_NothingIsOpenedAndTheReasonNamesBoth) {
    if (DriversAtHand() != "none") {
        GTEST_SKIP() << "there are drivers";
    }
    TemporaryFolder folder;
    WriteBytes(folder / "a.mdb", std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(5000, '\0'));
    const ShownMessages messages;
    DBACCESS access(CString(Utf8(folder / "a.mdb")).GetString());
    EXPECT_FALSE(access.IsOpen());
    EXPECT_THAT(access.GetOpenError().ToUtf8(), HasSubstr("{Microsoft Access Driver (*.mdb)} or "
                                                          "{Microsoft Access Driver (*.mdb, *.accdb)}"));
    std::vector<CString> names;
    EXPECT_FALSE(access.GetTables(names));
    EXPECT_THAT(messages.m_texts, IsEmpty());
}

TEST(Drivers_newer, WithTheNewerNameOnly_FilesAreOpened) {
    if (DriversAtHand() != "newer") {
        GTEST_SKIP() << "another list of drivers";
    }
    const std::filesystem::path path = SharedDatabase("types.mdb");
    if (!std::filesystem::exists(path)) {
        // The driver is asked; it finds no tables in an empty file.
        TemporaryFolder folder;
        WriteBytes(folder / "a.mdb",
                   std::string("\0\1\0\0Standard Jet DB\0\1", 21) + std::string(8171, '\0'));
        const DBACCESS access(CString(Utf8(folder / "a.mdb")).GetString());
        EXPECT_THAT(access.GetOpenError().ToUtf8(), testing::Not(HasSubstr("No ODBC driver")));
        return;
    }
    DBACCESS access(CString(Utf8(path)).GetString());
    EXPECT_TRUE(access.IsOpen()) << access.GetOpenError();
    EXPECT_EQ(access.GetRecordsetsNumber("values"), 4);
}

}  // namespace
}  // namespace quillet::test
