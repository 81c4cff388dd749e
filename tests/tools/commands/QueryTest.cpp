#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "support/ToolTest.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class Query : public quillet::test::ToolTest {
protected:
    // The first values of the rows that answer a query.
    std::vector<std::string> Answers(const std::string& file, const std::string& query,
                                     const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments = {"query", file, query, "--format", "csv"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::vector<std::string> found;
        std::istringstream lines(Output(arguments));
        std::string line;
        for (std::getline(lines, line); std::getline(lines, line);) {
            found.push_back(line.substr(0, line.find_first_of(",\r")));
        }
        return found;
    }

    // The error message for a query on the materials, without the name of the file.
    std::string Complaints(const std::string& query) const {
        const std::string file = CopyExample("materials.xml");
        const std::string message = Failure({"query", file, query});
        EXPECT_THAT(message, StartsWith(file + ": "));
        return message.substr(file.size() + 2);
    }

    std::string WhyAnalyzerRefuses(const std::string& query) const {
        const std::string analyzer = "SQL Analyze - ";
        const std::string message = Complaints(query);
        EXPECT_THAT(message, StartsWith(analyzer));
        return message.substr(analyzer.size());
    }

    // The values of one part of an explanation.
    std::vector<std::string> Explained(const std::string& query, const std::string& part) const {
        std::vector<std::string> values;
        // Some explanations come with a warning.
        const quillet::test::RunResult result =
            Run({"query", CopyExample("materials.xml"), query, "--explain", "--format", "json"});
        EXPECT_EQ(result.m_status, 0) << result.m_errors;
        for (const json& fact : json::parse(result.m_output)) {
            if (fact["part"] == part) {
                values.push_back(fact["value"].is_string() ? fact["value"].get<std::string>()
                                                           : fact["value"].dump());
            }
        }
        return values;
    }
};

TEST_F(Query, Query_FieldsAndConditions_ShowsThoseRows) {
    EXPECT_EQ(Output({"query", CopyExample("materials.xml"),
                      "select name, P, d from Bolts where d >= 30 and preferred = true"}),
              "name    P   d\n"
              "----  ---  --\n"
              "M30   3.5  30\n"
              "M36     4  36\n");
}

TEST_F(Query, Query_AllFieldsOfSomeRows_ShowsThem) {
    EXPECT_EQ(Output({"query", CopyExample("materials.xml"), "select * from Bolts where d = 24"}),
              "name   d  P   As  d0   s  preferred\n"
              "----  --  -  ---  --  --  ---------\n"
              "M24   24  3  353  26  36  true\n");
}

TEST_F(Query, Query_WholeTableOrItsName_IsThatTable) {
    const std::string file = CopyExample("materials.xml");
    const std::string table = Output({"show", file, "Bolt classes"});
    EXPECT_EQ(Output({"query", file, "select * from [bolt classes]"}), table);
    EXPECT_EQ(Output({"query", file, "select name, fyb, fub, alpha_v from [Bolt classes]"}), table);
    EXPECT_EQ(Output({"query", file, "Bolt classes"}), table);
    EXPECT_EQ(Output({"query", file, "[BOLT CLASSES]"}), table);
    EXPECT_EQ(Output({"query", file, "Header"}), Output({"show", file, "Header"}));
}

TEST_F(Query, Query_TopDistinctAndOrder_TakeEffectInThisOrder) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_THAT(Answers(file, "select top 3 name from Bolts order by d desc"),
                ElementsAre("M12", "M10", "M8"));
    EXPECT_THAT(Answers(file, "select distinct alpha_v from [Bolt classes] order by alpha_v"),
                ElementsAre("0.5", "0.6"));
    EXPECT_THAT(Answers(file, "select distinct top 3 alpha_v from [Bolt classes]"), SizeIs(2));
}

TEST_F(Query, Query_LimitAndOffset_CutTheAnswer) {
    const std::string file = CopyExample("materials.xml");
    const std::string query = "select name from Bolts order by d desc";
    EXPECT_THAT(Answers(file, query, {"--limit", "2"}), ElementsAre("M36", "M33"));
    EXPECT_THAT(Answers(file, query, {"--offset", "11"}), ElementsAre("M10", "M8"));
    EXPECT_THAT(Answers(file, query, {"--offset", "1", "--limit", "1"}), ElementsAre("M33"));
    EXPECT_THAT(Answers(file, query, {"--limit", "0"}), IsEmpty());
    EXPECT_THAT(Answers(file, "Bolts", {"--offset", "12"}), ElementsAre("M36"));
}

TEST_F(Query, Query_NoRowFits_ShowsTheNamesOnly) {
    const std::string file = CopyExample("materials.xml");
    const std::string query = "select name, d from Bolts where d > 100";
    EXPECT_EQ(Output({"query", file, query}), "name  d\n----  -\n");
    EXPECT_EQ(Output({"query", file, query, "--format", "csv"}), "name,d\r\n");
    EXPECT_EQ(json::parse(Output({"query", file, query, "--format", "json"})), json::array());
}

TEST_F(Query, Query_AsJson_KeepsTypes) {
    const json rows =
        json::parse(Output({"query", CopyExample("materials.xml"),
                            "select name, preferred, P from Bolts where name = 'm8'", "--format", "json"}));
    EXPECT_EQ(rows, json::parse(R"([{"name": "M8", "preferred": true, "P": 1.25}])"));
}

TEST_F(Query, Query_QuotesAndBrackets_KeepBlanksTogether) {
    const std::string file = CopyExample("materials.xml");
    for (const char* text : {"'s 235'", "\"s 235\"", "[s 235]"}) {
        EXPECT_THAT(Answers(file, std::string("select name from Steel where name = ") + text),
                    ElementsAre("S 235"))
            << text;
    }
    const std::string types = CopyExample("field-types.xml");
    EXPECT_THAT(
        Answers(types, "select name from [Every type] where [with two blanks] = ' leading' and text != ''"),
        ElementsAre("  blanks around  "));
    EXPECT_THAT(Answers(types, R"(select name from [every type] where text = "." or text = '-')"),
                ElementsAre("negative", "least"));
}

TEST_F(Query, Query_TableNamesThatLookLikeTheLanguage_StandInBrackets) {
    const std::string file = CopyExample("materials.xml");
    Output({"rename", file, "Bolts", "Bolts [mm]"});
    Output({"rename", file, "Steel", "Order"});
    Output({"rename", file, "Timber", "Selected, sawn; dry"});
    EXPECT_THAT(Answers(file, "select name from [Bolts [mm]] where d = 8"), ElementsAre("M8"));
    EXPECT_THAT(Answers(file, "[bolts [mm]]"), SizeIs(13));
    EXPECT_THAT(Answers(file, "select name from [order] where fy_80 = 215"), ElementsAre("S 235"));
    EXPECT_THAT(Answers(file, "select * from [selected, sawn; dry]"), SizeIs(10));
}

TEST_F(Query, Query_NamesAndTextsBeyondAscii_AreFound) {
    const std::string file = CopyExample("field-types.xml");
    EXPECT_THAT(Answers(file, "select name from [every type] where 名前 = '鋼'"), ElementsAre("ordinary"));
    EXPECT_THAT(Answers(file, "select LÄNGE, name from [every type] where ШИРИНА = 80.25"),
                ElementsAre("1200"));
    EXPECT_THAT(Answers(file, "select name from [every type] where name = 'STAHLTRÄGER GRÖßE ½'"),
                ElementsAre("Stahlträger Größe ½"));
}

TEST_F(Query, Query_OverSeveralLines_IsReadAsOne) {
    EXPECT_THAT(
        Answers(CopyExample("materials.xml"), "select name\r\nfrom Bolts\nwhere d > 33\r\norder by d"),
        ElementsAre("M36"));
}

TEST_F(Query, Query_NumberWithADecimalComma_IsUnderstoodInQuotes) {
    EXPECT_THAT(Answers(CopyExample("materials.xml"), "select name from Bolts where P = '1,75'"),
                ElementsAre("M12"));
}

TEST_F(Query, Query_InALocaleWithCommas_UnderstandsPointsAndCommas) {
    if (!CanRunWithCommas()) {
        GTEST_SKIP() << "the locale is the user's here, and has no commas";
    }
    const std::string file = CopyExample("materials.xml");
    for (const char* number : {"1.75", "'1,75'"}) {
        EXPECT_EQ(RunWithCommas({"query", file, std::string("select name, P from Bolts where P = ") + number})
                      .m_output,
                  "name     P\n----  ----\nM12   1,75\n")
            << number;
    }
}

TEST_F(Query, Query_UnknownNames_FailsByName) {
    EXPECT_EQ(WhyAnalyzerRefuses("select name from Stel"),
              "no table 'stel' found; table 'Stel': did you mean 'Steel'?");
    EXPECT_EQ(WhyAnalyzerRefuses("Stel"), "table 'stel' not found; table 'Stel': did you mean 'Steel'?");
    EXPECT_EQ(
        WhyAnalyzerRefuses("Größen"),
        "table 'größen' not found; table 'Größen': there are Header, Properties, Steel, Concrete, Timber, "
        "Bolts, Bolt classes");
    const std::string fields =
        "; field 'weight': there are name, standard, fy_40, fu_40, fy_80, fu_80, E, G, nu, alpha";
    EXPECT_EQ(WhyAnalyzerRefuses("select name, weight from Steel"),
              "no 'weight' field found in 'steel' table" + fields);
    EXPECT_EQ(WhyAnalyzerRefuses("select name from Steel order by weight"),
              "no 'weight' field found in 'steel' table" + fields);
    EXPECT_EQ(WhyAnalyzerRefuses("select name from Steel where weight > 1"),
              "invalid condition 'weight > 1'" + fields);
    EXPECT_EQ(WhyAnalyzerRefuses("select name from 'Steel'"),
              "no table ''Steel'' found; put names in square brackets, not in quotation marks");
}

TEST_F(Query, Query_BadTexts_FailWithWhatIsWrong) {
    EXPECT_EQ(WhyAnalyzerRefuses("select"), "check 'SELECT' and/or 'FROM' statement");
    EXPECT_EQ(WhyAnalyzerRefuses("please select name from Steel"),
              "check 'SELECT' and/or 'FROM' statement; a query begins with select, not with 'please'");
    EXPECT_EQ(WhyAnalyzerRefuses("select name where d > 1"),
              "no tables defined, check 'FROM' statement; check 'SELECT' and/or 'FROM' statement");
    EXPECT_EQ(WhyAnalyzerRefuses("select name from Bolts where d >"), "invalid condintion 'd >'");
    EXPECT_EQ(WhyAnalyzerRefuses("select name from Bolts where d!=1"), "invalid condintion 'd!= 1'");
    EXPECT_EQ(WhyAnalyzerRefuses("select name from Bolts where d > 'x'"), "invalid condition 'd > 'x''");
    EXPECT_EQ(WhyAnalyzerRefuses("select nam from Bolts where d between 8 and 12"),
              "no 'nam' field found in 'bolts' table; invalid condition 'd between 8'; "
              "invalid condintion '12'; field 'nam': did you mean 'name'?; 'between' is not supported: "
              "write (d >= 8 and d <= 12)");
    EXPECT_EQ(Complaints("select name from Bolts where (d > 1"),
              "the brackets of the conditions don't match");
}

TEST_F(Query, Query_TextOfControlCharacters_IsShownSpelledOut) {
    EXPECT_EQ(WhyAnalyzerRefuses("a\x1B[2J"), "table 'a\\u{1b}[2j' not found; the bracket [ is never closed");
}

TEST_F(Query, Query_WithoutText_IsBadUsage) {
    EXPECT_EQ(UsageError({"query", "x.xml"}), "QUERY is required; try 'quillet query --help'");
    EXPECT_THAT(UsageError({"query", "x.xml", ""}), HasSubstr("must not be empty"));
    EXPECT_EQ(UsageError({"query", "x.xml", "select", "name"}),
              "too many arguments: 'name'; try 'quillet query --help'");
}

TEST_F(Query, Query_AnyQuery_LeavesTheFileAsItIs) {
    const std::string file = CopyExample("materials.xml");
    const std::string before = Read("materials.xml");
    for (const char* query :
         {"select name from Steel where fy_40 > 300", "select * from Steel where fy_40 > 300",
          "select * from Steel", "Steel", "select x from Steel"}) {
        Run({"query", file, query});
        Run({"query", file, query, "--explain"});
        Run({"query", file, query, "--sequential"});
        EXPECT_EQ(Read("materials.xml"), before) << query;
    }
}

TEST_F(Query, Query_NameOfATableWithSelectInIt_GivesThatTable) {
    const std::string file = CopyExample("materials.xml");
    const std::size_t all = Answers(file, "Timber").size();
    Output({"rename", file, "Timber", "Selection"});
    EXPECT_THAT(Answers(file, "selection"), SizeIs(all));
    EXPECT_THAT(Answers(file, "[Selection]", {"--sequential"}), SizeIs(all));
    EXPECT_THAT(Output({"query", file, "Selection", "--explain"}), HasSubstr("name of a table"));
    EXPECT_THAT(Answers(file, "select name from Selection where fm_k >= 35"), ElementsAre("C35", "C40"));
    Output({"rename", file, "Selection", "Select * from Bolts"});
    EXPECT_THAT(Answers(file, "select * from bolts"), SizeIs(all)) << "the table of that name";
}

TEST_F(Query, Query_SequentialAccess_GivesTheSame) {
    const std::string file = CopyExample("materials.xml");
    const std::string query = "select name, d from Bolts where d > 20 order by name";
    EXPECT_EQ(Output({"query", file, query, "--sequential"}), Output({"query", file, query}));
}

TEST_F(Query, Query_CatalogWithATableOfAnAnswersName_IsAnswered) {
    const std::string file = CopyExample("materials.xml");
    Output({"rename", file, "Timber", "Query_0"});
    EXPECT_THAT(Answers(file, "select name from Query_0 where fm_k >= 35"), ElementsAre("C35", "C40"));
    EXPECT_THAT(Answers(file, "Query_0"), SizeIs(10));
}

TEST_F(Query, Query_DamagedTable_FailsAndOthersAreAsked) {
    const std::string file =
        WriteChanged("damaged.xml", "<table name=\"Steel\">\n<row", "<table name=\"Steel\">x<row");
    for (const char* query :
         {"select name from Steel where fy_40 > 300", "select * from Steel where fy_40 > 300", "Steel"}) {
        EXPECT_EQ(Failure({"query", file, query}), file + ": Table 'Steel' has malformed rows") << query;
        EXPECT_EQ(Failure({"query", file, query, "--sequential"}),
                  file + ": Table 'Steel' has malformed rows")
            << query;
    }
    EXPECT_EQ(Run({"query", file, "select name from Timber where fm_k > 30"}).m_status, 0);
}

TEST_F(Query, Query_FaultsOfTheCatalog_AreWarnedOfBesideTheAnswer) {
    const std::string file = WriteChanged("faulty.xml", R"(d="8")", R"(d="8" extra="1")");
    const quillet::test::RunResult result = Run({"query", file, "select name from Bolts where d = 36"});
    EXPECT_EQ(result.m_status, 0);
    EXPECT_EQ(result.m_output, "name\n----\nM36\n");
    EXPECT_THAT(Complaint(result.m_errors), StartsWith("warning: " + file + ": "));
}

TEST_F(Query, Query_BrokenFile_Fails) {
    const std::string file = Write("broken.xml", "<database>\n<header>\n");
    EXPECT_THAT(Failure({"query", file, "select name from Steel"}), StartsWith(file + ":"));
    const std::string missing = Path("none.xml");
    EXPECT_EQ(Failure({"query", missing, "Steel"}), missing + ": " + WhyUnreadable(missing));
}

TEST_F(Query, Log_OfAQuery_TellsHowItWent) {
    const std::string file = CopyExample("materials.xml");
    const quillet::test::RunResult answered =
        Run({"query", file, "select NAME from Bolts where d > 33", "--log"});
    EXPECT_EQ(answered.m_status, 0);
    EXPECT_EQ(answered.m_output, "name\n----\nM36\n");
    EXPECT_THAT(answered.m_errors,
                HasSubstr("\nSQL Analyze - query 'select name from bolts where d > 33'\nSQL Analyze - ok\n"));
    EXPECT_THAT(answered.m_errors, HasSubstr("\nQuery 'Query_0' processed in "));
    EXPECT_THAT(answered.m_errors, Not(HasSubstr("quillet: ")));

    const quillet::test::RunResult failed = Run({"query", file, "select x from Bolts", "--log"});
    EXPECT_EQ(failed.m_status, 1);
    EXPECT_THAT(failed.m_errors,
                testing::EndsWith("\nSQL Analyze - no 'x' field found in 'bolts' table\n"
                                  "SQL Analyze - failed\n"
                                  "quillet: " +
                                  file +
                                  ": SQL Analyze - no 'x' field found in 'bolts' table; field 'x': there are "
                                  "name, d, P, As, d0, s, preferred\n"));
}

TEST_F(Query, Log_OfAnExplanation_HasEachLineOnce) {
    const std::string errors = Run({"query", CopyExample("materials.xml"),
                                    "select name from Bolts where d > 33", "--explain", "--log"})
                                   .m_errors;
    const std::size_t first = errors.find("SQL Analyze - ok");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(errors.find("SQL Analyze - ok", first + 1), std::string::npos);
}

TEST_F(Query, Explain_AsText_ShowsHowTheQueryIsRead) {
    EXPECT_EQ(Output({"query", CopyExample("materials.xml"),
                      "SELECT name FROM Bolts WHERE NOT d<30 AND preferred=true OR name='m8'", "--explain"}),
              "part       value\n"
              "---------  ---------------------------------------------------------------------------\n"
              "read as    query\n"
              "tokens     select name from bolts where not d < 30 and preferred = true or name = 'm8'\n"
              "condition  d < 30\n"
              "condition  preferred = true\n"
              "condition  name = 'm8'\n"
              "clause     NOT exp AND exp OR exp\n"
              "postfix    exp exp exp OR AND NOT\n"
              "grouping   NOT (d < 30 AND (preferred = true OR name = 'm8'))\n"
              "source     Bolts\n"
              "answer     copied rows\n"
              "rows       7\n");
}

TEST_F(Query, Explain_AsCsvAndJson_HasARecordForEachToken) {
    const std::string file = CopyExample("materials.xml");
    const std::string query = "select name from Timber where fm_k>'30'";
    EXPECT_EQ(Output({"query", file, query, "--explain", "--format", "csv"}),
              "part,value\r\nread as,query\r\ntoken,select\r\ntoken,name\r\ntoken,from\r\ntoken,timber\r\n"
              "token,where\r\ntoken,fm_k\r\ntoken,>\r\ntoken,'30'\r\ncondition,fm_k > '30'\r\nclause,exp\r\n"
              "postfix,exp\r\ngrouping,fm_k > '30'\r\nsource,Timber\r\nanswer,copied rows\r\nrows,2\r\n");
    const json facts = json::parse(Output({"query", file, query, "--explain", "--format", "json"}));
    EXPECT_EQ(facts.at(1), json({{"part", "token"}, {"value", "select"}}));
    EXPECT_EQ(facts.back(), json({{"part", "rows"}, {"value", 2}}));
    EXPECT_EQ(facts.size(), 16U);
}

TEST_F(Query, Explain_Answer_SaysWhatItIs) {
    EXPECT_THAT(Explained("select * from Bolts", "answer"), ElementsAre("the table itself"));
    EXPECT_THAT(Explained("Bolts", "answer"), ElementsAre("the table itself"));
    EXPECT_THAT(Explained("select * from Bolts where d > 1000", "answer"), ElementsAre("rows of the table"));
    EXPECT_THAT(Explained("select name from Bolts", "answer"), ElementsAre("copied rows"));
    EXPECT_THAT(Explained("select * from bolts where d > 20", "source"), ElementsAre("Bolts"));
    EXPECT_THAT(Explained("BOLTS", "source"), ElementsAre("Bolts"));
    EXPECT_THAT(Explained("BOLTS", "read as"), ElementsAre("name of a table"));
    EXPECT_THAT(Explained("BOLTS", "rows"), ElementsAre("13"));
    EXPECT_THAT(Explained("BOLTS", "token"), IsEmpty());
    EXPECT_THAT(Explained("select name from Bolts", "clause"), IsEmpty());
}

TEST_F(Query, Explain_Grouping_PutsOperationsInBrackets) {
    const auto grouping = [&](const std::string& conditions) {
        const std::vector<std::string> lines =
            Explained("select name from Bolts where " + conditions, "grouping");
        return lines.empty() ? std::string() : lines.front();
    };
    EXPECT_EQ(grouping("d > 1"), "d > 1");
    EXPECT_EQ(grouping("(d > 1)"), "d > 1");
    EXPECT_EQ(grouping("not d > 1"), "NOT d > 1");
    EXPECT_EQ(grouping("d > 1 and P > 2 or s > 3"), "d > 1 AND (p > 2 OR s > 3)");
    EXPECT_EQ(grouping("(d > 1 and P > 2) or s > 3"), "(d > 1 AND p > 2) OR s > 3");
    EXPECT_EQ(grouping("(not d > 1) and P > 2"), "(NOT d > 1) AND p > 2");
    EXPECT_EQ(grouping("d > 1 P > 2"), "p > 2");
    EXPECT_EQ(grouping("d > 1 and"), "never true: an operator or a bracket stands alone");
    EXPECT_EQ(grouping("()"), "never true: an operator or a bracket stands alone");
    EXPECT_EQ(grouping("not"), "never true: an operator or a bracket stands alone");
    EXPECT_EQ(grouping(") d > 1 ("), "never true: an operator or a bracket stands alone");
    EXPECT_EQ(grouping("(d > 1 and (not P > 2 or s > 3)) or not d = 5"),
              "(d > 1 AND (NOT (p > 2 OR s > 3))) OR (NOT d = 5)");
}

TEST_F(Query, Explain_Grouping_OfThousandsOfConditions_NestsThemAll) {
    constexpr std::size_t Count = 3000;
    std::string conditions = "d>1";
    std::string grouping = "d > 1";
    for (std::size_t i = 1; i < Count; ++i) {
        conditions += " or d>1";
        grouping += i + 1 < Count ? " OR (d > 1" : " OR d > 1";
    }
    grouping += std::string(Count - 2, ')');
    EXPECT_THAT(Explained("select name from Bolts where " + conditions, "grouping"), ElementsAre(grouping));
}

TEST_F(Query, Explain_WholeTable_HasNoGrouping) {
    EXPECT_THAT(Explained("select * from Bolts where (", "answer"), ElementsAre("the table itself"));
    EXPECT_THAT(Explained("select * from Bolts where (", "grouping"), IsEmpty());
    EXPECT_THAT(Explained("select * from Bolts where (", "postfix"), ElementsAre("("));
}

TEST_F(Query, Explain_FailingQuery_ShowsWhatWasReadAndFails) {
    const std::string file = CopyExample("materials.xml");
    const quillet::test::RunResult result =
        Run({"query", file, "select name from Bolts where d>8 and weight=1", "--explain"});
    EXPECT_EQ(result.m_status, 1);
    EXPECT_EQ(result.m_output,
              "part       value\n"
              "---------  -------------------------------------------------\n"
              "read as    query\n"
              "tokens     select name from bolts where d > 8 and weight = 1\n"
              "condition  d > 8\n"
              "condition  weight = 1\n"
              "clause     exp AND\n"
              "postfix    exp AND\n"
              "source     Bolts\n");
    EXPECT_EQ(
        Complaint(result.m_errors),
        file +
            ": SQL Analyze - invalid condition 'weight = 1'; field 'weight': there are name, d, P, As, d0, "
            "s, preferred");

    const quillet::test::RunResult unknown = Run({"query", file, "Query_0", "--explain"});
    EXPECT_EQ(unknown.m_status, 1);
    EXPECT_EQ(unknown.m_output, "part     value\n-------  ---------------\nread as  name of a table\n");
}

TEST_F(Query, Explain_WithLimitOrOffset_IsBadUsage) {
    for (const char* option : {"--limit", "--offset"}) {
        EXPECT_EQ(UsageError({"query", "x.xml", "Bolts", "--explain", option, "1"}),
                  "--explain excludes --limit and --offset; try 'quillet query --help'");
    }
}

}  // namespace
