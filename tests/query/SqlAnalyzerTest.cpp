#include "Quillet/query/SqlAnalyzer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "support/CountingDescr.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using parser::QueryAnalysisParams;
using testing::ElementsAre;
using testing::IsEmpty;

using Strings = std::vector<std::string>;

// A table T with the fields a (long), b (text), "c d" (double) and e (long), and a table U with a and x.
class DbSqlAnalyzerTest : public testing::Test {
protected:
    DbSqlAnalyzerTest() {
        m_t = new CountingDescr(&m_database);
        m_t->CreateField("a", false, DbFieldDescr::Long);
        m_t->CreateField("B", false, DbFieldDescr::Text);
        m_t->CreateField("c d", false, DbFieldDescr::Double);
        m_t->CreateField("e", false, DbFieldDescr::Long);
        DbTableInfo info("T", DbTableInfo::Table, 0, "", m_t, nullptr, nullptr);
        DbTableData& data = *m_database.CreateTable(&info)->GetData();
        data.AddRows(2);
        data[0].SetValue("a", Long(1));
        data[1].SetValue("a", Long(2));
        m_u = m_database.CreateTable("U", DbTableInfo::Table)->GetDescr();
        m_u->CreateField("a", false, DbFieldDescr::Long);
        m_u->CreateField("x", false, DbFieldDescr::Text);
        TakeLog(m_database);
    }

    ~DbSqlAnalyzerTest() override { DbDatabase::m_queriesCount = m_queriesCount; }

    bool Analyze(const CString& sql) {
        m_params = std::make_unique<QueryAnalysisParams>();
        return m_database.AnalyzeSQL(sql, m_params.get());
    }

    // The lines between the one with the text and the one with the result, which are checked here.
    Strings Troubles(const CString& sql) {
        TakeLog(m_database);
        const bool good = Analyze(sql);
        Strings lines = TakeLog(m_database);
        EXPECT_GE(lines.size(), 2U);
        EXPECT_EQ(lines.back(), good ? "SQL Analyze - ok" : "SQL Analyze - failed");
        EXPECT_EQ(lines.front().rfind("SQL Analyze - query '", 0), 0U);
        EXPECT_EQ(good, lines.size() == 2U) << "every failure has a line of its own";
        return lines.size() < 2 ? lines : Strings(lines.begin() + 1, lines.end() - 1);
    }

    Strings Fields() const { return Utf8Of(m_params->fields); }
    Strings Tables() const { return Utf8Of(m_params->tables); }
    Strings OrderFields() const { return Utf8Of(m_params->order); }
    Strings Conditions() const { return Utf8Of(m_params->conditions); }
    Strings Tokens() const { return Utf8Of(m_params->tokens); }

    const std::int32_t m_queriesCount = DbDatabase::m_queriesCount;
    DbDatabase m_database;
    CountingDescr* m_t = nullptr;
    DbTableDescr* m_u = nullptr;
    std::unique_ptr<QueryAnalysisParams> m_params;
};

constexpr const char* NoFrom = "SQL Analyze - no tables defined, check 'FROM' statement";
constexpr const char* CheckBoth = "SQL Analyze - check 'SELECT' and/or 'FROM' statement";

// ---- The record

TEST(QueryAnalysisParamsTest, Construct_IsAtTheStart) {
    const QueryAnalysisParams params;
    ASSERT_NE(params.clause, nullptr);
    EXPECT_EQ(params.clause->GetClauseString(), "");
    EXPECT_TRUE(params.fields.empty());
    EXPECT_TRUE(params.tables.empty());
    EXPECT_TRUE(params.order.empty());
    EXPECT_FALSE(params.desc);
    EXPECT_TRUE(params.conditions.empty());
    EXPECT_TRUE(params.tokens.empty());
    EXPECT_TRUE(params.parts.empty());
    EXPECT_EQ(params.state, 0);
    EXPECT_EQ(params.savedState, 0);
    EXPECT_FALSE(params.distinct);
    EXPECT_EQ(params.top, -1);
    EXPECT_TRUE(params.filters.empty());
}

TEST_F(DbSqlAnalyzerTest, State_AfterEachKeyword) {
    Analyze("");
    EXPECT_EQ(m_params->state, 0);
    Analyze("select");
    EXPECT_EQ(m_params->state, 1);
    Analyze("select top");
    EXPECT_EQ(m_params->state, 3);
    EXPECT_EQ(m_params->savedState, 1);
    Analyze("select top 4");
    EXPECT_EQ(m_params->state, 1);
    Analyze("from");
    EXPECT_EQ(m_params->state, 4);
    Analyze("where");
    EXPECT_EQ(m_params->state, 5);
    Analyze("order");
    EXPECT_EQ(m_params->state, 6);
    Analyze("order by");
    EXPECT_EQ(m_params->state, 7);
}

TEST_F(DbSqlAnalyzerTest, Analyze_IntoNoRecord_IsFalse) {
    EXPECT_FALSE(m_database.AnalyzeSQL("select a from t", nullptr));
    EXPECT_THAT(TakeLog(m_database), IsEmpty());
}

TEST_F(DbSqlAnalyzerTest, Analyze_IntoARecordWithoutClause_IsFalse) {
    QueryAnalysisParams params;
    params.clause.reset();
    EXPECT_FALSE(m_database.AnalyzeSQL("select a from t where a > 1", &params));
    EXPECT_THAT(TakeLog(m_database), IsEmpty());
    EXPECT_TRUE(params.tokens.empty());
    EXPECT_EQ(m_t->m_made, 0);
}

TEST_F(DbSqlAnalyzerTest, Analyze_IntoARecordPreparedBehindWhere_ReadsConditionsAlone) {
    QueryAnalysisParams params;
    params.state = QueryAnalysisParams::Where;
    params.fields.emplace_back("*");
    params.tables.emplace_back("T");
    EXPECT_TRUE(m_database.AnalyzeSQL("a > 1 and b = 'X Y'", &params));
    EXPECT_THAT(Utf8Of(params.conditions), ElementsAre("a > 1", "b = 'X Y'"));
    EXPECT_EQ(params.clause->GetClauseString(), "exp AND exp");
    EXPECT_EQ(m_t->m_alive, 2);
}

TEST_F(DbSqlAnalyzerTest, Analyze_IntoARecordThatWasFilled_AddsToIt) {
    Analyze("select a from t where a > 1");
    EXPECT_TRUE(m_database.AnalyzeSQL("select e from t", m_params.get()));
    EXPECT_THAT(Fields(), ElementsAre("a", "e"));
    EXPECT_THAT(Tables(), ElementsAre("t", "t"));
    EXPECT_THAT(Conditions(), ElementsAre("a > 1"));
}

// ---- Tokens and lists

TEST_F(DbSqlAnalyzerTest, LineEnds_AreNoBlanks) {
    // Query replaces them by blanks, the analysis does not.
    EXPECT_FALSE(Analyze("select a\nfrom t"));
    EXPECT_THAT(Fields(), ElementsAre("a\nfrom", "t"));
    EXPECT_FALSE(m_database.VerifySQL("select a\r\nfrom t"));
    EXPECT_TRUE(Analyze("select a from t where b = 'x\ny'"));
    EXPECT_THAT(Conditions(), ElementsAre("b = 'x\ny'"));
    CString name;
    EXPECT_TRUE(m_database.Query("select a\r\nfrom t\nwhere a > 1", name));
    EXPECT_EQ(m_database.GetTableData(name)->size(), 1U);
}

TEST_F(DbSqlAnalyzerTest, Tokens_KeywordsAndAllOthers_InTheOrderRead) {
    EXPECT_TRUE(Analyze("select a,b from t where a>1 and b='x y' order by a desc"));
    EXPECT_THAT(Tokens(), ElementsAre("select", "a", "b", "from", "t", "where", "a", ">", "1", "and", "b",
                                      "=", "'x y'", "order", "by", "a", "desc"));
    EXPECT_THAT(Fields(), ElementsAre("a", "b"));
    EXPECT_THAT(Tables(), ElementsAre("t"));
    EXPECT_THAT(Conditions(), ElementsAre("a > 1", "b = 'x y'"));
    EXPECT_THAT(OrderFields(), ElementsAre("a"));
    EXPECT_TRUE(m_params->desc);
    EXPECT_FALSE(m_params->distinct);
    EXPECT_EQ(m_params->top, -1);
    EXPECT_EQ(m_params->clause->GetClauseString(), "exp AND exp");
    EXPECT_EQ(m_params->filters.size(), 2U);
    EXPECT_TRUE(m_params->parts.empty());
}

TEST_F(DbSqlAnalyzerTest, Text_IsLoweredOutsideQuotes) {
    EXPECT_TRUE(Analyze("SELECT A,[C D] FROM T WHERE B='X Y' ORDER BY A DESC"));
    EXPECT_THAT(TakeLog(m_database),
                ElementsAre("SQL Analyze - query 'select a,[c d] from t where b='X Y' order by a desc'",
                            "SQL Analyze - ok"));
    EXPECT_THAT(Fields(), ElementsAre("a", "[c d]"));
    EXPECT_THAT(Conditions(), ElementsAre("b = 'X Y'"));
}

TEST_F(DbSqlAnalyzerTest, Brackets_AreKeptInTheSelectListOnly) {
    EXPECT_TRUE(Analyze("select [a],[c d] from [T] where [c d] > [1] order by [c d], [a]"));
    EXPECT_THAT(Fields(), ElementsAre("[a]", "[c d]"));
    EXPECT_THAT(Tables(), ElementsAre("t"));
    EXPECT_THAT(Conditions(), ElementsAre("c d > 1"));
    EXPECT_THAT(OrderFields(), ElementsAre("c d", "a"));
    EXPECT_THAT(Tokens(), ElementsAre("select", "[a]", "[c d]", "from", "[t]", "where", "[c d]", ">", "[1]",
                                      "order", "by", "[c d]", "[a]"));
}

TEST_F(DbSqlAnalyzerTest, Top_TakesTheLeadingDigitsOfTheNextToken) {
    const auto top = [&](const char* token) {
        EXPECT_TRUE(Analyze(CString("select top ") + token + " a from t")) << token;
        EXPECT_THAT(Fields(), ElementsAre("a")) << token;
        return m_params->top;
    };
    EXPECT_EQ(top("10"), 10);
    EXPECT_EQ(top("0"), 0);
    EXPECT_EQ(top("007"), 7);
    EXPECT_EQ(top("10x"), 10);
    EXPECT_EQ(top("x10"), 0);
    EXPECT_EQ(top("-5"), 0);
    EXPECT_EQ(top("'5'"), 0);
    EXPECT_EQ(top("2147483647"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(top("99999999999999999999"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(top("distinct"), 0) << "a keyword of SELECT alone";
    EXPECT_FALSE(m_params->distinct);
}

TEST_F(DbSqlAnalyzerTest, Top_GoesBackToTheStateBefore) {
    EXPECT_TRUE(Analyze("top 3 select a from t"));
    EXPECT_EQ(m_params->top, 3);
    EXPECT_TRUE(Analyze("select a, top 5 e from top 6 t"));
    EXPECT_EQ(m_params->top, 6) << "the last one counts";
    EXPECT_THAT(Fields(), ElementsAre("a", "e"));
    EXPECT_THAT(Tables(), ElementsAre("t"));
    EXPECT_TRUE(Analyze("select a from t where a top 1 > 1 order by e top 2, b"));
    EXPECT_THAT(Conditions(), ElementsAre("a > 1"));
    EXPECT_THAT(OrderFields(), ElementsAre("e", "b"));
    EXPECT_EQ(m_params->top, 2);
}

TEST_F(DbSqlAnalyzerTest, Distinct_IsAKeywordOfSelectOnly) {
    EXPECT_TRUE(Analyze("select distinct a from t"));
    EXPECT_TRUE(m_params->distinct);
    EXPECT_THAT(Fields(), ElementsAre("a"));
    EXPECT_TRUE(Analyze("select a distinct from t"));
    EXPECT_TRUE(m_params->distinct);
    EXPECT_TRUE(Analyze("select a from t order by distinct"));
    EXPECT_FALSE(m_params->distinct);
    EXPECT_THAT(OrderFields(), ElementsAre("distinct"));
    EXPECT_THAT(Troubles("select a from distinct t"), ElementsAre("SQL Analyze - no table 'distinct' found"));
}

TEST_F(DbSqlAnalyzerTest, Keywords_InBracketsOrQuotes_AreNames) {
    m_u->CreateField("from", false, DbFieldDescr::Text);
    EXPECT_TRUE(Analyze("select [from] from u order by [desc]"));
    EXPECT_THAT(Fields(), ElementsAre("[from]"));
    EXPECT_THAT(OrderFields(), ElementsAre("desc"));
    EXPECT_FALSE(m_params->desc);
}

TEST_F(DbSqlAnalyzerTest, Keywords_OtherwiseThanWhole_AreNames) {
    EXPECT_THAT(Troubles("select selected from t"),
                ElementsAre("SQL Analyze - no 'selected' field found in 't' table"));
    EXPECT_THAT(Troubles("select by from t"), ElementsAre("SQL Analyze - no 'by' field found in 't' table"));
}

TEST_F(DbSqlAnalyzerTest, Order_AscIsPassedOverAndDescHoldsForAll) {
    EXPECT_TRUE(Analyze("select a from t order by a asc, b desc, e asc"));
    EXPECT_THAT(OrderFields(), ElementsAre("a", "b", "e"));
    EXPECT_TRUE(m_params->desc);
    EXPECT_TRUE(Analyze("select a from t order by a asc"));
    EXPECT_FALSE(m_params->desc);
}

TEST_F(DbSqlAnalyzerTest, Order_WithoutBy_IsNone) {
    EXPECT_TRUE(Analyze("select a from t order a"));
    EXPECT_THAT(OrderFields(), IsEmpty());
    EXPECT_THAT(Tokens(), ElementsAre("select", "a", "from", "t", "order"));
}

TEST_F(DbSqlAnalyzerTest, Unconsumed_TokensRunOnIntoTheNext) {
    EXPECT_TRUE(Analyze("sel ect a from t"));
    EXPECT_THAT(Tokens(), ElementsAre("select", "a", "from", "t"));
    EXPECT_THAT(Troubles("explain select a from t"), ElementsAre(CheckBoth));
    EXPECT_THAT(Tokens(), IsEmpty());
    EXPECT_EQ(m_params->state, 0);
    EXPECT_TRUE(Analyze("select a from t order b y a"));
    EXPECT_THAT(OrderFields(), ElementsAre("a"));
    EXPECT_TRUE(Analyze("select a from t order now by a"));
    EXPECT_THAT(OrderFields(), IsEmpty()) << "nowbya";
}

TEST_F(DbSqlAnalyzerTest, Select_Again_AddsToTheFields) {
    EXPECT_TRUE(Analyze("select a select e from t"));
    EXPECT_THAT(Fields(), ElementsAre("a", "e"));
    EXPECT_TRUE(Analyze("from t select a"));
    EXPECT_THAT(Fields(), ElementsAre("a"));
}

// ---- Tables and fields

TEST_F(DbSqlAnalyzerTest, From_UnknownTable_IsNamedAsLowered) {
    EXPECT_THAT(Troubles("select a from [No Such]"), ElementsAre("SQL Analyze - no table 'no such' found"));
    EXPECT_THAT(Tables(), ElementsAre("no such"));
}

TEST_F(DbSqlAnalyzerTest, From_EveryUnknownTable_HasItsLine) {
    EXPECT_THAT(Troubles("select a from n, t, m"),
                ElementsAre("SQL Analyze - no table 'n' found", "SQL Analyze - no table 'm' found"));
    EXPECT_THAT(Tables(), ElementsAre("n", "t", "m"));
}

TEST_F(DbSqlAnalyzerTest, Fields_TheFirstUnknownOne_StopsTheCheck) {
    EXPECT_THAT(Troubles("select a,no,b,not2 from t"),
                ElementsAre("SQL Analyze - no 'no' field found in 't' table"));
}

TEST_F(DbSqlAnalyzerTest, Fields_MustBeInEveryTable_AndTheFirstTableIsNamed) {
    EXPECT_TRUE(Analyze("select a from t,u"));
    EXPECT_THAT(Tables(), ElementsAre("t", "u"));
    EXPECT_THAT(Troubles("select a,b from t,u"),
                ElementsAre("SQL Analyze - no 'b' field found in 't' table"));
    EXPECT_THAT(Troubles("select x from t,u"), ElementsAre("SQL Analyze - no 'x' field found in 't' table"));
}

TEST_F(DbSqlAnalyzerTest, Fields_OfATableThatIsNamedAgain_AreComplainedOfAgain) {
    constexpr const char* NoX = "SQL Analyze - no 'x' field found in 't' table";
    EXPECT_THAT(Troubles("select a,x,e,a,x from t,u,t,[T]"),
                ElementsAre(NoX, "SQL Analyze - no 'e' field found in 't' table", NoX, NoX));
    EXPECT_THAT(Troubles("from t select a from t select e,a from t,u,t select x from t,u"),
                ElementsAre("SQL Analyze - no 'e' field found in 't' table", NoX,
                            "SQL Analyze - no 'e' field found in 't' table"));
}

TEST_F(DbSqlAnalyzerTest, Fields_AStarAlone_NeedsNoCheck) {
    EXPECT_TRUE(Analyze("select * from t"));
    EXPECT_TRUE(Analyze("select*from t"));
    EXPECT_THAT(Fields(), ElementsAre("*"));
    EXPECT_THAT(Troubles("select *,a from t"), ElementsAre("SQL Analyze - no '*' field found in 't' table"));
    EXPECT_THAT(Troubles("select a * from t"), ElementsAre("SQL Analyze - no '*' field found in 't' table"));
}

TEST_F(DbSqlAnalyzerTest, Fields_AnyCaseAndBeyondAscii_AreFound) {
    m_u->CreateField("\u0141uk \u0394", false, DbFieldDescr::Text);
    EXPECT_TRUE(Analyze("SELECT [\u0142UK \u03B4] FROM u WHERE [\u0141UK \u0394] = 'x'"));
    EXPECT_TRUE(Analyze("select 'a' from t") == false) << "a quoted text is no name";
}

TEST_F(DbSqlAnalyzerTest, SelectOrFrom_Missing_IsALine) {
    for (const char* sql : {"", " , ; ", "select a", "from t", "select from t", "select a from", "where",
                            "order by a", "top 3"}) {
        EXPECT_THAT(Troubles(sql), ElementsAre(CheckBoth)) << sql;
    }
}

// ---- Conditions

TEST_F(DbSqlAnalyzerTest, Where_OperatorsAndBrackets_GoToTheClause) {
    EXPECT_TRUE(Analyze("select a from t where (a=1 and b='x')or not e>2"));
    EXPECT_EQ(m_params->clause->GetClauseString(), "( exp AND exp ) OR NOT exp");
    EXPECT_THAT(Conditions(), ElementsAre("a = 1", "b = 'x'", "e > 2"));
    EXPECT_EQ(m_params->filters.size(), 3U);
}

TEST_F(DbSqlAnalyzerTest, Where_EveryOperator_MakesAFilter) {
    EXPECT_TRUE(
        Analyze("select a from t where a<1 and a<=1 and a=1 and a==1 and a>=1 and a>1 and a !=1 "
                "and a<>1"));
    EXPECT_THAT(Conditions(),
                ElementsAre("a < 1", "a <= 1", "a = 1", "a == 1", "a >= 1", "a > 1", "a != 1", "a <> 1"));
}

TEST_F(DbSqlAnalyzerTest, Where_NotEqualWithoutABlankBefore_IsNoCondition) {
    EXPECT_THAT(Troubles("select a from t where a!=1"),
                ElementsAre("SQL Analyze - invalid condintion 'a!= 1'"));
}

TEST_F(DbSqlAnalyzerTest, Where_ALeftOutBlank_IsPartOfTheToken) {
    EXPECT_TRUE(Analyze("select a from t where b='x'and a=1"));
    EXPECT_THAT(Conditions(), ElementsAre("b = 'x'and", "a = 1"));
    EXPECT_EQ(m_params->clause->GetClauseString(), "exp exp");
}

TEST_F(DbSqlAnalyzerTest, Where_DanglingOperator_IsNoTrouble) {
    EXPECT_TRUE(Analyze("select a from t where a > 1 or"));
    EXPECT_EQ(m_params->clause->GetClauseString(), "exp OR");
    EXPECT_TRUE(m_params->clause->IsValid());
}

TEST_F(DbSqlAnalyzerTest, Where_OperatorsBetweenTheParts_DoNotDisturbThem) {
    EXPECT_TRUE(Analyze("select a from t where a and > ( 1"));
    EXPECT_EQ(m_params->clause->GetClauseString(), "AND ( exp");
    EXPECT_THAT(Conditions(), ElementsAre("a > 1"));
}

TEST_F(DbSqlAnalyzerTest, Where_PartsThatAreLeft_AreALine) {
    EXPECT_THAT(Troubles("select a from t where a >"), ElementsAre("SQL Analyze - invalid condintion 'a >'"));
    EXPECT_THAT(Utf8Of(m_params->parts), ElementsAre("a", ">"));
    EXPECT_THAT(Troubles("select a from t where a"), ElementsAre("SQL Analyze - invalid condintion 'a'"));
    EXPECT_THAT(Troubles("select a from t where a = 1 [c d]"),
                ElementsAre("SQL Analyze - invalid condintion '[c d]'"));
}

TEST_F(DbSqlAnalyzerTest, Where_ConditionThatIsNone_IsALineAndStands) {
    EXPECT_THAT(Troubles("select a from t where a > x"),
                ElementsAre("SQL Analyze - invalid condition 'a > x'"));
    EXPECT_THAT(Conditions(), ElementsAre("a > x"));
    EXPECT_EQ(m_params->clause->GetClauseString(), "");
    EXPECT_THAT(m_params->filters, IsEmpty());
    EXPECT_THAT(
        Troubles("select a from t where 1 = 2 or [a] ~ [b]"),
        ElementsAre("SQL Analyze - invalid condition '1 = 2'", "SQL Analyze - invalid condition 'a ~ b'"));
    EXPECT_EQ(m_params->clause->GetClauseString(), "OR");
}

TEST_F(DbSqlAnalyzerTest, Where_RefersToTheFirstTable) {
    EXPECT_TRUE(Analyze("select a from t,u where e = 1"));
    EXPECT_THAT(Troubles("select a from t,u where x = 'y'"),
                ElementsAre("SQL Analyze - invalid condition 'x = 'y''"));
}

TEST_F(DbSqlAnalyzerTest, Where_UnknownFirstTable_IsALineForEachCondition) {
    EXPECT_THAT(Troubles("select a from [N],t where a = 1 and [e] = 2"),
                ElementsAre("SQL Analyze - no table 'n' found", "SQL Analyze - no table 'n' found",
                            "SQL Analyze - no table 'n' found"));
    EXPECT_THAT(Conditions(), ElementsAre("a = 1", "e = 2"));
}

TEST_F(DbSqlAnalyzerTest, Where_BeforeFrom_IsALine) {
    EXPECT_THAT(Troubles("select a where a = 1 from t"), ElementsAre(NoFrom));
    EXPECT_THAT(Conditions(), ElementsAre("a = 1"));
    EXPECT_THAT(Troubles("select a where a = 1"), ElementsAre(NoFrom, CheckBoth));
}

TEST_F(DbSqlAnalyzerTest, Where_BeforeFrom_SearchesNoTableWithoutAName) {
    DbTableDescr* const nameless = m_database.CreateTable("", DbTableInfo::Table)->GetDescr();
    nameless->CreateField("a", false, DbFieldDescr::Long);
    EXPECT_THAT(Troubles("select a where a = 1 from t"), ElementsAre(NoFrom));
    EXPECT_THAT(m_params->filters, IsEmpty());
}

TEST_F(DbSqlAnalyzerTest, Troubles_OfEveryKind_StandInTheOrderFound) {
    EXPECT_THAT(Troubles("select a,no where e=1 from t,n where a>y and e>"),
                ElementsAre(NoFrom, "SQL Analyze - no 'no' field found in 't' table",
                            "SQL Analyze - no table 'n' found", "SQL Analyze - invalid condition 'a > y'",
                            "SQL Analyze - invalid condintion 'e >'"));
}

TEST_F(DbSqlAnalyzerTest, Lines_PercentSignsAndZeros_AreText) {
    EXPECT_THAT(Troubles("select a from [%s%n]"), ElementsAre("SQL Analyze - no table '%s%n' found"));
    const CString literal = Units({'x', 0, 'y'});
    EXPECT_TRUE(Analyze(CString("select a from t where b = ") + literal));
    EXPECT_EQ(m_params->tokens.back(), literal);
    EXPECT_EQ(m_params->conditions.back(), CString("b = ") + literal);
}

// ---- Lifetime of filters

TEST_F(DbSqlAnalyzerTest, Filters_OfAnAnalysis_StayUntilTheyAreCleared) {
    EXPECT_TRUE(Analyze("select a from t where a > 1 and e < 3"));
    EXPECT_EQ(m_t->m_alive, 2);
    DbTableData& rows = *m_database.GetTableData("T");
    rows[0].Evaluate();
    EXPECT_FALSE(m_params->clause->evaluate());
    rows[1].Evaluate();
    EXPECT_TRUE(m_params->clause->evaluate());
    m_t->ClearFilters();
    EXPECT_EQ(m_t->m_alive, 0);
}

TEST_F(DbSqlAnalyzerTest, Filters_OfAFailedAnalysis_Stay) {
    EXPECT_FALSE(
        Analyze("select a from t where a > 1 and"
                " e <"));
    EXPECT_EQ(m_t->m_alive, 1);
    EXPECT_FALSE(m_database.VerifySQL("select no from t where a > 1"));
    EXPECT_EQ(m_t->m_alive, 2);
    CString name;
    EXPECT_FALSE(m_database.Query("select no from t where a > 1", name));
    EXPECT_EQ(m_t->m_alive, 3);
    EXPECT_TRUE(m_database.Query("select a from t where a > 1", name));
    EXPECT_EQ(m_t->m_alive, 3);
    m_t->ClearFilters();
    EXPECT_EQ(m_t->m_alive, 0);
}

TEST_F(DbSqlAnalyzerTest, Filters_OfAQueryThatFailsAfterItsAnalysis_Stay) {
    CString name;
    EXPECT_FALSE(m_database.Query("select a from t where a > 1 order by no", name));
    EXPECT_EQ(m_t->m_alive, 1);
    EXPECT_FALSE(m_database.Query("select a from t where ( a > 1", name));
    EXPECT_EQ(m_t->m_alive, 2);
}

TEST_F(DbSqlAnalyzerTest, Filters_OfARefreshThatFails_Go) {
    DbTableInfo* const table = m_database.GetTableInfo("T");
    m_database.CreateTable("Q", DbTableInfo::Query, "select no from t where a > 1 and e < 3", table);
    m_database.CreateTable("R", DbTableInfo::Query, "select a from t where ( a > 1", table);
    m_database.GetTableInfo("Q")->SetSyncStamp(-1);
    m_database.GetTableInfo("R")->SetSyncStamp(-1);
    const DbFilter* const own = m_t->AddFilter("a", "=", "2");
    for (int i = 0; i < 10; ++i) {
        m_database.GetTableData("Q");
        m_database.GetTableData("R");
    }
    EXPECT_EQ(m_t->m_made, 31);
    EXPECT_EQ(m_t->m_alive, 1);
    (*m_database.GetTableData("T"))[1].Evaluate();
    EXPECT_TRUE(own->value());
}

TEST_F(DbSqlAnalyzerTest, Verify_IsTheResultOfTheAnalysisAndBuildsNothing) {
    const int tables = m_database.GetTablesCount();
    const std::int32_t count = DbDatabase::m_queriesCount;
    EXPECT_TRUE(m_database.VerifySQL("select a from t where a > 1 and e < 3"));
    EXPECT_THAT(
        TakeLog(m_database),
        ElementsAre("SQL Analyze - query 'select a from t where a > 1 and e < 3'", "SQL Analyze - ok"));
    EXPECT_FALSE(m_database.VerifySQL("t")) << "a name alone is no query text";
    EXPECT_FALSE(m_database.VerifySQL("select a from n"));
    EXPECT_TRUE(m_database.VerifySQL("select a from t where ) a > 1 (")) << "counted, not paired";
    EXPECT_EQ(m_database.GetTablesCount(), tables);
    EXPECT_EQ(DbDatabase::m_queriesCount, count);
    EXPECT_EQ(m_t->m_made, 3);
    EXPECT_EQ(m_t->m_alive, 0);
}

TEST_F(DbSqlAnalyzerTest, Filters_OfTheHost_AreLeftAlone) {
    const DbFilter* const own = m_t->AddFilter("a", "=", "2");
    EXPECT_TRUE(Analyze("select a from t where e = 5"));
    const DbFilter* const analysed = m_params->filters.at(0);
    EXPECT_TRUE(m_database.VerifySQL("select a from t where a > 1 and e < 3"));
    CString name;
    EXPECT_TRUE(m_database.Query("select a from t where a > 1 and e < 3", name));
    EXPECT_TRUE(m_database.Query("select a from t where a > 1 and e < 3", name)) << "the answer that exists";
    EXPECT_EQ(m_t->m_made, 8);
    EXPECT_EQ(m_t->m_alive, 2);
    DbTableRow& row = (*m_database.GetTableData("T"))[1];
    row.SetValue("e", Long(5));
    row.Evaluate();
    EXPECT_TRUE(own->value());
    EXPECT_TRUE(analysed->value());
}

TEST_F(DbSqlAnalyzerTest, Filters_OfAQueryWithinAQuery_GoAndThoseOfTheOuterOneStay) {
    CString lower;
    ASSERT_TRUE(m_database.Query("select a from t where a > 0", lower));
    (*m_database.GetTableData("T"))[0].SetValue("a", Long(5));
    m_t->m_made = 0;
    // The lower query is answered again while the outer one already has a filter on the same table.
    CString name;
    ASSERT_TRUE(m_database.Query("select a from t where a > 3 from " + lower, name));
    EXPECT_EQ(m_t->m_made, 2);
    EXPECT_EQ(m_t->m_alive, 0);
    EXPECT_EQ(m_database.GetTableData(lower)->size(), 2U);
    ASSERT_EQ(m_database.GetTableData(name)->size(), 1U);
    EXPECT_EQ(PrintedText((*m_database.GetTableData(name))[0][uint64{0}]), "5");
}

// ---- Long texts

// Repeats the part up to the length.
CString Repeated(const CString& begin, const CString& part, const CString& end, std::size_t length) {
    quillet::WideString text(begin.View());
    while (text.size() < length) {
        text += part.View();
    }
    return CString(quillet::WideView(text)) + end;
}

class DbSqlAnalyzerLongText : public DbSqlAnalyzerTest {
protected:
    // Analyses a text of about that length. With quadratic cost this would not end.
    void ExpectEnd(const CString& begin, const CString& part, const CString& end) {
        ExpectEnd([&](std::size_t length) { return Repeated(begin, part, end, length); });
    }
    template <typename TextOfLength>
    void ExpectEnd(TextOfLength text) {
        const CString sql = text(Length);
        m_database.VerifySQL(sql);
        Analyze(sql);
        m_t->ClearFilters();
        m_u->ClearFilters();
        EXPECT_FALSE(TakeLog(m_database).empty());
    }

    static constexpr std::size_t Length = 1 << 18;
};

TEST_F(DbSqlAnalyzerLongText, OfFields) {
    ExpectEnd("select a", ",a", " from t");
    EXPECT_GT(Fields().size(), Length / 4);
}

TEST_F(DbSqlAnalyzerLongText, OfTables) {
    ExpectEnd("select a from t", ",t", "");
    EXPECT_GT(Tables().size(), Length / 4);
}

TEST_F(DbSqlAnalyzerLongText, OfFieldsAndTables) {
    const auto twoLists = [](const char* field) {
        return [=](std::size_t length) {
            const CString fields = Repeated("select a", ",a", field, length / 2);
            return Repeated(fields + " from t", ",t", "", length);
        };
    };
    ExpectEnd(twoLists(""));
    EXPECT_GT(Fields().size(), Length / 8);
    EXPECT_GT(Tables().size(), Length / 8);
    ExpectEnd(twoLists(",x"));
}

TEST_F(DbSqlAnalyzerLongText, OfDifferentFieldsAndOneTable) {
    constexpr std::size_t BytesOfAName = 8;
    DbFieldDescr field(nullptr, 0);
    for (std::size_t i = 0; i < Length / BytesOfAName; ++i) {
        CString name;
        name.Format("f%06d", static_cast<int>(i));
        field.SetName(name);
        m_u->AppendField(field);
    }
    ExpectEnd([](std::size_t length) {
        quillet::WideString text(OLESTR("select a"));
        for (std::size_t i = 0; text.size() < length / 2; ++i) {
            CString name;
            name.Format(",f%06d", static_cast<int>(i));
            text += name.View();
        }
        return Repeated(CString(quillet::WideView(text)) + " from u", ",u", "", length);
    });
    EXPECT_GT(Fields().size(), Length / (2 * BytesOfAName) - 2);
}

TEST_F(DbSqlAnalyzerLongText, OfConditions) {
    ExpectEnd("select a from u where a=1", " or a=1", "");
    EXPECT_GT(Conditions().size(), Length / 16);
}

TEST_F(DbSqlAnalyzerLongText, OfTokensThatAreNotConsumed) {
    ExpectEnd("a", " a", "");
    EXPECT_THAT(Tokens(), IsEmpty());
}

TEST_F(DbSqlAnalyzerLongText, OfQuotesAndSeparators) {
    ExpectEnd("select ", "''", " from t");
    ExpectEnd("", " ,;", "");
}

}  // namespace
