// Whole tables through a driver that can write.
#include <gmock/gmock.h>

#include <cmath>
#include <cstddef>
#include <limits>

#include "support/AccessHelpers.h"
#include "support/TestHelpers.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ForcedDefinitions {
public:
    ForcedDefinitions() { DBACCESS::m_forceExtractTableDefiniton = true; }
    ForcedDefinitions(const ForcedDefinitions&) = delete;
    ForcedDefinitions& operator=(const ForcedDefinitions&) = delete;
    ~ForcedDefinitions() { DBACCESS::m_forceExtractTableDefiniton = false; }
};

std::string HexOf(const CByteArray& bytes) {
    std::string text;
    for (int i = 0; i < bytes.GetSize(); ++i) {
        text += "0123456789ABCDEF"[bytes[i] >> 4];
        text += "0123456789ABCDEF"[bytes[i] & 15];
    }
    return text;
}

class DBACCESSTest : public WritingTest {
protected:
    DBACCESS_VECTOR Read(const CString& table) const {
        DBACCESS_VECTOR rows;
        EXPECT_TRUE(Open().GetTableData(table, rows));
        return rows;
    }
    // The rows in the slots of the record's codes, which name the types that the file lost.
    DBACCESS_VECTOR ReadAs(const CString& table, const DBACCESS_RECORD& record) const {
        VorqOdbcRecordset cursor(Connect(), table, record);
        DBACCESS_VECTOR rows;
        for (cursor.Open(); !cursor.IsEOF(); cursor.MoveNext()) {
            rows.push_back(cursor);
        }
        return rows;
    }
    bool Write(const CString& table, const DBACCESS_VECTOR& rows) const {
        return Open().SetTableData(table, rows);
    }
    std::vector<std::string> Statements() const {
        return Answers("SELECT sql FROM sqlite_master WHERE type = 'table'");
    }
};

// ---- Opening

TEST_F(DBACCESSTest, Constructor_OfAFileThatCannotBeOpened_LeavesAnObjectThatAnswersFalse) {
    DBACCESS access(CString(File("no folder/x.db")).GetString());
    EXPECT_FALSE(access.IsOpen());
    EXPECT_FALSE(access.GetOpenError().IsEmpty());
    std::vector<CString> names;
    DBACCESS_VECTOR rows;
    DBACCESS_RECORD record;
    EXPECT_FALSE(access.GetTables(names));
    EXPECT_FALSE(access.GetTableData("t", rows));
    EXPECT_FALSE(access.GetRecordset("t", record));
    EXPECT_EQ(access.GetRecordsetsNumber("t"), 0);
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
    EXPECT_FALSE(access.SetTableData("t", Rows({Record({Column("x", 1.0)})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre(access.GetOpenError().ToUtf8()));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "no folder"));
}

TEST_F(DBACCESSTest, Constructor_WithoutOptions_OpensToBeReadOnly) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.0)})})));
    DBACCESS access(CString(File()).GetString());
    EXPECT_EQ(access.GetRecordsetsNumber("t"), 1);
    EXPECT_FALSE(access.SetTableData("t", DBACCESS_VECTOR()));
    EXPECT_FALSE(access.SetTableData("u", Rows({Record({Column("x", 1.0)})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre(HasSubstr("read only"), HasSubstr("read only")));
    EXPECT_EQ(access.GetRecordsetsNumber("t"), 1);
}

TEST_F(DBACCESSTest, Close_LeavesAnObjectThatAnswersFalse) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.0)})})));
    DBACCESS access = Open();
    access.Close();
    access.Close();
    EXPECT_FALSE(access.IsOpen());
    std::vector<CString> names;
    DBACCESS_VECTOR rows;
    EXPECT_FALSE(access.GetTables(names));
    EXPECT_FALSE(access.GetTableData("t", rows));
    EXPECT_EQ(access.GetRecordsetsNumber("t"), 0);
    EXPECT_FALSE(access.SetTableData("t", Rows({Record({Column("x", 1.0)})})));
}

TEST_F(DBACCESSTest, Copies_ShareTheConnection_WhichOutlivesTheOriginal) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.0)})})));
    auto original = std::make_unique<DBACCESS>(Open());
    const DBACCESS copied(*original);
    DBACCESS assigned = Open();
    assigned = copied;
    original->Close();
    original.reset();
    DBACCESS copy = copied;
    EXPECT_EQ(copy.GetRecordsetsNumber("t"), 1);
    EXPECT_EQ(assigned.GetRecordsetsNumber("t"), 1);
}

// ---- Tables

TEST_F(DBACCESSTest, GetTables_AppendsTheTablesWithoutViews) {
    ASSERT_TRUE(Write("b table", Rows({Record({Column("x", 1.0)})})));
    ASSERT_TRUE(Write("a table", Rows({Record({Column("x", 1.0)})})));
    Execute("CREATE VIEW [c view] AS SELECT * FROM [a table]");
    std::vector<CString> names{"before"};
    EXPECT_TRUE(Open().GetTables(names));
    EXPECT_THAT(Utf8Of(names), testing::UnorderedElementsAre("before", "a table", "b table"));
    EXPECT_EQ(names[0], "before");
}

// ---- Creating a table

TEST_F(DBACCESSTest, SetTableData_OnANewTable_TakesTheTypesFromTheFirstRecordOnly) {
    const DBACCESS_RECORD first =
        Record({Column("b", true), IntegerColumn("i", 3), Column("l", 4L), Column("f", 1.5F),
                Column("d", 2.5), Column("bin", CByteArray(reinterpret_cast<const BYTE*>("ab"), 2)),
                Column("t", "text"), DBACCESS_COLUMN("none")});
    ASSERT_TRUE(Write("all codes", Rows({first, Record({Column("b", 7.5)})})));
    EXPECT_THAT(Statements(), ElementsAre("CREATE TABLE [all codes] ([b] bit, [i] int, [l] long, [f] float, "
                                          "[d] double, [bin] Binary(32768), [t] Char(50), [none] Char(50))"));
}

TEST_F(DBACCESSTest, SetTableData_AFirstRecordWithAnIntAssigned_CreatesABitColumn) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 5)})})));
    EXPECT_THAT(Statements(), ElementsAre("CREATE TABLE [t] ([x] bit)"));
    EXPECT_EQ(Read("t")[0][0].m_type, DBACCESS_COLUMN::Boolean);
    EXPECT_EQ(Read("t")[0][0].m_bool, 1);
}

TEST_F(DBACCESSTest, SetTableData_OfUnknownCodes_CreatesTextColumnsThatStayNull) {
    DBACCESS_RECORD record =
        Record({Column("x", "a"), Column("y", "b"), Column("z", "c"), Column("known", "d")});
    record[0].m_type = 2;
    record[1].m_type = 5;
    record[2].m_type = 8;
    ASSERT_TRUE(Write("t", Rows({record})));
    EXPECT_THAT(Statements(),
                ElementsAre("CREATE TABLE [t] ([x] Char(50), [y] Char(50), [z] Char(50), [known] Char(50))"));
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("NULL"));
    EXPECT_THAT(Answers("SELECT known FROM t"), ElementsAre("d"));
}

TEST_F(DBACCESSTest, SetTableData_OfAnAbsentTableWithoutRows_CreatesNothing) {
    EXPECT_FALSE(Write("t", DBACCESS_VECTOR()));
    EXPECT_FALSE(Write("t", Rows({DBACCESS_RECORD()})));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DBACCESSTest, SetTableData_OfANameWithAClosingBracket_ShowsTheDriversText) {
    EXPECT_FALSE(Write("a]b", Rows({Record({Column("x", 1.0)})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre(HasSubstr("syntax error")));
    EXPECT_THAT(m_messages.m_captions, ElementsAre(""));
    EXPECT_FALSE(Write("t", Rows({Record({Column("c]d", 1.0)})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre(HasSubstr("syntax error"), HasSubstr("unrecognized token")));
    EXPECT_THAT(Statements(), IsEmpty());
}

TEST_F(DBACCESSTest, SetTableData_WhereNoFieldCanBeWritten_SaysSo) {
    EXPECT_FALSE(Write("t", Rows({Record({DBACCESS_COLUMN("none")})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre("No field of the table can be written."));
}

// ---- Values

TEST_F(DBACCESSTest, SetTableData_EveryBoundCode_IsReadBack) {
    const auto row = [](bool b, int i, long l, float f, double d, const std::string& bytes,
                        const char* text) {
        return Record({Column("b", b), IntegerColumn("i", i), Column("l", l), Column("f", f), Column("d", d),
                       Column("bin", CByteArray(reinterpret_cast<const BYTE*>(bytes.data()), bytes.size())),
                       Column("t", text)});
    };
    const std::string everyByte = [] {
        std::string bytes(256, '\0');
        for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
            bytes[byte] = static_cast<char>(byte);
        }
        return bytes;
    }();
    const DBACCESS_VECTOR rows =
        Rows({row(true, -1234, 123456789L, 1.5F, -0.00225, everyByte, "za\u017C\u00F3\u0142\u0107"),
              row(false, 32767, 2147483647L, 3.25e38F, 1.79769313486231e308, std::string(2, '\0'), "\n'\"%s"),
              row(false, -32768, -2147483647L - 1, -0.0F, 4.9e-320, "x", ""),
              row(true, 0, 0L, 0.0F, 0.1, "y", "\U0001F600")});
    ASSERT_TRUE(Write("t", rows));
    const DBACCESS_VECTOR read = ReadAs("t", rows[0]);
    ASSERT_THAT(read, SizeIs(rows.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t column = 0; column < rows[i].size(); ++column) {
            EXPECT_TRUE(read[i][column] == rows[i][column]) << "row " << i << ", column " << column;
        }
        EXPECT_EQ(HexOf(read[i][5].m_binary), HexOf(rows[i][5].m_binary)) << "row " << i;
    }
    // Types that this driver does not have come back as texts, floats as doubles, an int as a long.
    const DBACCESS_RECORD found = Read("t")[0];
    EXPECT_EQ(found.GetBool("b"), 1);
    EXPECT_EQ(found.GetLong("i"), -1234);
    EXPECT_EQ(found.GetString("l"), "123456789");
    EXPECT_EQ(found.GetDouble("f"), 1.5);
    EXPECT_EQ(found.GetDouble("d"), -0.00225);
    EXPECT_EQ(HexOf(found.GetBinary("bin")), HexOf(rows[0][5].m_binary));
    EXPECT_EQ(found.GetString("t"), rows[0].GetString("t"));
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DBACCESSTest, SetTableData_TextsOfAnyLength_AreReadBack) {
    DBACCESS_VECTOR rows;
    for (const int length :
         {0, 1, 49, 50, 51, 254, 255, 256, 3999, 4000, 4001, 4095, 4096, 4097, 10000, 100000}) {
        std::string text;
        for (int unit = 0; unit < length; ++unit) {
            text += unit % 3 == 0 ? "\u017C" : "x";
        }
        rows.push_back(Record({Column("t", text.c_str()), Column("n", static_cast<double>(length))}));
    }
    ASSERT_TRUE(Write("t", rows));
    const DBACCESS_VECTOR read = Read("t");
    ASSERT_THAT(read, SizeIs(rows.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_TRUE(read[i].GetString("t") == rows[i].GetString("t")) << rows[i].GetDouble("n");
        EXPECT_EQ(read[i].GetDouble("n"), rows[i].GetDouble("n"));
    }
}

TEST_F(DBACCESSTest, SetTableData_NamesWithBlanksQuotesAndOtherLetters_AreReadBack) {
    const char* names[] = {"with blank",   "it's", "say \"x\"",  "Gr\u00F6\u00DFe",
                           "\u65E5\u672C", "a[b",  "per%cent %s"};
    std::vector<std::string> expected;
    for (const char* name : names) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(Write(name, Rows({Record({Column(name, 1.5), Column("other", name)})})));
        const DBACCESS_VECTOR read = Read(name);
        ASSERT_THAT(read, SizeIs(1));
        EXPECT_EQ(read[0][0].m_name, name);
        EXPECT_EQ(read[0][0].m_double, 1.5);
        EXPECT_EQ(read[0][1].m_text, name);
        expected.emplace_back(name);
    }
    std::vector<CString> tables;
    EXPECT_TRUE(Open().GetTables(tables));
    EXPECT_THAT(Utf8Of(tables), testing::UnorderedElementsAreArray(expected));
}

TEST_F(DBACCESSTest, SetTableData_AnyNumberOfRows_IsReadBackInOrder) {
    for (const int count : {1, 2, 100, 4096, 100000}) {
        SCOPED_TRACE(count);
        DBACCESS_VECTOR rows;
        for (int i = 0; i < count; ++i) {
            rows.push_back(Record({Column("d", i * 0.5), Column("t", CString(std::to_string(i)))}));
        }
        DBACCESS access = Open();
        ASSERT_TRUE(access.SetTableData("t", rows));
        EXPECT_EQ(access.GetRecordsetsNumber("t"), count);
        DBACCESS_VECTOR read;
        ASSERT_TRUE(access.GetTableData("t", read));
        ASSERT_EQ(read.size(), rows.size());
        EXPECT_FALSE(read.m_noRows);
        EXPECT_TRUE(std::equal(rows.begin(), rows.end(), read.begin()));
    }
}

TEST_F(DBACCESSTest, SetTableData_RowsThatDifferFromTheFirst_AreWrittenByPosition) {
    DBACCESS_RECORD longer = Record({Column("x", 2.0), Column("y", "b"), Column("z", 3.0)});
    ASSERT_TRUE(
        Write("t", Rows({Record({Column("x", 1.0), Column("y", "a")}), longer, Record({Column("q", 3.0)}),
                         Record({Column("x", "4.5"), Column("y", 5.5)}), DBACCESS_RECORD()})));
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("1.0", "2.0", "3.0", "4.5", "NULL"));
    EXPECT_THAT(Answers("SELECT y FROM t"), ElementsAre("a", "b", "NULL", "5.5", "NULL"));
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

// ---- Replacing rows

TEST_F(DBACCESSTest, SetTableData_OnAnExistingTable_DeletesAllItsRowsFirst) {
    ASSERT_TRUE(Write(
        "t", Rows({Record({Column("x", 1.0)}), Record({Column("x", 1.0)}), Record({Column("x", 2.0)})})));
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 5.0)})})));
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("5.0"));
    EXPECT_THAT(Statements(), ElementsAre("CREATE TABLE [t] ([x] double)"));
    ASSERT_TRUE(Write("t", DBACCESS_VECTOR()));
    EXPECT_EQ(Open().GetRecordsetsNumber("t"), 0);
}

TEST_F(DBACCESSTest, SetTableData_OnAnExistingTableWithoutRows_TakesTheCodesOfTheRows) {
    Execute("CREATE TABLE t (a double, b Char(50), c double)");
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 5.0), Column("y", "text")}),
                                 Record({Column("x", 6.0), Column("y", "more")})})));
    EXPECT_THAT(Answers("SELECT a FROM t"), ElementsAre("5.0", "6.0"));
    EXPECT_THAT(Answers("SELECT b FROM t"), ElementsAre("text", "more"));
    EXPECT_THAT(Answers("SELECT c FROM t"), ElementsAre("NULL", "NULL"));
}

TEST_F(DBACCESSTest, SetTableData_AfterAFailureInTheMiddle_KeepsTheRowsWrittenBefore) {
    Execute("CREATE TABLE t (x double UNIQUE)");
    EXPECT_FALSE(Write("t", Rows({Record({Column("x", 1.0)}), Record({Column("x", 2.0)}),
                                  Record({Column("x", 2.0)}), Record({Column("x", 3.0)})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre(HasSubstr("UNIQUE constraint failed")));
    EXPECT_THAT(Answers("SELECT x FROM t"), ElementsAre("1.0", "2.0"));
    EXPECT_TRUE(Write("t", Rows({Record({Column("x", 3.0)})}))) << "and the next writing is not hindered";
}

TEST_F(DBACCESSTest, SetTableData_OfAFileThatSomebodyLocks_ShowsTheDriversText) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.0)})})));
    const auto other = Connect();
    other->ExecuteSql("BEGIN EXCLUSIVE");
    EXPECT_FALSE(Write("t", Rows({Record({Column("x", 2.0)})})));
    EXPECT_THAT(m_messages.m_texts, ElementsAre(HasSubstr("locked")));
    std::vector<CString> names;
    DBACCESS_VECTOR rows;
    EXPECT_FALSE(Open().GetTableData("t", rows));
    EXPECT_EQ(Open().GetRecordsetsNumber("t"), 0);
    other->ExecuteSql("COMMIT");
    EXPECT_EQ(Open().GetRecordsetsNumber("t"), 1);
}

// ---- Reading

TEST_F(DBACCESSTest, GetTableData_OfATableWithoutRows_GivesNoneAndSaysSo) {
    Execute("CREATE TABLE t (x double)");
    DBACCESS_VECTOR rows = Rows({Record({Column("old", 1.0)})});
    EXPECT_TRUE(Open().GetTableData("t", rows));
    EXPECT_THAT(rows, IsEmpty());
    EXPECT_TRUE(rows.m_noRows);
}

TEST_F(DBACCESSTest, GetTableData_OfATableWithoutRows_ForcedToDescribe_GivesTypedZeros) {
    Execute(
        "CREATE TABLE t ([a date] timestamp, [a bit] bit, [a byte] tinyint, [an int] smallint, [a long] int, "
        "[a double] double, [a second date] timestamp, [a text] Char(50))");
    const ForcedDefinitions forced;
    const DBACCESS_VECTOR rows = Read("t");
    EXPECT_TRUE(rows.m_noRows);
    ASSERT_THAT(rows, SizeIs(1));
    const DBACCESS_RECORD& record = rows[0];
    ASSERT_THAT(record, SizeIs(8));
    EXPECT_EQ(record.find("a date").m_type, 10) << "the first of a type without a zero";
    EXPECT_EQ(record.find("a bit").m_type, 1);
    EXPECT_EQ(record.find("a byte").m_type, 3);
    EXPECT_EQ(record.find("an int").m_type, 3);
    EXPECT_EQ(record.find("a long").m_type, 3);
    EXPECT_EQ(record.find("a double").m_type, 7);
    EXPECT_EQ(record.find("a second date").m_type, 7) << "as the column before it";
    EXPECT_EQ(record.find("a text").m_type, 10);
    EXPECT_EQ(record.GetString("a text"), "");
}

TEST_F(DBACCESSTest, GetTableData_ForcedToDescribe_ReadsATableWithRowsAsEver) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.0)})})));
    const ForcedDefinitions forced;
    const DBACCESS_VECTOR rows = Read("t");
    EXPECT_FALSE(rows.m_noRows);
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0].GetDouble("x"), 1.0);
    DBACCESS_VECTOR none;
    EXPECT_FALSE(Open().GetTableData("absent", none));
}

TEST_F(DBACCESSTest, GetTableData_OfNulls_GivesZerosOfTheirTypes) {
    Execute("CREATE TABLE t (d double, i int, s smallint, y tinyint, b bit, day timestamp, c Char(9))");
    Execute("INSERT INTO t (d) VALUES (NULL)");
    const DBACCESS_RECORD row = Read("t")[0];
    EXPECT_EQ(row.find("d").m_type, 7);
    EXPECT_EQ(row.GetDouble("d"), 0.0);
    EXPECT_EQ(row.find("i").m_type, 3);
    EXPECT_EQ(row.find("s").m_type, 3);
    EXPECT_EQ(row.find("y").m_type, 3);
    EXPECT_EQ(row.find("b").m_type, 1);
    EXPECT_EQ(row.find("day").m_type, 10);
    EXPECT_EQ(row.GetString("day"), "");
    EXPECT_EQ(row.find("c").m_type, 10);
    EXPECT_EQ(row.GetString("c"), "");
}

TEST_F(DBACCESSTest, GetTableData_OfValues_GivesTheCodesOfTheirTypes) {
    Execute(
        "CREATE TABLE t (d double, i int, s smallint, y tinyint, b bit, day timestamp, c Char(9), m text)");
    Execute("INSERT INTO t VALUES (1.5, 70000, -7, 200, 1, '2001-02-03 04:05:06', 'abc', 'memo')");
    const DBACCESS_RECORD row = Read("t")[0];
    EXPECT_EQ(row.GetDouble("d"), 1.5);
    EXPECT_EQ(row.find("i").m_type, 4);
    EXPECT_EQ(row.GetLong("i"), 70000);
    EXPECT_EQ(row.find("s").m_type, 3);
    EXPECT_EQ(row.GetInt("s"), -7);
    EXPECT_EQ(row.find("y").m_type, 0) << "a byte has no code";
    EXPECT_EQ(row.find("b").m_type, 1);
    EXPECT_EQ(row.find("day").m_type, 0) << "a date has no code";
    EXPECT_EQ(row.GetString("c"), "abc");
    EXPECT_EQ(row.GetString("m"), "memo");
}

TEST_F(DBACCESSTest, GetTableData_OfATableThatChangesBetweenItsTwoPasses_FillsAtMostTheCountedRows) {
    Execute("CREATE TABLE numbers (n double)");
    Execute(
        "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c LIMIT 100) "
        "INSERT INTO numbers SELECT n FROM c");
    Execute("CREATE VIEW t AS SELECT n FROM numbers WHERE n <= 50 OR random() % 2 = 0");
    int full = 0;
    int partial = 0;
    for (int i = 0; i < 60; ++i) {
        const DBACCESS_VECTOR rows = Read("t");
        ASSERT_GE(rows.size(), 50U);
        ASSERT_LE(rows.size(), 100U);
        for (std::size_t row = 0; row < 50; ++row) {
            ASSERT_EQ(rows[row].GetDouble("n"), static_cast<double>(row + 1));
        }
        ++(rows.back().empty() ? partial : full);
    }
    EXPECT_GT(full, 0);
    EXPECT_GT(partial, 0) << "rows that were counted and are gone have no columns";
}

TEST_F(DBACCESSTest, GetTableData_OfATableThatDisappeared_GivesFalse) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.0)})})));
    DBACCESS access = Open();
    std::vector<CString> names;
    ASSERT_TRUE(access.GetTables(names));
    Execute("DROP TABLE t");
    DBACCESS_VECTOR rows;
    EXPECT_FALSE(access.GetTableData(names[0], rows));
    EXPECT_EQ(access.GetRecordsetsNumber(names[0]), 0);
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DBACCESSTest, GetRecordset_GivesTheFirstRowWithTheNamesOfTheColumns) {
    ASSERT_TRUE(Write("t", Rows({Record({Column("x", 1.5), Column("y", "a")}),
                                 Record({Column("x", 2.5), Column("y", "b")})})));
    DBACCESS_RECORD record = Record({Column("old", 1.0), Column("older", 2.0), Column("oldest", 3.0)});
    EXPECT_TRUE(Open().GetRecordset("t", record));
    EXPECT_EQ(record, Record({Column("x", 1.5), Column("y", "a")}));
    EXPECT_THAT(record, SizeIs(2));
}

TEST_F(DBACCESSTest, GetRecordset_OfATableWithoutRows_LeavesTheRecordAsItIs) {
    Execute("CREATE TABLE t (x double)");
    DBACCESS_RECORD record = Record({Column("old", 1.0)});
    EXPECT_TRUE(Open().GetRecordset("t", record));
    EXPECT_EQ(record, Record({Column("old", 1.0)}));
}

TEST_F(DBACCESSTest, GetRecordset_OfAnAbsentTable_GivesFalse) {
    DBACCESS_RECORD record = Record({Column("old", 1.0)});
    EXPECT_FALSE(Open().GetRecordset("t", record));
    EXPECT_EQ(record, Record({Column("old", 1.0)}));
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DBACCESSTest, GetRecordsetsNumber_CountsRows) {
    Execute("CREATE TABLE t (x double)");
    EXPECT_EQ(Open().GetRecordsetsNumber("t"), 0);
    EXPECT_EQ(Open().GetRecordsetsNumber("absent"), 0);
    EXPECT_EQ(Open().GetRecordsetsNumber("a]b"), 0);
    ASSERT_TRUE(Write("t", Rows(std::vector<DBACCESS_RECORD>(7, Record({Column("x", 1.0)})))));
    EXPECT_EQ(Open().GetRecordsetsNumber("t"), 7);
}

}  // namespace
}  // namespace quillet::test
