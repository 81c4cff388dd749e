#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/CatalogHelpers.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

// A table T: n (long), t (text), r (double), with the rows
//   1 b 0.5 | 2 a 1.5 | 3 B 0.5 | 4 a 2.5 | 5 c 1.5
class DbQueryTest : public testing::Test {
protected:
    DbQueryTest() {
        DbDatabase::m_queriesCount = 0;
        AddTable("T");
    }

    DbTableInfo* AddTable(const CString& name) {
        DbTableInfo* const info = m_database.CreateTable(name, DbTableInfo::Table);
        DbTableDescr& descr = *info->GetDescr();
        descr.CreateField("n", false, DbFieldDescr::Long);
        descr.CreateField("t", false, DbFieldDescr::Text);
        descr.CreateField("r", false, DbFieldDescr::Double);
        const struct {
            LONG m_n;
            const char* m_t;
            double m_r;
        } rows[] = {{1, "b", 0.5}, {2, "a", 1.5}, {3, "B", 0.5}, {4, "a", 2.5}, {5, "c", 1.5}};
        for (const auto& row : rows) {
            DbTableRow& target = (*info->GetData())[info->GetData()->AddRow()];
            target.SetValue("n", Long(row.m_n));
            target.SetValue("t", CComVariant(row.m_t));
            target.SetValue("r", CComVariant(row.m_r));
        }
        m_database.Sync();
        TakeLog(m_database);
        return info;
    }

    // The name of the answer; the query must be answered.
    CString RunQuery(const CString& sql) {
        CString name;
        EXPECT_TRUE(m_database.Query(sql, name)) << sql << ": " << m_database.GetErrorLog();
        return name;
    }
    bool Fails(const CString& sql) {
        CString name;
        return !m_database.Query(sql, name);
    }
    // The rows of the answer.
    Strings Answer(const CString& sql) { return RowsOf(m_database, RunQuery(sql)); }
    Strings Rows(const CString& table) { return RowsOf(m_database, table); }

    DbTableInfo& Info(const CString& name) { return *m_database.GetTableInfo(name); }
    DbTableData& Data(const CString& name) { return *m_database.GetTableData(name); }
    void Set(uint64 row, LONG n) { Data("T")[row].SetValue("n", Long(n)); }
    // The number of queries that the call runs.
    template <typename Call>
    std::int32_t QueriesRun(Call call) {
        const std::int32_t before = DbDatabase::m_queriesCount;
        call();
        return DbDatabase::m_queriesCount - before;
    }

    StaticsGuard m_statics;
    DbDatabase m_database;
};

// ---- Names only

TEST_F(DbQueryTest, Query_TextWithoutSelect_IsTheNameOfATable) {
    EXPECT_EQ(RunQuery("t"), "T");
    EXPECT_EQ(RunQuery("[T]"), "T");
    EXPECT_EQ(m_database.GetTablesCount(), 1);
    EXPECT_THAT(TakeLog(m_database), IsEmpty());
    AddTable("two\u00A0words \u0141");
    EXPECT_EQ(RunQuery("TWO\u00A0WORDS \u0142"), "two\u00A0words \u0141");
}

TEST_F(DbQueryTest, Query_TextWithoutSelect_OfNoTable_IsALine) {
    EXPECT_TRUE(Fails("No Such"));
    EXPECT_TRUE(Fails("[No\r\nSuch]"));
    EXPECT_TRUE(Fails(""));
    EXPECT_TRUE(Fails(" t"));
    EXPECT_THAT(
        TakeLog(m_database),
        ElementsAre("SQL Analyze - table 'no such' not found", "SQL Analyze - table 'no  such' not found",
                    "SQL Analyze - table '' not found", "SQL Analyze - table ' t' not found"));
}

TEST_F(DbQueryTest, Query_NameOfAQuery_IsAnsweredByThat) {
    const CString name = RunQuery("select n from t where n > 3");
    EXPECT_EQ(RunQuery("QUERY_0"), name);
}

TEST_F(DbQueryTest, Query_SelectAnywhere_MakesItAQueryText) {
    AddTable("selected");
    EXPECT_TRUE(Fails("selected"));
    EXPECT_THAT(TakeLog(m_database),
                ElementsAre("SQL Analyze - query 'selected'",
                            "SQL Analyze - check 'SELECT' and/or 'FROM' statement", "SQL Analyze - failed"));
}

// ---- The answer as a table

TEST_F(DbQueryTest, Query_Answer_IsATableOfTypeQuery) {
    const CString sql = "SELECT t,N\r\nFROM T where n > 3";
    const CString name = RunQuery(sql);
    EXPECT_EQ(name, "Query_0");
    const DbTableInfo& info = Info(name);
    EXPECT_EQ(info.GetType(), DbTableInfo::Query);
    EXPECT_EQ(info.GetIndex(), 1U);
    EXPECT_EQ(info.GetName(), "Query_0");
    EXPECT_EQ(info.GetSql(), sql) << "as the caller gave it";
    EXPECT_EQ(info.GetRelated(), &Info("T"));
    EXPECT_EQ(info.GetSyncStamp(), Info("T").GetData()->GetChangeId());
    EXPECT_TRUE(info.IsQuerySync());
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("t", "n"));
    EXPECT_EQ((*info.GetDescr())[0].GetDbType(), DbFieldDescr::Text);
    EXPECT_EQ((*info.GetDescr())[1].GetDbType(), DbFieldDescr::Long);
    EXPECT_THAT(Rows(name), ElementsAre("a 4", "c 5"));
}

TEST_F(DbQueryTest, Query_Lines_OfOneThatIsBuilt) {
    RunQuery("Select n\rFrom\nT Where n > 3");
    const Strings lines = TakeLog(m_database);
    ASSERT_THAT(lines, SizeIs(4));
    EXPECT_EQ(lines[0], "SQL Analyze - query 'select n from t where n > 3'");
    EXPECT_EQ(lines[1], "SQL Analyze - ok");
    EXPECT_EQ(lines[2],
              "Table 'Query_0' created, index = 1, type = QUERY, sql = 'Select n\rFrom\nT Where n > 3'");
    const std::string begin = "Query 'Query_0' processed in ";
    const std::string end = " [s]";
    ASSERT_THAT(lines[3], StartsWith(begin));
    ASSERT_THAT(lines[3], testing::EndsWith(end));
    const std::string seconds = lines[3].substr(begin.size(), lines[3].size() - begin.size() - end.size());
    ASSERT_GT(seconds.size(), 5U);
    EXPECT_EQ(seconds[seconds.size() - 5], '.') << "four digits";
}

TEST_F(DbQueryTest, Query_Failure_ChangesNothingButTheCounter) {
    const int tables = m_database.GetTablesCount();
    for (const char* sql : {"select n", "select n from x", "select x from t", "select n from t where n",
                            "select n from t where ( n > 1", "select n from t order by x", "nothing"}) {
        EXPECT_EQ(QueriesRun([&] { EXPECT_TRUE(Fails(sql)) << sql; }), 1) << sql;
    }
    EXPECT_EQ(m_database.GetTablesCount(), tables);
    EXPECT_FALSE(m_database.IsChanged());
    EXPECT_EQ(RunQuery("select n from t where n > 1"), "Query_7");
}

TEST_F(DbQueryTest, Query_InvalidClause_IsFalseWithoutALineOfItsOwn) {
    for (const char* sql : {"select n from t where ( n > 1", "select n from t where n > 1 )"}) {
        EXPECT_TRUE(Fails(sql));
        const Strings lines = TakeLog(m_database);
        ASSERT_THAT(lines, SizeIs(2));
        EXPECT_EQ(lines[1], "SQL Analyze - ok");
    }
}

TEST_F(DbQueryTest, Query_UnknownOrderField_FailsWithTheFieldLine) {
    EXPECT_TRUE(Fails("select n from T where n > 1 order by t, [Nope]"));
    EXPECT_THAT(TakeLog(m_database),
                ElementsAre("SQL Analyze - query 'select n from t where n > 1 order by t, [nope]'",
                            "SQL Analyze - ok", "SQL Analyze - no 'nope' field found in 't' table"));
}

TEST_F(DbQueryTest, Query_FieldsThatFollowTheTable_AreCheckedAllTheSame) {
    EXPECT_THAT(Answer("from t select n,t where n > 4"), ElementsAre("5 c"));
    TakeLog(m_database);
    EXPECT_TRUE(Fails("from t select n,nope"));
    EXPECT_THAT(TakeLog(m_database), testing::Contains("SQL Analyze - no 'nope' field found in 't' table"));
}

TEST_F(DbQueryTest, Query_EmptyAnswer_HasTheFields) {
    const CString name = RunQuery("select t from t where n > 9");
    EXPECT_THAT(Rows(name), IsEmpty());
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("t"));
}

TEST_F(DbQueryTest, Query_OddTexts_AreFalse) {
    for (const char* sql : {" ,;", "select", "select;", "select from", "select '", "select [",
                            "select n from '", "select n from t where t =", "select *", "select,,from,,t"}) {
        EXPECT_TRUE(Fails(sql)) << sql;
    }
    EXPECT_TRUE(Fails(CString("select n from ") + Units({0})));
    EXPECT_TRUE(Fails(Units({'s', 'e', 'l', 'e', 'c', 't', 0, ' ', 'n', ' ', 'f', 'r', 'o', 'm', ' ', 't'})));
    EXPECT_TRUE(Fails(CString("T") + Units({0}))) << "another name than T";
}

TEST_F(DbQueryTest, Query_RandomBytes_AreAnsweredOrRefused) {
    constexpr int Texts = 3000;
    constexpr std::size_t Longest = 60;
    const std::vector<std::string> words = {"select ", " from t", " where ",   " order by ", "n", "t",
                                            "*",       "top ",    "distinct ", "(",          ")", "'",
                                            "\"",      "[",       "]",         " and "};
    std::mt19937 random(quillet::test::Seed(11));
    for (int text = 0; text < Texts; ++text) {
        std::string bytes = text % 2 == 0 ? "" : "select n from t where n > 1";
        for (std::size_t left = random() % Longest; left > 0; --left) {
            const std::string piece = random() % 2 == 0 ? std::string(1, static_cast<char>(random() % 256))
                                                        : words[random() % words.size()];
            bytes.insert(random() % (bytes.size() + 1), piece);
        }
        CString name;
        if (m_database.Query(CString(bytes), name)) {
            Rows(name);
        }
        TakeLog(m_database);
    }
    EXPECT_THAT(Rows("T"), SizeIs(5));
    EXPECT_FALSE(m_database.IsChanged());
}

TEST_F(DbQueryTest, Query_NestedBrackets_BalancedAreAnsweredAndOthersRefused) {
    for (const std::size_t depth : {std::size_t{1000}, std::size_t{60000}}) {
        const std::string open(depth, '(');
        const std::string close(depth, ')');
        const CString begin = CString("select n from t where ") + open + "n>3";
        EXPECT_THAT(Answer(begin + close), ElementsAre("4", "5"));
        EXPECT_TRUE(Fails(begin));
        EXPECT_TRUE(Fails(begin + close + ")"));
        EXPECT_TRUE(Fails(begin + close.substr(1)));
        EXPECT_THAT(Answer("select n from t where " + CString(close) + "n>3" + open), IsEmpty())
            << "as many, in the wrong order";
        EXPECT_THAT(Answer("select n from t where not" + CString(open) + " n>3" + close),
                    ElementsAre("1", "2", "3"));
    }
}

TEST_F(DbQueryTest, Query_LineEnds_AreBlanks) {
    EXPECT_THAT(Answer("select\rn\nfrom\r\nt\nwhere n\r\n>\n4"), ElementsAre("5"));
    Data("T")[0].SetValue("t", CComVariant("x y"));
    EXPECT_THAT(Answer("select n from t where t = 'x\ny'"), ElementsAre("1"));
    EXPECT_FALSE(m_database.VerifySQL("select n\nfrom t"));
}

TEST_F(DbQueryTest, Query_UnclosedQuote_ReachesToTheEnd) {
    EXPECT_THAT(Answer("select n from t where t = 'C"), ElementsAre("5"));
    EXPECT_THAT(Answer("select n from t where t = 'c order by n"), IsEmpty());
}

// ---- Names

TEST_F(DbQueryTest, Names_CountUp) {
    EXPECT_EQ(RunQuery("select n from t where n > 1"), "Query_0");
    EXPECT_EQ(RunQuery("t"), "T");
    EXPECT_EQ(RunQuery("select * from t"), "T");
    EXPECT_EQ(RunQuery("select n from t where n > 2"), "Query_3");
    EXPECT_EQ(DbDatabase::m_queriesCount, 4);
}

TEST_F(DbQueryTest, Names_OfTheUsersTables_ArePassedOver) {
    AddTable("Query_0");
    m_database.CreateTable("QUERY_1", DbTableInfo::None);
    const CString name = RunQuery("select n from t where n > 4");
    EXPECT_EQ(name, "Query_2");
    EXPECT_THAT(Rows(name), ElementsAre("5"));
    EXPECT_THAT(Rows("Query_0"), SizeIs(5)) << "the user's table is not touched";
}

TEST_F(DbQueryTest, Names_OfOtherDatabases_CountUpTogether) {
    DbDatabase other;
    other.CreateTable("T", DbTableInfo::Table)->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
    RunQuery("select n from t where n > 1");
    CString name;
    EXPECT_TRUE(other.Query("select n from t where n > 1", name));
    EXPECT_EQ(name, "Query_1");
}

TEST_F(DbQueryTest, Names_OfFields_InBracketsWithBlanksAndBeyondAscii) {
    DbTableDescr& descr = *Info("T").GetDescr();
    descr.CreateField("Max \u0394 mm", false, DbFieldDescr::Double);
    descr.CreateField("select", false, DbFieldDescr::Text);
    Data("T")[3].SetValue("Max \u0394 mm", CComVariant(7.5));
    const CString name = RunQuery("select [MAX \u03B4 mm],[Select],N from [t] where [max \u0394 mm] > 7");
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("Max \u0394 mm", "select", "n"))
        << "spelled as in the source";
    EXPECT_THAT(Rows(name), SizeIs(1));
    AddTable("\u0141uki i \u0442\u0435\u0441\u0442");
    EXPECT_THAT(Answer("select n from [\u0142UKI I \u0422\u0435\u0421\u0442] where n = 2"), ElementsAre("2"));
}

TEST_F(DbQueryTest, Names_WithBracketsOfTheirOwn_NeedAPairAndTwoInConditionsAndOrder) {
    Info("T").GetDescr()->CreateField("h [mm]", false, DbFieldDescr::Long);
    Data("T")[1].SetValue("[h [mm]]", Long(7));
    Data("T")[2].SetValue("[h [mm]]", Long(6));
    EXPECT_THAT(Answer("select n,[h [mm]] from t where [[h [mm]]] > 5 order by [[h [mm]]]"),
                ElementsAre("3 6", "2 7"));
    EXPECT_TRUE(Fails("select n from t where [h [mm]] > 5"));
    EXPECT_TRUE(Fails("select n from t order by [h [mm]]"));
    EXPECT_THAT(Answer("select n from t where t = [C]"), ElementsAre("5"))
        << "a value loses its brackets too";
    AddTable("T [mm]");
    EXPECT_THAT(Answer("select n from [T [mm]] where n > 4"), ElementsAre("5"));
}

TEST_F(DbQueryTest, Names_WithABracketBeforeABlank_CantBeWritten) {
    Info("T").GetDescr()->CreateField("a] b", false, DbFieldDescr::Long);
    EXPECT_TRUE(Fails("select [a] b] from t"));
}

TEST_F(DbQueryTest, Names_OfTablesWithOperatorSigns_CanBeWrittenWithBlanksAroundOrAlone) {
    AddTable("load (kN)");
    AddTable("b * h");
    EXPECT_EQ(RunQuery("load (kn)"), "load (kN)");
    EXPECT_TRUE(Fails("select n from [load (kn)] where n > 4"));
    EXPECT_THAT(Answer("select n from [b * h] where n > 4"), ElementsAre("5"));
}

TEST_F(DbQueryTest, Names_OfFieldsWithOperatorSigns_AreFoundWithTheirBlanks) {
    DbTableDescr& descr = *Info("T").GetDescr();
    LONG value = 0;
    for (const char* const name : {"h (mm)", "(G)", "n=r", "n = t", "a<=b*c", "x != y", "[k (N)]"}) {
        descr.CreateField(name, false, DbFieldDescr::Long);
        Data("T")[1][descr.size() - 1].GetVariant() = Long(++value);
    }
    EXPECT_THAT(Answer("select [H (mm)],[(G)],[n=r],[n = t],[a<=b*c],[x != y],[[k (N)]] from t where n = 2"),
                ElementsAre("1 2 3 4 5 6 7"));
    EXPECT_THAT(Answer("select n,[h (mm)] from t where [h (mm)]=1 and 2 = [(g)] and [n=r] < [a<=b*c]"),
                ElementsAre("2 1"));
    EXPECT_THAT(Answer("select n from t where [[[k (N)]]] > 6"), ElementsAre("2"));
    EXPECT_THAT(Answer("select n from t where n < 4 order by [h (mm)], n"), ElementsAre("1", "3", "2"));
    EXPECT_THAT(FieldNames(m_database, RunQuery("select [h (mm)] from t where n = 1")),
                ElementsAre("h (mm)"));
    DbRecordset cursor(&m_database);
    ASSERT_TRUE(cursor.Open("t"));
    EXPECT_TRUE(cursor.FindFirst("[(G)] > 1")) << "nothing is parted at the beginning of a text";
    EXPECT_EQ(cursor.GetAbsolutePosition(), 1);
    EXPECT_TRUE(cursor.FindLast(DbRecordset::Condition("[(G)] = 2 and [h (mm)] = 1")));
}

TEST_F(DbQueryTest, Names_OfFieldsWithOperatorSigns_LogAndTokensStayAsTheyAreRead) {
    Info("T").GetDescr()->CreateField("h (mm)", false, DbFieldDescr::Long);
    TakeLog(m_database);
    EXPECT_FALSE(m_database.VerifySQL("select [b (mm)] from t where [h (mm)] > x"));
    EXPECT_THAT(TakeLog(m_database),
                ElementsAre("SQL Analyze - query 'select [b (mm)] from t where [h (mm)] > x'",
                            "SQL Analyze - no '[b ( mm ) ]' field found in 't' table",
                            "SQL Analyze - invalid condition 'h ( mm )  > x'", "SQL Analyze - failed"));
    parser::QueryAnalysisParams params;
    EXPECT_TRUE(
        m_database.AnalyzeSQL("select [h (mm)] from t where [h (mm)] > 1 order by [h (mm)]", &params));
    EXPECT_THAT(Utf8Of(params.fields), ElementsAre("[h ( mm ) ]"));
    EXPECT_THAT(Utf8Of(params.conditions), ElementsAre("h ( mm )  > 1"));
    EXPECT_THAT(Utf8Of(params.order), ElementsAre("h ( mm ) "));
    EXPECT_THAT(Utf8Of(params.tokens), ElementsAre("select", "[h ( mm ) ]", "from", "t", "where",
                                                   "[h ( mm ) ]", ">", "1", "order", "by", "[h ( mm ) ]"));
}

TEST_F(DbQueryTest, Names_OfFieldsWithOperatorSigns_AreFoundWhereOneFitsAlone) {
    DbTableDescr& descr = *Info("T").GetDescr();
    descr.CreateField("h (mm)", false, DbFieldDescr::Long);
    EXPECT_THAT(Answer("select [h (mm)] from t where n = 1"), ElementsAre("0"));
    descr.CreateField("h ( mm)", false, DbFieldDescr::Long);
    EXPECT_TRUE(Fails("select [h (mm)] from t"));
    EXPECT_TRUE(Fails("select n from t where [h (mm)] = 0"));
    EXPECT_TRUE(Fails("select n from t order by [h (mm)]"));
    descr.CreateField("h ( mm ) ", false, DbFieldDescr::Long);
    const CString name = RunQuery("select [h (mm)] from t where n = 1");
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("h ( mm ) ")) << "the name itself comes first";
}

TEST_F(DbQueryTest, Names_OfFieldsWithOperatorSigns_AreNoValues) {
    DbTableDescr& descr = *Info("T").GetDescr();
    descr.CreateField("c (d)", false, DbFieldDescr::Text);
    Data("T")[1].SetValue("t", CComVariant("c (d)"));
    EXPECT_THAT(Answer("select n from t where t = 'C (D)'"), ElementsAre("2")) << "quoted";
    EXPECT_THAT(Answer("select n from t where [c (d)] = t"), IsEmpty()) << "two fields";
}

TEST_F(DbQueryTest, Query_OtherWordsBeforeSelect_AreRefused) {
    EXPECT_THAT(Answer("top 2 from t select n where n > 1"), ElementsAre("2", "3"));
    for (const char* sql : {"please select n from t", "by select n from t", "distinct select n from t"}) {
        EXPECT_TRUE(Fails(sql)) << sql;
    }
}

TEST_F(DbQueryTest, Names_TwiceInTheSelectList_GiveOneField) {
    const CString name = RunQuery("select n,t,N,[n] from t where n > 4");
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("n", "t"));
    EXPECT_THAT(Rows(name), ElementsAre("5 c"));
}

// ---- Reuse

TEST_F(DbQueryTest, Reuse_SameText_IsAnsweredByTheSameTable) {
    const CString sql = "select n from t where n > 3";
    const CString name = RunQuery(sql);
    DbTableRow* const row = Data(name).GetRow(0);
    TakeLog(m_database);
    EXPECT_EQ(QueriesRun([&] { EXPECT_EQ(RunQuery(sql), name); }), 1);
    EXPECT_EQ(Data(name).GetRow(0), row) << "nothing was built";
    const Strings lines = TakeLog(m_database);
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_THAT(lines[2], StartsWith("Query 'Query_0' processed in "));
    EXPECT_EQ(m_database.GetTablesCount(), 2);
}

TEST_F(DbQueryTest, Reuse_OtherText_IsAnotherQuery) {
    EXPECT_NE(RunQuery("select n from t where n > 3"), RunQuery("SELECT n from t where n > 3"));
    EXPECT_NE(RunQuery("select n from t where n > 3"), RunQuery("select n from t where n  > 3"));
}

TEST_F(DbQueryTest, Reuse_AfterAnEdit_FillsTheSameTableAnew) {
    const CString sql = "select n from t where n > 3";
    const CString name = RunQuery(sql);
    DbTableData* const data = &Data(name);
    Set(0, 9);
    EXPECT_FALSE(Info(name).IsQuerySync());
    EXPECT_EQ(RunQuery(sql), name);
    EXPECT_TRUE(Info(name).IsQuerySync());
    EXPECT_EQ(&Data(name), data);
    EXPECT_THAT(Rows(name), ElementsAre("9", "4", "5"));
    EXPECT_EQ(m_database.GetTablesCount(), 2);
}

TEST_F(DbQueryTest, Reuse_EditsBetweenAnswers_AreFollowedByAll) {
    const CString low = RunQuery("select n from t where n < 3");
    Set(0, 7);
    const CString high = RunQuery("select n from t where n > 6");
    EXPECT_THAT(Rows(high), ElementsAre("7"));
    EXPECT_THAT(Rows(low), ElementsAre("2"));
    Set(1, 8);
    EXPECT_THAT(Rows(low), IsEmpty());
    EXPECT_THAT(Rows(high), ElementsAre("7", "8"));
    // Changes elsewhere do not count.
    AddTable("U");
    EXPECT_EQ(QueriesRun([&] { Rows(low); }) + QueriesRun([&] { Rows(high); }), 0);
    m_database.DeleteTable("U");
    EXPECT_EQ(QueriesRun([&] { Rows(low); }) + QueriesRun([&] { Rows(high); }), 0);
    Set(0, 6);
    m_database.DeleteTable(low);
    EXPECT_THAT(Rows(high), ElementsAre("8"));
    Data("T").DeleteRow(1);
    EXPECT_THAT(Rows(high), IsEmpty());
}

TEST_F(DbQueryTest, Reuse_OfARenamedQuery_FindsItByItsText) {
    const CString sql = "select n from t where n > 3";
    ASSERT_TRUE(m_database.RenameTable(RunQuery(sql), "Mine"));
    EXPECT_EQ(RunQuery(sql), "Mine");
    Set(0, 9);
    EXPECT_THAT(Rows("mine"), ElementsAre("9", "4", "5"));
    EXPECT_EQ(RunQuery(sql), "Mine");
    EXPECT_FALSE(m_database.IsTable("Query_0"));
}

TEST_F(DbQueryTest, Reuse_OfSeveralWithOneText_IsTheFirstByName) {
    const CString sql = "select n from t where n > 3";
    for (const char* name : {"Second", "first", "Third"}) {
        m_database.CreateTable(name, DbTableInfo::Query, sql, &Info("T"));
    }
    m_database.CreateTable("A", DbTableInfo::Table, sql);
    EXPECT_EQ(RunQuery(sql), "first");
    ASSERT_TRUE(m_database.RenameTable("first", "Zebra"));
    EXPECT_EQ(RunQuery(sql), "Second");
    ASSERT_TRUE(m_database.RenameTable("Third", "back"));
    EXPECT_EQ(RunQuery(sql), "back");
    m_database.DeleteTable("back");
    m_database.DeleteTable("Second");
    EXPECT_EQ(RunQuery(sql), "Zebra");
    // The entry that loses its name is no longer found.
    m_database.RenameTable("Zebra", "A");
    EXPECT_EQ(RunQuery(sql).Left(6), "Query_");
    m_database.DeleteTable("T");
    AddTable("T");
    EXPECT_EQ(RunQuery(sql).Left(6), "Query_");
}

TEST_F(DbQueryTest, Reuse_OfAJoinsName_IsAnotherQuery) {
    AddTable("select");
    const CString join = m_database.inner_join("T", "select", "n", "=", "n");
    ASSERT_EQ(join, "T INNER JOIN select ON n = n");
    EXPECT_TRUE(Fails(join)) << "a text of its own";
}

TEST_F(DbQueryTest, Reuse_WhereAHostPutAnotherEntryInItsPlace_TakesNoTable) {
    const CString sql = "select n from t where n > 3";
    const CString name = RunQuery(sql);
    AddTable("U");
    const DbTableInfo query = Info(name);
    Info(name) = Info("U");
    EXPECT_NE(RunQuery(sql), "U");
    EXPECT_THAT(Rows("U"), SizeIs(5));
    Info(name) = query;
    EXPECT_EQ(RunQuery(sql), name);
}

TEST_F(DbQueryTest, Reuse_WhereTheNameNowIsAnotherTable_FollowsTheName) {
    const CString sql = "select n from t where n > 3";
    const CString name = RunQuery(sql);
    AddTable("U");
    // This deletes the entry of T, and the query has no source.
    m_database.RenameTable("T", "U");
    DbTableData& data = *AddTable("T")->GetData();
    data.DeleteRow(4);
    EXPECT_EQ(RunQuery(sql), name);
    EXPECT_EQ(Info(name).GetRelated(), &Info("T"));
    EXPECT_THAT(Rows(name), ElementsAre("4"));
}

// ---- The whole table

TEST_F(DbQueryTest, WholeTable_IsAnsweredByTheTable) {
    for (const char* sql :
         {"select * from t", "SELECT n,t,r FROM [T]", "select N, T, R from t", "select distinct * from t",
          "select distinct n,t,r from t", "select * from t where not"}) {
        EXPECT_EQ(RunQuery(sql), "T") << sql;
    }
    EXPECT_EQ(m_database.GetTablesCount(), 1);
}

TEST_F(DbQueryTest, WholeTable_OfAQuery_IsThatQuery) {
    const CString name = RunQuery("select n from t where n > 3");
    EXPECT_EQ(RunQuery("select * from " + name), name);
    EXPECT_EQ(RunQuery("select n from " + name), name);
}

TEST_F(DbQueryTest, WholeTable_WithAnythingElse_IsBuilt) {
    AddTable("U");
    for (const char* sql : {"select top 9 * from t", "select top 0 * from t", "select * from t order by n",
                            "select * from t where n > 0", "select n,t from t", "select t,n,r from t",
                            "select n,t,r,n from t", "select * from t,u", "select n,t,r from t top 9"}) {
        EXPECT_THAT(RunQuery(sql), testing::Ne("T")) << sql;
    }
}

TEST_F(DbQueryTest, WholeTable_NamesAreComparedAsWritten) {
    const CString name = RunQuery("select [n],[t],r from t");
    EXPECT_EQ(name, "Query_0") << "brackets make another name";
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("n", "t", "r"));
    EXPECT_FALSE(Data(name).GetRows()->IsBinded());
    EXPECT_THAT(Rows(name), SizeIs(5));
}

TEST_F(DbQueryTest, WholeTable_WhichItBecame_IsTheTableThen) {
    const CString sql = "select n,t from t";
    const CString name = RunQuery(sql);
    EXPECT_EQ(name, "Query_0");
    Info("T").GetDescr()->DeleteField("r");
    EXPECT_EQ(RunQuery(sql), "T");
    Set(0, 9);
    EXPECT_THAT(Rows(name), ElementsAre("9 b", "2 a", "3 B", "4 a", "5 c")) << "the old answer follows, too";
}

// ---- Selection, order, distinct, top

TEST_F(DbQueryTest, Where_ChainsGroupFromTheRight) {
    EXPECT_THAT(Answer("select n from t where n = 1 and n = 2 or n = 1"), ElementsAre("1"));
    EXPECT_THAT(Answer("select n from t where n = 9 and n = 2 or n = 3"), IsEmpty())
        << "n = 9 and (n = 2 or n = 3)";
    EXPECT_THAT(Answer("select n from t where ( n = 9 and n = 2 ) or n = 3"), ElementsAre("3"));
    EXPECT_THAT(Answer("select n from t where not n = 1 and n = 2"), SizeIs(5)) << "not (n = 1 and n = 2)";
    EXPECT_THAT(Answer("select n from t where (not n=1)and(not n=2)"), ElementsAre("3", "4", "5"));
}

TEST_F(DbQueryTest, Where_DanglingOperator_IsEvaluatedAsItStands) {
    EXPECT_THAT(Answer("select n from t where n > 1 or"), IsEmpty());
    EXPECT_THAT(Answer("select n from t where n > 3 not"), ElementsAre("1", "2", "3"));
    EXPECT_THAT(Answer("select n from t where ) n > 1 ("), IsEmpty());
    EXPECT_THAT(Answer("select n from t where n > 1 n > 4"), ElementsAre("5")) << "the last operand counts";
}

TEST_F(DbQueryTest, Where_FieldsAndLiteralsOnEitherSide) {
    EXPECT_THAT(Answer("select n from t where 3 < n"), ElementsAre("4", "5"));
    EXPECT_THAT(Answer("select n from t where t = 'B'"), ElementsAre("1", "3"));
    EXPECT_THAT(Answer("select n from t where t = B"), ElementsAre("1", "3"));
    EXPECT_THAT(Answer("select n from t where r >= '1,5'"), ElementsAre("2", "4", "5"));
    EXPECT_TRUE(Fails("select n from t where r >= 1,5")) << "a comma separates, and the 5 is left";
}

TEST_F(DbQueryTest, Top_StopsAtTheFirstHits) {
    EXPECT_THAT(Answer("select top 2 n from t where n > 1"), ElementsAre("2", "3"));
    EXPECT_THAT(Answer("select top 2 * from t"), ElementsAre("1 b 0.5", "2 a 1.5"));
    EXPECT_THAT(Answer("select top 9 n from t"), SizeIs(5));
    EXPECT_THAT(Answer("select top 0 n from t"), IsEmpty());
    EXPECT_THAT(Answer("select top 0 * from t"), IsEmpty());
    EXPECT_THAT(Answer("select top many n from t"), IsEmpty());
}

TEST_F(DbQueryTest, Top_ComesBeforeOrderAndDistinct) {
    EXPECT_THAT(Answer("select top 3 n from t order by n desc"), ElementsAre("3", "2", "1"));
    EXPECT_THAT(Answer("select distinct top 4 t from t order by t"), ElementsAre("a", "B", "b"))
        << "equal ones stand as the search places them";
    EXPECT_THAT(Answer("select distinct top 2 r from t where n > 1"), ElementsAre("1.5", "0.5"));
}

TEST_F(DbQueryTest, Order_OneField) {
    EXPECT_THAT(Answer("select n from t order by n desc"), ElementsAre("5", "4", "3", "2", "1"));
    EXPECT_THAT(Answer("select t from t order by t"), SizeIs(5));
    EXPECT_THAT(Answer("select r from t order by r"), ElementsAre("0.5", "0.5", "1.5", "1.5", "2.5"));
    EXPECT_THAT(Answer("select n from t where n < 4 order by [N] asc"), ElementsAre("1", "2", "3"))
        << "by a field that is not shown";
}

TEST_F(DbQueryTest, Order_SeveralFields_InTurn) {
    EXPECT_THAT(Answer("select r,n from t order by r,n"),
                ElementsAre("0.5 1", "0.5 3", "1.5 2", "1.5 5", "2.5 4"));
    EXPECT_THAT(Answer("select r,n from t order by r desc,n"),
                ElementsAre("2.5 4", "1.5 5", "1.5 2", "0.5 3", "0.5 1"))
        << "desc turns all of it";
    EXPECT_THAT(Answer("select t,r,n from t where t = 'a' order by t,r desc"),
                ElementsAre("a 2.5 4", "a 1.5 2"));
}

TEST_F(DbQueryTest, Order_NamesAgain_ChangeNothing) {
    EXPECT_THAT(Answer("select n from t order by r,n,r,[R],n"), ElementsAre("1", "3", "2", "5", "4"));
    EXPECT_THAT(Answer("select n from t where n < 4 order by r,t,r desc"), ElementsAre("2", "1", "3"));
}

// Each name would be a column to sort by if it did not count once.
TEST_F(DbQueryTest, Order_ThousandsOfNames_CostNoMoreThanOne) {
    constexpr LONG Count = 5000;
    constexpr int Names = 8000;
    DbTableData& data = Data("T");
    for (LONG i = 0; i < Count; ++i) {
        data[data.AddRow()].SetValue("n", Long(i / 2));
    }
    std::string names = "n";
    for (int i = 1; i < Names; ++i) {
        names += ",n";
    }
    EXPECT_EQ(Data(RunQuery("select n from t order by " + CString(names))).size(), Count + 5U);
    EXPECT_EQ(Data(RunQuery("select distinct " + CString(names) + " from t")).size(), Count / 2U);
}

TEST_F(DbQueryTest, Distinct_LooksAtTheSelectedFieldsAndKnowsCase) {
    EXPECT_THAT(Answer("select distinct t from t"), ElementsAre("b", "a", "B", "c"));
    EXPECT_THAT(Answer("select distinct r from t"), ElementsAre("0.5", "1.5", "2.5"));
    EXPECT_THAT(Answer("select distinct r,t from t where n < 4"), SizeIs(3));
    Data("T")[4].SetValue("n", Long(1));
    Data("T")[4].SetValue("t", CComVariant("b"));
    Data("T")[4].SetValue("r", CComVariant(0.5));
    EXPECT_THAT(Answer("select distinct * from t where n = 1"), ElementsAre("1 b 0.5"));
}

TEST_F(DbQueryTest, Distinct_Nulls_AreEqual) {
    Data("T")[0]["t"].GetVariant() = NullVariant();
    Data("T")[2]["t"].GetVariant() = NullVariant();
    Data("T")[0].SetChanged();
    EXPECT_THAT(Answer("select distinct t from t where n < 4"), ElementsAre("", "a"));
}

TEST_F(DbQueryTest, CopiedCells_KeepValueTypeAndNullFlag) {
    DbTableRow& source = Data("T")[1];
    source["t"].SetNull(true);
    source["r"].GetVariant() = NullVariant();
    source.SetChanged();
    const DbTableRow& row = Data(RunQuery("select r,t,n from t where n = 2"))[0];
    EXPECT_EQ(row[0].GetType(), VT_NULL);
    EXPECT_TRUE(row[1].IsNull());
    EXPECT_EQ(TextOf(row[1].GetVariant()), "a");
    EXPECT_EQ(row[2].GetVariant(), Long(2));
    EXPECT_FALSE(row[2].IsNull());
}

TEST_F(DbQueryTest, SeveralTables_TheFirstIsSearchedAndTheAnswerIsComputedEachTime) {
    AddTable("U");
    const CString sql = "select n from t,u where n > 3";
    const CString name = RunQuery(sql);
    EXPECT_EQ(Info(name).GetRelated(), &Info("T"));
    EXPECT_THAT(Rows(name), ElementsAre("4", "5"));
    Data(name)[0].SetValue("n", Long(77));
    EXPECT_EQ(RunQuery(sql), name);
    EXPECT_THAT(Rows(name), ElementsAre("4", "5"));
    Info("U").GetDescr()->DeleteField("n");
    EXPECT_TRUE(Fails(sql));
    EXPECT_THAT(Rows(name), ElementsAre("4", "5"));
}

// ---- Rows of a "*" answer

TEST_F(DbQueryTest, Star_RowsAreThoseOfTheTable) {
    const CString name = RunQuery("select * from t where n > 3 order by n desc");
    DbTableData& answer = Data(name);
    EXPECT_TRUE(answer.GetRows()->IsBinded());
    ASSERT_EQ(answer.size(), 2U);
    EXPECT_EQ(answer.GetRow(0), Data("T").GetRow(4));
    EXPECT_EQ(answer.GetRow(1), Data("T").GetRow(3));
    EXPECT_EQ(answer.GetRow(0)->GetDescr(), Info("T").GetDescr());
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("n", "t", "r"));
}

TEST_F(DbQueryTest, Star_EditsAreSeenInBoth) {
    const CString name = RunQuery("select * from t where n > 3");
    DbTableData& answer = Data(name);
    answer[0].SetValue("t", CComVariant("new"));
    EXPECT_EQ(Rows("T")[3], "4 new 2.5");
    EXPECT_TRUE(m_database.IsChanged());
    EXPECT_FALSE(Info(name).IsQuerySync());
    Set(4, 55);
    EXPECT_THAT(RowsOf(answer), ElementsAre("4 new 2.5", "55 c 1.5")) << "before any refresh";
    EXPECT_THAT(Rows(name), ElementsAre("4 new 2.5", "55 c 1.5"));
    m_database.Sync();
}

TEST_F(DbQueryTest, Star_RowsThatAreAdded_StandInTheTable) {
    const CString name = RunQuery("select * from t where n > 3");
    DbTableData& answer = Data(name);
    ASSERT_EQ(answer.AddRow(), 2U);
    answer[2].SetValue("n", Long(6));
    EXPECT_EQ(Data("T").size(), 6U);
    EXPECT_EQ(Rows("T")[5], "6  0");
    EXPECT_THAT(Rows(name), ElementsAre("4 a 2.5", "5 c 1.5", "6  0"));
    Data(name)[Data(name).AddRow()].SetValue("n", Long(1));
    EXPECT_THAT(Rows(name), SizeIs(3)) << "the next row does not meet the condition";
    EXPECT_THAT(Rows("T"), SizeIs(7));
    m_database.Sync();
}

TEST_F(DbQueryTest, Star_RowsOfTheTableThatAreDeleted_AreNotTouchedAnyMore) {
    const CString name = RunQuery("select * from t where n > 3");
    DbTableData& answer = Data(name);
    Data("T").DeleteRow(4);
    EXPECT_THAT(RowsOf(answer), ElementsAre("4 a 2.5", "no row"));
    EXPECT_THAT(Rows(name), ElementsAre("4 a 2.5"));
    while (Data("T").size() > 0) {
        Data("T").DeleteRow(0);
    }
    EXPECT_THAT(RowsOf(answer), ElementsAre("no row"));
    EXPECT_THAT(Rows(name), IsEmpty());
    m_database.Sync();
}

TEST_F(DbQueryTest, Star_RowThatIsDeletedInTheAnswer_IsGoneFromTheTable) {
    const CString name = RunQuery("select * from t where n > 3");
    Data(name).DeleteRow(0);
    EXPECT_THAT(Rows("T"), ElementsAre("1 b 0.5", "2 a 1.5", "3 B 0.5", "5 c 1.5"));
    EXPECT_THAT(Rows(name), ElementsAre("5 c 1.5"));
    m_database.Sync();
}

TEST_F(DbQueryTest, Star_OfATableWithTwoFieldsOfOneName_HasBoth) {
    TemporaryFolder folder;
    CatalogParts parts = SmallParts();
    parts.m_bodyStructure = TableXml(
        "Alpha", FieldXml("name", TextType) + FieldXml("NAME", TextType) + FieldXml("count", LongType));
    parts.m_bodyData =
        TableXml("Alpha", "<row a=\"x\" b=\"y\" c=\"1\" />\n<row a=\"v\" b=\"w\" c=\"2\" />\n");
    WriteBytes(folder / "twice.xml", parts.Xml());
    const auto database = Open(folder / "twice.xml", Reading::Whole);
    CString name;
    ASSERT_TRUE(database->Query("select * from alpha where count > 1", name));
    EXPECT_THAT(FieldNames(*database, name), ElementsAre("name", "NAME", "count"));
    EXPECT_THAT(RowsOf(*database, name), ElementsAre("v w 2"));
    CString upper;
    ASSERT_TRUE(database->Query("select count from " + name + " where count = 2", upper));
    EXPECT_THAT(RowsOf(*database, upper), ElementsAre("2"));
}

// ---- Up to date with the table

// How a query follows what happens to its table, when its data is asked for.
class DbQueryFollows : public DbQueryTest, public testing::WithParamInterface<const char*> {
protected:
    // The rows of the answer and of queries over it, which must all be n and t of the same rows.
    Strings All() {
        const Strings lower = Rows(m_lower);
        EXPECT_EQ(Rows(m_upper), lower);
        EXPECT_EQ(Rows(m_top), lower);
        return lower;
    }
    void RunAllQueries() {
        Info("T").GetDescr()->DeleteField("r");
        m_lower = RunQuery(CString("select ") + GetParam() + " from t where n > 3");
        m_upper = RunQuery(CString("select ") + GetParam() + " from " + m_lower + " where n > 0");
        m_top = RunQuery(CString("select ") + GetParam() + " from " + m_upper + " order by n");
    }
    CString m_lower;
    CString m_upper;
    CString m_top;
};

std::string ListName(const testing::TestParamInfo<const char*>& info) {
    return info.param[0] == '*' ? "Bound" : "Copied";
}

INSTANTIATE_TEST_SUITE_P(, DbQueryFollows, testing::Values("*", "n,t"), ListName);

TEST_P(DbQueryFollows, Edits) {
    RunAllQueries();
    EXPECT_THAT(All(), ElementsAre("4 a", "5 c"));
    Set(4, 1);
    EXPECT_THAT(All(), ElementsAre("4 a"));
    Data("T")[3].SetValue("t", CComVariant("z"));
    EXPECT_THAT(All(), ElementsAre("4 z"));
}

TEST_P(DbQueryFollows, RowsAddedAndDeleted) {
    RunAllQueries();
    DbTableData& table = Data("T");
    table[table.AddRow()].SetValue("n", Long(6));
    EXPECT_THAT(All(), ElementsAre("4 a", "5 c", "6 "));
    table.DeleteRow(0);
    EXPECT_THAT(All(), ElementsAre("4 a", "5 c", "6 "));
    table.DeleteRow(2);
    EXPECT_THAT(All(), ElementsAre("5 c", "6 "));
    while (table.size() > 0) {
        table.DeleteRow(0);
    }
    EXPECT_THAT(All(), IsEmpty());
}

TEST_P(DbQueryFollows, TheUpperFirst) {
    RunAllQueries();
    Set(0, 9);
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a", "5 c", "9 b"));
    EXPECT_THAT(Rows(m_upper), ElementsAre("9 b", "4 a", "5 c"));
    EXPECT_THAT(Rows(m_lower), ElementsAre("9 b", "4 a", "5 c"));
}

TEST_P(DbQueryFollows, TheLowerAlone_DoesNotLeaveTheUpperBehind) {
    RunAllQueries();
    Set(4, 1);
    EXPECT_THAT(Rows(m_lower), ElementsAre("4 a"));
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a"));
    Set(4, 7);
    EXPECT_THAT(Rows(m_upper), ElementsAre("4 a", "7 c"));
    EXPECT_EQ(RunQuery(Info(m_top).GetSql()), m_top);
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a", "7 c"));
    Set(4, 8);
    EXPECT_EQ(RunQuery(Info(m_lower).GetSql()), m_lower);
    EXPECT_EQ(RunQuery(Info(m_top).GetSql()), m_top);
    EXPECT_THAT(RowsOf(*Info(m_top).GetData()), ElementsAre("4 a", "8 c"));
}

TEST_P(DbQueryFollows, FieldsAddedAndDeleted) {
    RunAllQueries();
    DbTableDescr& descr = *Info("T").GetDescr();
    descr.DeleteField("t");
    descr.CreateField("T", false, DbFieldDescr::Long);
    Data("T")[4].SetValue("t", Long(8));
    EXPECT_THAT(All(), ElementsAre("4 0", "5 8"));
    EXPECT_EQ((*Info(m_top).GetDescr())["t"].GetDbType(), DbFieldDescr::Long);
    descr.CreateField("more", false, DbFieldDescr::Long);
    const bool bound = GetParam()[0] == '*';
    EXPECT_THAT(All(), bound ? ElementsAre("4 0 0", "5 8 0") : ElementsAre("4 0", "5 8"));
    EXPECT_THAT(FieldNames(m_database, m_top), SizeIs(bound ? 3 : 2));
}

TEST_P(DbQueryFollows, FieldsOfATableWithoutRows) {
    RunAllQueries();
    while (Data("T").size() > 0) {
        Data("T").DeleteRow(0);
    }
    EXPECT_THAT(All(), IsEmpty());
    Info("T").GetDescr()->CreateField("more", false, DbFieldDescr::Long);
    EXPECT_THAT(All(), IsEmpty());
    EXPECT_THAT(FieldNames(m_database, m_top), SizeIs(GetParam()[0] == '*' ? 3 : 2));
}

TEST_P(DbQueryFollows, Clearing) {
    RunAllQueries();
    DbTableData* const held = &Data(m_top);
    m_database.ClearTable("T");
    RowsOf(*held);
    const bool bound = GetParam()[0] == '*';
    for (const CString& name : {m_top, m_upper, m_lower}) {
        Rows(name);
    }
    TakeLog(m_database);
    EXPECT_TRUE(Fails(Info(m_lower).GetSql()));
    EXPECT_THAT(TakeLog(m_database),
                testing::Contains(bound ? "SQL Analyze - invalid condition 'n > 3'"
                                        : "SQL Analyze - no 'n' field found in 't' table"));
    DbTableDescr& descr = *Info("T").GetDescr();
    descr.CreateField("t", false, DbFieldDescr::Text);
    descr.CreateField("n", false, DbFieldDescr::Long);
    DbTableData& table = Data("T");
    table[table.AddRow()].SetValue("n", Long(8));
    EXPECT_THAT(All(), ElementsAre(bound ? " 8" : "8 "));
}

TEST_P(DbQueryFollows, ClearingOfTheLower) {
    RunAllQueries();
    DbTableData* const held = &Data(m_top);
    m_database.ClearTable(m_lower);
    RowsOf(*held);
    Rows(m_top);
    Rows(m_upper);
    Set(0, 9);
    EXPECT_THAT(Rows(m_lower), ElementsAre("9 b", "4 a", "5 c"));
    EXPECT_THAT(Rows(m_upper), ElementsAre("9 b", "4 a", "5 c"));
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a", "5 c", "9 b"));
}

TEST_P(DbQueryFollows, RenamingOfTheTable_KeepsTheRows) {
    RunAllQueries();
    ASSERT_TRUE(m_database.RenameTable("T", "U"));
    TakeLog(m_database);
    EXPECT_THAT(All(), ElementsAre("4 a", "5 c"));
    EXPECT_THAT(TakeLog(m_database), testing::Contains("SQL Analyze - no table 't' found"));
    m_database.DeleteTable("U");
    EXPECT_EQ(m_database.GetTablesCount(), 0);
}

TEST_P(DbQueryFollows, RenamingOfTheTable_AndAnotherOfItsName_FollowsTheName) {
    RunAllQueries();
    m_database.RenameTable("T", "U");
    AddTable("T");
    Info("T").GetDescr()->DeleteField("r");
    Set(0, 9);
    EXPECT_THAT(Rows(m_lower), ElementsAre("9 b", "4 a", "5 c"));
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a", "5 c", "9 b"));
    EXPECT_EQ(Info(m_lower).GetRelated(), &Info("T"));
    m_database.DeleteTable("U");
    EXPECT_THAT(Rows(m_top), SizeIs(3)) << "it does not stand on that any more";
    m_database.DeleteTable("T");
    EXPECT_EQ(m_database.GetTablesCount(), 0);
}

TEST_P(DbQueryFollows, RenamingOfTheLower_KeepsTheRows) {
    RunAllQueries();
    ASSERT_TRUE(m_database.RenameTable(m_lower, "Mine"));
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a", "5 c"));
    Set(0, 9);
    EXPECT_THAT(Rows("Mine"), ElementsAre("9 b", "4 a", "5 c"));
    EXPECT_TRUE(m_database.RenameTable("Mine", m_lower));
    EXPECT_THAT(Rows(m_top), ElementsAre("4 a", "5 c", "9 b"));
}

TEST_P(DbQueryFollows, DroppingOfTheTable_DropsThem) {
    RunAllQueries();
    m_database.DeleteTable("T");
    EXPECT_EQ(m_database.GetTablesCount(), 0);
    EXPECT_TRUE(Fails("select n from " + m_lower));
}

TEST_P(DbQueryFollows, DroppingOfTheMiddle_LeavesTheLower) {
    RunAllQueries();
    m_database.DeleteTable(m_upper);
    EXPECT_FALSE(m_database.IsTable(m_top));
    Set(0, 9);
    EXPECT_THAT(Rows(m_lower), ElementsAre("9 b", "4 a", "5 c"));
}

TEST_P(DbQueryFollows, BeforeSaving) {
    TemporaryFolder folder;
    RunAllQueries();
    Set(0, 9);
    DbTableData& held = *Info(m_top).GetData();
    EXPECT_TRUE(m_database.Save(CString(Utf8(folder / "saved.xml"))));
    EXPECT_THAT(RowsOf(held), ElementsAre("4 a", "5 c", "9 b"));
    EXPECT_FALSE(m_database.IsChanged());
}

TEST_P(DbQueryFollows, WhileInStep_NothingIsAsked) {
    RunAllQueries();
    All();
    DbTableRow* const row = Data(m_top).GetRow(0);
    EXPECT_EQ(QueriesRun([&] { All(); }), 0);
    EXPECT_EQ(Data(m_top).GetRow(0), row);
    Set(4, 6);
    EXPECT_EQ(QueriesRun([&] { Rows(m_top); }), 3) << "each of the three once";
    EXPECT_EQ(QueriesRun([&] { All(); }), 0);
}

TEST_P(DbQueryFollows, EveryAnswerOfQueriesOverQueries_StandsOnAllBelow) {
    RunAllQueries();
    EXPECT_TRUE(Info(m_top).IsRelatedWith(&Info(m_upper)));
    EXPECT_TRUE(Info(m_top).IsRelatedWith(&Info(m_lower)));
    EXPECT_TRUE(Info(m_top).IsRelatedWith(&Info("T")));
    EXPECT_FALSE(Info(m_lower).IsRelatedWith(&Info(m_upper)));
}

TEST_F(DbQueryTest, DeletedFieldThatAQueryAsksFor_LeavesTheRowsThatItHas) {
    const CString copied = RunQuery("select n,t from t where n > 3");
    const CString bound = RunQuery("select * from t where n > 3");
    Info("T").GetDescr()->DeleteField("n");
    TakeLog(m_database);
    EXPECT_THAT(Rows(copied), ElementsAre("4 a", "5 c"));
    EXPECT_THAT(TakeLog(m_database), testing::Contains("SQL Analyze - failed"));
    EXPECT_EQ(Data(bound)[1].size(), 2U) << "the table's own row";
    EXPECT_EQ(Data(bound).GetRow(1), Data("T").GetRow(4));
}

TEST_F(DbQueryTest, StarOverStar_RowsThatAreAdded_StandInTheTable) {
    const CString lower = RunQuery("select * from t where n > 3");
    const CString upper = RunQuery("select * from " + lower + " where n > 4");
    DbTableData& held = Data(upper);
    EXPECT_EQ(held.GetRow(0), Data("T").GetRow(4));
    // The lower one is answered anew meanwhile; holders of the upper one do not notice.
    Set(0, 8);
    EXPECT_THAT(Rows(lower), SizeIs(3));
    held[held.AddRow()].SetValue("n", Long(6));
    EXPECT_THAT(Rows("T"), SizeIs(6));
    EXPECT_EQ(held.GetRow(1)->GetDescr(), Info("T").GetDescr());
    EXPECT_THAT(Rows(upper), ElementsAre("8 b 0.5", "5 c 1.5", "6  0"));
    EXPECT_THAT(Rows(lower), ElementsAre("8 b 0.5", "4 a 2.5", "5 c 1.5", "6  0"));
    held.DeleteRow(0);
    EXPECT_THAT(Rows("T"), SizeIs(5));
    EXPECT_THAT(Rows(upper), ElementsAre("5 c 1.5", "6  0"));
    EXPECT_THAT(Rows(lower), SizeIs(3));
}

TEST_F(DbQueryTest, StarOverList_SharesTheRowsOfTheList) {
    const CString lower = RunQuery("select t,n from t where n > 3");
    const CString upper = RunQuery("select * from " + lower + " where n > 4");
    EXPECT_EQ(Data(upper).GetRow(0), Data(lower).GetRow(1));
    Set(4, 44);
    EXPECT_THAT(Rows(upper), ElementsAre("c 44"));
    Data(lower)[1].SetValue("t", CComVariant("edited"));
    EXPECT_THAT(Rows(upper), ElementsAre("edited 44")) << "an edit of the answer below is followed, too";
}

TEST_F(DbQueryTest, ListOverStar_SelectsOutOfTheRowsOfTheTable) {
    const CString lower = RunQuery("select * from t where n > 3 order by n desc");
    EXPECT_THAT(Answer("select r,n from " + lower + " where t = 'a' or t = 'c'"),
                ElementsAre("1.5 5", "2.5 4"));
}

// ---- Calls that change nothing

TEST_F(DbQueryTest, Queries_AreNoChange) {
    const CString name = RunQuery("select n from t where n > 3");
    RunQuery("select * from " + name + " where n > 4");
    RunQuery("select distinct top 2 t from t order by t");
    m_database.VerifySQL("select n from t where n > 2");
    EXPECT_FALSE(m_database.IsChanged());
    Set(0, 9);
    m_database.Sync();
    Rows("Query_1");
    EXPECT_FALSE(m_database.IsChanged()) << "a refresh neither";
}

TEST_F(DbQueryTest, DatabaseThatWasOnlyQueried_WritesNothingWhenItIsDestroyed) {
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        TemporaryFolder folder;
        const std::string bytes = SmallCatalog() + "<!-- as it was -->";
        WriteBytes(folder / "small.xml", bytes);
        {
            const auto database = Open(folder / "small.xml", reading);
            CString name;
            EXPECT_TRUE(database->Query("select name from alpha where count > 1", name));
            EXPECT_TRUE(database->Query("select * from alpha order by name", name));
            EXPECT_TRUE(database->Query("select * from " + name + " where count > 0", name));
            EXPECT_EQ(RowsOf(*database, name).size(), 2U);
            EXPECT_FALSE(database->IsChanged());
        }
        EXPECT_EQ(ReadBytes(folder / "small.xml"), bytes);
    }
}

TEST_F(DbQueryTest, SavedFile_HoldsNoQuery) {
    TemporaryFolder folder;
    const CString path(Utf8(folder / "saved.xml"));
    m_database.Create(path);
    AddTable("T");
    RunQuery("select n from t where n > 3");
    RunQuery("select * from t where n > 3");
    AddTable("U");
    EXPECT_TRUE(m_database.Save(path));
    EXPECT_THAT(ReadBytes(folder / "saved.xml"), Not(HasSubstr("Query")));
    DbDatabase copy(path);
    EXPECT_EQ(copy.GetTablesCount(), 4);
}

// ---- Rows not yet read from the file

TEST_F(DbQueryTest, Sequential_QueryReadsItsTableAndNoLaterOne) {
    TemporaryFolder folder;
    WriteBytes(folder / "small.xml", SmallCatalog());
    const auto database = Open(folder / "small.xml", Reading::Sequential);
    CString name;
    ASSERT_TRUE(database->Query("select count from alpha where name = 'two'", name));
    EXPECT_TRUE(LogHolds(*database, "Table 'Alpha' xml source extracted"));
    EXPECT_FALSE(LogHolds(*database, "Table 'Beta' xml source extracted"));
    EXPECT_THAT(RowsOf(*database, name), ElementsAre("2"));
    TakeLog(*database);
    ASSERT_TRUE(database->Query("select count from alpha where name = 'two'", name));
    EXPECT_EQ(TakeLog(*database).size(), 3U) << "the rows that were read are in step";
    ASSERT_TRUE(database->Query("select size from beta where size > 2", name));
    EXPECT_THAT(RowsOf(*database, name), ElementsAre("2.5"));
    ASSERT_TRUE(database->Query("select * from gamma order by note", name));
    EXPECT_THAT(RowsOf(*database, name), IsEmpty());
    EXPECT_FALSE(database->IsChanged());
}

TEST_F(DbQueryTest, Sequential_NamesAndWholeTables_ReadNoRows) {
    TemporaryFolder folder;
    WriteBytes(folder / "small.xml", SmallCatalog());
    const auto database = Open(folder / "small.xml", Reading::Sequential);
    CString name;
    EXPECT_TRUE(database->Query("alpha", name));
    EXPECT_TRUE(database->Query("select * from alpha", name));
    EXPECT_TRUE(database->VerifySQL("select name from alpha where count > 1"));
    EXPECT_FALSE(LogHolds(*database, "extracted"));
}

TEST_F(DbQueryTest, Sequential_HostsOwnQueryOverUnreadRows_SurvivesWhatIsReadWithinAnotherQuery) {
    TemporaryFolder folder;
    WriteBytes(folder / "small.xml", SmallCatalog());
    const auto database = Open(folder / "small.xml", Reading::Sequential);
    DbTableInfo* const alpha = database->GetTableInfo("alpha");
    DbTableInfo* const own =
        database->CreateTable("Own", DbTableInfo::Query, "select count from alpha where count > 1", alpha);
    own->GetDescr()->CreateField("count", false, DbFieldDescr::Long);
    database->CreateTable("Reads", DbTableInfo::Query, "select count from alpha where count > 0", alpha)
        ->SetSyncStamp(-1);
    // While this is analysed, Own has its filter, and Reads reads the rows that make Own out of date.
    CString name;
    EXPECT_TRUE(database->Query("select count from own where count > 1 from reads", name));
    EXPECT_THAT(RowsOf(*database, "Reads"), ElementsAre("1", "2"));
    EXPECT_THAT(RowsOf(*database, "Own"), ElementsAre("2"));
    EXPECT_THAT(RowsOf(*database, name), ElementsAre("2"));
    parser::QueryAnalysisParams params;
    alpha->GetData()->GetRow(0)->SetValue("count", Long(7));
    EXPECT_TRUE(
        database->AnalyzeSQL("select count from own where count > 2 from reads from " + name, &params));
    (*database->GetTableData("Own"))[0].GetDescr()->Evaluate((*own->GetData())[0]);
    database->Sync();
}

// ---- Queries created by the host

TEST_F(DbQueryTest, HostsOwnQuery_IsFilledWhenItsDataIsAskedFor) {
    DbTableInfo* const table = &Info("T");
    m_database.CreateTable("Some", DbTableInfo::Query, "select n from t where n > 3", table);
    m_database.CreateTable("All", DbTableInfo::Query, "select * from t", table);
    EXPECT_THAT(Rows("Some"), ElementsAre("4", "5"));
    EXPECT_THAT(Rows("All"), SizeIs(5));
    EXPECT_EQ(QueriesRun([&] { Rows("All"); }), 0);
    EXPECT_EQ(RunQuery("select n from t where n > 3"), "Some");
    EXPECT_EQ(RunQuery("select * from t"), "All") << "asked before";
    EXPECT_THAT(TakeLog(m_database), Not(testing::Contains(HasSubstr("stands on itself"))));
}

TEST_F(DbQueryTest, HostsOwnQueries_OfOneText_FollowEachOnItsOwn) {
    const CString sql = "select n from t where n > 3";
    m_database.CreateTable("First", DbTableInfo::Query, sql, &Info("T"));
    m_database.CreateTable("Second", DbTableInfo::Query, sql, &Info("T"));
    EXPECT_THAT(Rows("Second"), ElementsAre("4", "5"));
    EXPECT_THAT(Rows("First"), ElementsAre("4", "5"));
    Set(0, 9);
    EXPECT_THAT(Rows("Second"), ElementsAre("9", "4", "5"));
    EXPECT_THAT(Rows("First"), ElementsAre("9", "4", "5"));
}

TEST_F(DbQueryTest, HostsOwnQuery_ThatSharesItsTablesContents_IsRefusedAndHarmsNothing) {
    const DbTableInfo& table = Info("T");
    DbTableInfo both("Both", DbTableInfo::Query, 0, "select n from t where n > 3", table.GetDescr(),
                     table.GetData(), m_database.GetTableInfo("T"));
    ASSERT_NE(m_database.CreateTable(&both), nullptr);
    DbTableInfo structure("Structure", DbTableInfo::Query, 0, "select n from t where n > 2", table.GetDescr(),
                          nullptr, m_database.GetTableInfo("T"));
    ASSERT_NE(m_database.CreateTable(&structure), nullptr);
    TakeLog(m_database);
    Rows("Both");
    Rows("Structure");
    EXPECT_THAT(TakeLog(m_database),
                testing::IsSupersetOf({"Query 'select n from t where n > 3' stands on itself, or on too many "
                                       "other queries",
                                       "Query 'select n from t where n > 2' stands on itself, or on too many "
                                       "other queries"}));
    EXPECT_THAT(Rows("T"), SizeIs(5));
    EXPECT_THAT(FieldNames(m_database, "T"), SizeIs(3));
}

TEST_F(DbQueryTest, HostsOwnQueries_ThatCantBeAnswered_CostOneTryEach) {
    constexpr int Count = 40;
    CString below = "T";
    for (int i = 0; i < Count; ++i) {
        CString name;
        name.Format("Q%d", i);
        m_database.CreateTable(name, DbTableInfo::Query, "select nope from " + below, &Info(below));
        Info(name).SetSyncStamp(-1);
        below = name;
    }
    EXPECT_EQ(QueriesRun([&] { Rows(below); }), Count);
    TemporaryFolder folder;
    EXPECT_EQ(QueriesRun([&] { m_database.Save(CString(Utf8(folder / "saved.xml"))); }), Count);
}

// ---- Circular queries

constexpr const char* StandsOnItself = "stands on itself, or on too many other queries";

TEST_F(DbQueryTest, Cycle_QueryRenamedToItsOwnTable_IsRefused) {
    const CString sql = "select * from t where n > 3";
    const CString name = RunQuery(sql);
    m_database.RenameTable("T", "U");
    m_database.RenameTable(name, "T");
    TakeLog(m_database);
    EXPECT_TRUE(Fails(sql));
    EXPECT_THAT(TakeLog(m_database), testing::Contains("Query '" + sql.ToUtf8() + "' " + StandsOnItself));
    EXPECT_THAT(Rows("T"), ElementsAre("4 a 2.5", "5 c 1.5"));
    EXPECT_EQ(Info("T").GetRelated(), &Info("U"));
    m_database.DeleteTable("U");
    EXPECT_EQ(m_database.GetTablesCount(), 0);
}

TEST_F(DbQueryTest, Cycle_TwoQueriesThatSwapTheirNames_AreRefused) {
    const CString lower = RunQuery("select n from t where n > 2");
    const CString upper = RunQuery("select n from " + lower + " where n > 3");
    const CString lowerSql = Info(lower).GetSql();
    const CString upperSql = Info(upper).GetSql();
    // Now the lower one has the table's name, which its own text refers to.
    m_database.RenameTable("T", "Away");
    m_database.RenameTable(upper, "T");
    TakeLog(m_database);
    EXPECT_TRUE(Fails(lowerSql));
    EXPECT_THAT(TakeLog(m_database), testing::Contains(HasSubstr(StandsOnItself)));
    Data("Away")[0].SetValue("n", Long(9));
    Rows("T");
    Rows(lower);
    EXPECT_TRUE(Fails(lowerSql));
    CString name;
    m_database.Query(upperSql, name);
    TemporaryFolder folder;
    EXPECT_TRUE(m_database.Save(CString(Utf8(folder / "saved.xml"))));
    m_database.DeleteTable("Away");
    EXPECT_EQ(m_database.GetTablesCount(), 2) << "header and properties";
}

TEST_F(DbQueryTest, Cycle_ThroughALaterFromTable_EndsAndFails) {
    const CString first = RunQuery("select n from t where n > 2");
    const CString second = RunQuery("select n from t," + first + " where n > 3");
    m_database.RenameTable(second, "Other");
    m_database.RenameTable(first, second);
    m_database.RenameTable("Other", first);
    Set(0, 9);
    EXPECT_THAT(Rows(second), SizeIs(4));
    EXPECT_THAT(Rows(first), SizeIs(3));
    Set(1, 9);
    EXPECT_THAT(Rows(first), SizeIs(4));
}

// ---- Filters that a host put on an answer

TEST_F(DbQueryTest, HostsFilters_OnAnAnswer_OutliveItsRefresh) {
    for (const char* list : {"*", "n,t"}) {
        const CString name = RunQuery(CString("select ") + list + " from T where n > 0");
        parser::QueryAnalysisParams params;
        ASSERT_TRUE(m_database.AnalyzeSQL("select n from " + name + " where n > 1", &params));
        const DbFilter* const own = Info(name).GetDescr()->AddFilter("t", "=", "'A'");
        Set(0, Data("T")[0]["n"].GetVariant().lVal + 10);
        DbTableData& data = Data(name);
        EXPECT_TRUE(Info(name).IsQuerySync());
        DbTableDescr& descr = *Info(name).GetDescr();
        descr.Evaluate(data[0]);
        EXPECT_TRUE(params.clause->evaluate());
        EXPECT_FALSE(own->value());
        descr.Evaluate(data[1]);
        EXPECT_TRUE(params.clause->evaluate());
        EXPECT_TRUE(own->value());
        EXPECT_EQ(descr.TakeAllFilters().size(), 2U);
    }
}

TEST_F(DbQueryTest, HostsFilters_OnAJoin_OutliveItsFillingAnew) {
    AddTable("U");
    const CString name = m_database.inner_join("T", "U", "n", "=", "n");
    const DbFilter* const own = Info(name).GetDescr()->AddFilter("n", "=", "2");
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(m_database.inner_join("T", "U", "n", "=", "n"), name);
    Info(name).GetDescr()->Evaluate(Data(name)[1]);
    EXPECT_TRUE(own->value());
}

// ---- Many nested queries

class DbQueryTower : public DbQueryTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(, DbQueryTower, testing::Values("*", "n,t"), ListName);

TEST_P(DbQueryTower, Hundreds_FollowTheTable) {
    constexpr int Count = 400;
    CString name = "T";
    for (int i = 0; i < Count; ++i) {
        name = RunQuery(CString("select ") + GetParam() + " from " + name + " where n > 3");
    }
    EXPECT_THAT(Rows(name), SizeIs(2));
    Set(0, 9);
    EXPECT_EQ(QueriesRun([&] { EXPECT_THAT(Rows(name), SizeIs(3)); }), Count);
    Set(1, 9);
    TemporaryFolder folder;
    EXPECT_EQ(QueriesRun([&] { EXPECT_TRUE(m_database.Save(CString(Utf8(folder / "saved.xml")))); }), Count);
    EXPECT_THAT(RowsOf(*Info(name).GetData()), SizeIs(4));
    Set(2, 9);
    EXPECT_EQ(RunQuery(Info(name).GetSql()), name);
    EXPECT_THAT(RowsOf(*Info(name).GetData()), SizeIs(5));
    m_database.DeleteTable("T");
    EXPECT_EQ(m_database.GetTablesCount(), 2) << "header and properties";
}

TEST_P(DbQueryTower, Thousands_AreAnsweredAndFollow) {
    constexpr int Count = 1600;
    constexpr int Edits = 4;
    constexpr int Times = 500;
    CString name = "T";
    for (int level = 0; level < Count; ++level) {
        name = RunQuery(CString("select ") + GetParam() + " from " + name + " where n > 3");
    }
    for (int i = 0; i < Edits; ++i) {
        Set(0, i + 1);
        EXPECT_THAT(Rows(name), SizeIs(i < 3 ? 2 : 3));
        TakeLog(m_database);
    }
    EXPECT_EQ(QueriesRun([&] {
                  for (int i = 0; i < Times; ++i) {
                      Data(name);
                  }
              }),
              0);
    TemporaryFolder folder;
    Set(1, 9);
    EXPECT_TRUE(m_database.Save(CString(Utf8(folder / "saved.xml"))));
    m_database.DeleteTable("T");
    EXPECT_EQ(m_database.GetTablesCount(), 2) << "header and properties";
}

TEST_F(DbQueryTest, Thousands_OfDifferentQueries_AreAnsweredAndFound) {
    constexpr int Count = 8000;
    for (int i = 0; i < Count; ++i) {
        CString sql;
        sql.Format("select n,t from t where n > %d", i);
        const CString name = RunQuery(sql);
        EXPECT_EQ(RunQuery(sql), name);
        TakeLog(m_database);
    }
    m_database.DeleteTable("T");
    EXPECT_EQ(m_database.GetTablesCount(), 0);
}

TEST_F(DbQueryTest, Hundreds_ThroughLaterFromTables_AreRefusedAtADepth) {
    constexpr int Count = 400;
    CString name = RunQuery("select n from t where n > 3");
    for (int i = 0; i < Count; ++i) {
        name = RunQuery("select n from t," + name + " where n > 3");
    }
    Set(0, 9);
    TakeLog(m_database);
    EXPECT_THAT(Rows(name), ElementsAre("9", "4", "5"));
    EXPECT_THAT(TakeLog(m_database), testing::Contains(HasSubstr(StandsOnItself)));
}

}  // namespace
