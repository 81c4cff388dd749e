// The program's own hints about queries that are refused, or that mean something else than they seem to.
#include <gmock/gmock.h>

#include "support/ToolTest.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class QueryHints : public quillet::test::ToolTest {
protected:
    void SetUp() override { m_file = CopyExample("european-steel.xml"); }

    std::string WhyNot(const std::string& query) const { return Failure({"query", m_file, query}); }
    std::string WhyNotFound(const std::string& where) const {
        return Failure({"find", m_file, "IPE", where});
    }

    // The warning printed with the answer of a query, without its prefix.
    std::string Warning(const std::string& query) const { return WarningOf(Run({"query", m_file, query})); }

    std::string WarningOf(const quillet::test::RunResult& result) const {
        EXPECT_EQ(result.m_status, 0);
        EXPECT_NE(result.m_output, "");
        const std::string complaint = Complaint(result.m_errors);
        const std::string beginning = "warning: " + m_file + ": ";
        EXPECT_THAT(complaint, StartsWith(beginning));
        return complaint.substr(std::min(complaint.size(), beginning.size()));
    }

    std::string m_file;
};

TEST_F(QueryHints, FirstWordMisspelt_NamesSelect) {
    EXPECT_THAT(WhyNot("selct name from IPE"), EndsWith("; did you mean 'select' instead of 'selct'?"));
    EXPECT_THAT(WhyNot("SELETC name from [Selected ones]"),
                EndsWith("; did you mean 'select' instead of 'SELETC'?"));
    EXPECT_THAT(WhyNot("get name from IPE"), EndsWith("; a query begins with select, not with 'get'"));
    EXPECT_THAT(WhyNot("delete from IPE"),
                EndsWith("; a query can't change a catalog; 'quillet --help' lists the commands that can"));
}

TEST_F(QueryHints, MisspeltNames_AreSuggested) {
    EXPECT_THAT(WhyNot("select name from IPP"), EndsWith("table 'IPP': did you mean 'IPE'?"));
    EXPECT_THAT(WhyNot("IPP"), HasSubstr("did you mean 'IPE'"));
    EXPECT_THAT(WhyNot("select nmae, h from IPE"), EndsWith("; field 'nmae': did you mean 'name'?"));
    EXPECT_THAT(WhyNot("select name from IPE where Iyy > 5"), HasSubstr("field 'Iyy': did you mean 'Iy'"));
    EXPECT_THAT(WhyNot("select name from IPE where 5 < Welly"),
                EndsWith("field 'Welly': did you mean 'Wely'?"));
    EXPECT_THAT(WhyNot("select name from IPE order by nme"), EndsWith("field 'nme': did you mean 'name'?"));
    EXPECT_THAT(WhyNotFound("Welly > 5 and Wely < 9"), EndsWith("field 'Welly': did you mean 'Wely'?"));
}

TEST_F(QueryHints, NamesThatNeedBrackets_AreSuggestedInThem) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_THAT(Failure({"query", file, "select fub from [Bolt clases]"}),
                EndsWith("table 'Bolt clases': did you mean '[Bolt classes]'?"));
    EXPECT_THAT(Failure({"query", file, "select fub from 'Bolt classes'"}),
                EndsWith("put names in square brackets, not in quotation marks"));
}

TEST_F(QueryHints, WordsOfOtherDialects_SayWhatToWriteInstead) {
    EXPECT_THAT(
        WhyNot("select name from IPE limit 5"),
        EndsWith(
            "; 'limit' is not supported: use the option --limit N to show the first N rows of the answer"));
    EXPECT_THAT(WhyNot("select name from IPE where h > 300 LIMIT 5"),
                HasSubstr("; 'LIMIT' is not supported"));
    EXPECT_THAT(WhyNot("select name from IPE order by h limit 5"), HasSubstr("--limit N"));
    EXPECT_THAT(
        WhyNot("select name from IPE where h > 300 group by b"),
        EndsWith("; 'group' is not supported: rows can't be grouped; 'select distinct' drops duplicates"));
    EXPECT_THAT(WhyNot("select name from IPE group by b"), HasSubstr("'group' is not supported"));
    EXPECT_THAT(WhyNot("select name from IPE where name like 'IPE 1%'"),
                EndsWith("; 'like' is not supported: there are no patterns; compare whole texts, as in "
                         "(name >= 'a' and name < 'b')"));
    EXPECT_THAT(WhyNot("select name from IPE where h between 100 and 200"),
                EndsWith("; 'between' is not supported: write (h >= 100 and h <= 200)"));
    EXPECT_THAT(WhyNot("select name from IPE where h in (100, 120)"),
                EndsWith("; 'in' is not supported: write (h = 100 or h = 120)"));
    EXPECT_THAT(WhyNot("select name from IPE where name is not null"),
                EndsWith("; 'is' is not supported: write = or !=; there is no word for null, and name = '' "
                         "finds empty texts"));
    EXPECT_THAT(WhyNot("select count(*) from IPE"), HasSubstr("--explain shows the number of rows"));
    EXPECT_THAT(WhyNot("select name from IPE join HEA"), HasSubstr("'join' is not supported"));
    EXPECT_THAT(WhyNotFound("h between 100 and 200"), HasSubstr("write (h >= 100 and h <= 200)"));
    EXPECT_THAT(WhyNotFound("h > 100 limit 5"), HasSubstr("every one with --all"));
}

// The query that a hint suggests works.
TEST_F(QueryHints, WhatToWriteInstead_IsUnderstood) {
    EXPECT_EQ(Output({"query", m_file, "select name from IPE where (h >= 100 and h <= 120)"}),
              Output({"query", m_file, "select name from IPE where (h = 100 or h = 120)"}));
    EXPECT_EQ(Output({"query", m_file, "select name from IPE where (name >= 'IPE 5' and name < 'IPE 6')"}),
              "name\n-------\nIPE 500\nIPE 550\n");
}

TEST_F(QueryHints, NegatedOperatorOfOtherDialects_StaysNegated) {
    EXPECT_THAT(WhyNot("select name from IPE where h not in (80, 100)"),
                EndsWith("; 'not in' is not supported: write (not (h = 80 or h = 100))"));
    EXPECT_THAT(WhyNot("select name from IPE where h NOT BETWEEN 1 AND 2"),
                EndsWith("; 'not BETWEEN' is not supported: write (not (h >= 1 and h <= 2))"));
    EXPECT_THAT(WhyNot("select name from IPE where name not like 'a%'"),
                EndsWith("; 'not like' is not supported: there are no patterns; compare whole texts, as in "
                         "(not (name >= 'a' and name < 'b'))"));
    EXPECT_THAT(WhyNot("select name from IPE where not h in (80, 100) and b > 1"),
                EndsWith("; 'not h in' is not supported: write (not (h = 80 or h = 100))"));
    EXPECT_THAT(WhyNotFound("b > 1 and h not in (80)"),
                EndsWith("; 'not in' is not supported: write (not (h = 80))"));
}

// A not in front of the brackets alone would also apply to the conditions that follow.
TEST_F(QueryHints, WhatToWriteInsteadOfANegatedOperator_IsUnderstoodAmongOtherConditions) {
    const std::string written = "select name from IPE where (not (h = 80 or h = 100)) and h <= 140";
    EXPECT_EQ(Output({"query", m_file, written}), "name\n-------\nIPE 120\nIPE 140\n");
    EXPECT_EQ(Output({"query", m_file, "select name from IPE where h <= 140 and (not (h = 80 or h = 100))"}),
              Output({"query", m_file, written}));
}

TEST_F(QueryHints, InWithoutValues_IsShownWithExamples) {
    for (const std::string list : {"", "()", "(", "(select h from HEA)"}) {
        EXPECT_THAT(WhyNot("select name from IPE where h in " + list),
                    EndsWith("; 'in' is not supported: write (h = 1 or h = 2)"));
    }
    EXPECT_THAT(WhyNot("select name from IPE where h in 80 and b > 5"),
                EndsWith("; 'in' is not supported: write (h = 80)"));
    EXPECT_THAT(WhyNot("select name from IPE where h in (1, 2, 3, 4) and b > 5"),
                EndsWith("; 'in' is not supported: write (h = 1 or h = 2 or h = 3 or ...)"));
    EXPECT_THAT(WhyNot("select name from IPE where (h) in (80)"), EndsWith("write (h = 80)"));
}

TEST_F(QueryHints, WordsInQuotesOrBrackets_AreNoHintsBusiness) {
    const std::string csv = Write("in.csv", "limit,like\n1,is\n");
    Output({"import", m_file, "group", csv});
    EXPECT_EQ(Output({"query", m_file, "select limit from group where like = 'is' and limit = 1", "--format",
                      "csv"}),
              "limit\r\n1\r\n");
    EXPECT_THAT(WhyNot("select limit from group where like = 'is' and limits = 1"),
                EndsWith("; field 'limits': did you mean 'limit'?"));
    EXPECT_THAT(WhyNot("select name from IPE where nam = 'limit like between'"),
                Not(HasSubstr("is not supported")));
    EXPECT_THAT(WhyNot("select name from IPE where [between] = 5"), Not(HasSubstr("is not supported")));
}

TEST_F(QueryHints, QuoteThatIsNeverClosed_IsNamed) {
    EXPECT_THAT(WhyNot("select name from [IPE where h > 5"), EndsWith("; the bracket [ is never closed"));
    EXPECT_EQ(Warning("select name from IPE where name = 'IPE 80"), "the quotation mark ' is never closed");
    EXPECT_EQ(WarningOf(Run({"find", m_file, "IPE", "name = \"IPE 80"})),
              "the quotation mark \" is never closed");
}

TEST_F(QueryHints, ConditionThatEndsWithAnOperator_IsAnsweredWithAWarning) {
    EXPECT_EQ(Warning("select name from IPE where h > 500 or"),
              "nothing follows 'or' at the end of the condition");
    EXPECT_EQ(Warning("select name from IPE where h > 500 AND order by h"),
              "nothing follows 'AND' at the end of the condition");
    EXPECT_EQ(WhyNotFound("h > 500 and"),
              m_file + ": no row of 'IPE' fits; nothing follows 'and' at the end of the condition");
}

TEST_F(QueryHints, ExplainedQuery_IsWarnedOfAsAnAnsweredOne) {
    const std::string query = "select IY from IPE where h > 550 and";
    const quillet::test::RunResult answered = Run({"query", m_file, query});
    const quillet::test::RunResult explained = Run({"query", m_file, query, "--explain"});
    EXPECT_EQ(explained.m_status, 0);
    EXPECT_THAT(explained.m_output, HasSubstr("source"));
    EXPECT_EQ(explained.m_errors, answered.m_errors);
    EXPECT_THAT(explained.m_errors, HasSubstr("nothing follows 'and' at the end of the condition"));
    EXPECT_THAT(explained.m_errors, HasSubstr("'IY' matches the fields 'Iy' and 'iy'; 'Iy' is used"));
}

TEST_F(QueryHints, NameThatFitsTwoFieldsButForCase_IsWarnedOf) {
    const std::string warning = "'iy' matches the fields 'Iy' and 'iy'; 'Iy' is used";
    EXPECT_EQ(Warning("select name, iy from IPE where h = 80"), warning);
    EXPECT_EQ(Warning("select name from IPE where iy > 80"), warning);
    EXPECT_EQ(Warning("select name from IPE order by [iy]"), warning);
    EXPECT_EQ(WarningOf(Run({"find", m_file, "IPE", "iy > 80"})), warning);
    EXPECT_EQ(Run({"query", m_file, "select Iy from IPE where name != 'iy'"}).m_errors, "")
        << "the one that is used, and a text";
}

}  // namespace
