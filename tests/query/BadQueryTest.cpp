// Malformed query texts: answered, or refused with the lines of the analysis, in time linear in their length.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "fuzz/QueryFaults.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

using Strings = std::vector<std::string>;

// Repeats the part.
std::string Times(std::size_t count, const std::string& part) {
    std::string text;
    text.reserve(count * part.size());
    for (std::size_t i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

// A table T with the fields n (long), t (text), r (double) and "from" (long), and the rows
//   1 b 0.5 0 | 2 a 1.5 0 | 3 B 2.5 0
class BadQuery : public testing::Test {
protected:
    BadQuery() {
        DbTableInfo& info = *m_database.CreateTable("T", DbTableInfo::Table);
        info.GetDescr()->CreateField("n", false, DbFieldDescr::Long);
        info.GetDescr()->CreateField("t", false, DbFieldDescr::Text);
        info.GetDescr()->CreateField("r", false, DbFieldDescr::Double);
        info.GetDescr()->CreateField("from", false, DbFieldDescr::Long);
        const char* const texts[] = {"b", "a", "B"};
        DbTableData& data = *info.GetData();
        data.AddRows(std::size(texts));
        for (uint64 i = 0; i < data.size(); ++i) {
            data[i].SetValue("n", Long(static_cast<LONG>(i) + 1));
            data[i].SetValue("t", CComVariant(texts[i]));
            data[i].SetValue("r", CComVariant(static_cast<double>(i) + 0.5));
        }
        m_database.Sync();
        TakeLog(m_database);
    }
    ~BadQuery() override { DbDatabase::m_queriesCount = m_queriesCount; }

    // The first cell of each row of the answer; "refused" if there is none.
    Strings Answer(const std::string& sql) {
        CString name;
        if (!m_database.Query(sql, name)) {
            return {"refused"};
        }
        Strings cells;
        DbTableData& data = *m_database.GetTableData(name);
        for (uint64 i = 0; i < data.size(); ++i) {
            CString text;
            data[i][0].ValueToString(text);
            cells.push_back(text.ToUtf8());
        }
        return cells;
    }

    // The lines between the one with the text and the one with the result, for a text that must be refused.
    Strings Troubles(const std::string& sql) {
        TakeLog(m_database);
        CString name;
        EXPECT_FALSE(m_database.Query(sql, name)) << sql.substr(0, 80);
        Strings lines = TakeLog(m_database);
        m_database.GetTableDescr("T")->ClearFilters();
        if (lines.size() < 2) {
            return {"fewer than two lines"};
        }
        EXPECT_EQ(lines.back(), "SQL Analyze - failed");
        return {lines.begin() + 1, lines.end() - 1};
    }

    // Runs a query with a megabyte of parts. With quadratic cost this would not end.
    void ExpectEnd(const std::string& begin, const std::string& part, const std::string& end) {
        RunQuery(begin + Times(MegaByte / part.size(), part) + end);
    }

    void RunQuery(const std::string& sql) {
        CString name;
        m_database.Query(sql, name);
        m_database.GetTableDescr("T")->ClearFilters();
        EXPECT_FALSE(TakeLog(m_database).empty());
    }

    static constexpr std::size_t MegaByte = 1 << 20;

    const std::int32_t m_queriesCount = DbDatabase::m_queriesCount;
    DbDatabase m_database;
};

constexpr const char* CheckBoth = "SQL Analyze - check 'SELECT' and/or 'FROM' statement";

TEST_F(BadQuery, Samples_HaveNoFaults) {
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(QUILLET_SOURCE_DIR) + "/tests/fuzz/corpus/query")) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(FaultsOf(text), "") << entry.path();
        ++count;
    }
    EXPECT_GT(count, 20U);
}

TEST_F(BadQuery, RandomBytes_HaveNoFaults) {
    std::mt19937 random(quillet::test::Seed(4));
    for (int run = 0; run < 200; ++run) {
        std::string text = run % 2 == 0 ? "" : "select * from parts where ";
        for (std::size_t length = random() % 100; length > 0; --length) {
            text += static_cast<char>(random() % 256);
        }
        EXPECT_EQ(FaultsOf(text), "") << testing::PrintToString(text);
    }
}

TEST_F(BadQuery, RandomWords_HaveNoFaults) {
    const char* const words[] = {"select ",   "from ",   "where ",  "order ",  "by ",         "top ",
                                 "distinct ", "desc ",   "and ",    "or ",     "not ",        "(",
                                 ")",         "*",       "'",       "\"",      "[",           "]",
                                 ",",         "parts ",  "[from] ", "few ",    "fewer ",      "both ",
                                 "empty ",    "number ", "name ",   "length ", "= ",          "< ",
                                 "<>",        ">= ",     "!= ",     "1 ",      "'beam' ",     "0,5 ",
                                 "\n",        "\xff ",   "höhe ",   "select ", "number > 1 ", "from parts "};
    std::mt19937 random(quillet::test::Seed(5));
    for (int run = 0; run < 400; ++run) {
        std::string text = run % 2 == 0 ? "" : "select name, number from parts where number = 1 ";
        for (std::size_t length = random() % 14; length > 0; --length) {
            text += words[random() % std::size(words)];
        }
        EXPECT_EQ(FaultsOf(text), "") << text;
    }
}

TEST_F(BadQuery, EveryBeginningOfAText_HasNoFaults) {
    const std::string text =
        "select top 3 distinct name, [number] from parts where not ( name != 'beam' or 1 <= number ) order "
        "by name";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        EXPECT_EQ(FaultsOf(text.substr(0, length)), "") << text.substr(0, length);
    }
}

TEST_F(BadQuery, UnbalancedQuotes_TakeInTheRest) {
    EXPECT_THAT(Troubles("select 'n from t"), ElementsAre(CheckBoth));
    EXPECT_THAT(Troubles("select n from \"t where n = 1"),
                ElementsAre("SQL Analyze - no table '\"t where n = 1' found"));
    EXPECT_THAT(Troubles("select n from t where 't = b"),
                ElementsAre("SQL Analyze - invalid condintion ''t = b'"));
    EXPECT_THAT(Answer("select n from t where t = 'b order by n"), IsEmpty());
    EXPECT_THAT(Answer("select n from t where t = b'"), ElementsAre("1", "3"));
}

TEST_F(BadQuery, UnbalancedBrackets_AreRefused) {
    EXPECT_THAT(Answer("select n from t where ( n = 1"), ElementsAre("refused"));
    EXPECT_THAT(Answer("select n from t where n = 1 )"), ElementsAre("refused"));
    EXPECT_THAT(Troubles("select n from [t where n = 1"),
                ElementsAre("SQL Analyze - no table 't where n = 1' found"));
    EXPECT_THAT(Troubles("select [n from t"), ElementsAre(CheckBoth));
    EXPECT_THAT(Answer("select n from t]"), ElementsAre("1", "2", "3")) << "either bracket may be missing";
    // The right number of words, but in the wrong order: never true.
    EXPECT_THAT(Answer("select n from t where ) n = 1 ("), IsEmpty());
}

TEST_F(BadQuery, AThousandNestedBrackets_AreAnswered) {
    const std::string open = Times(1000, "(");
    const std::string close = Times(1000, ")");
    EXPECT_THAT(Answer("select n from t where " + open + "n = 2" + close), ElementsAre("2"));
    EXPECT_THAT(Answer("select n from t where " + Times(1000, "not ( ") + "n = 2" + close), ElementsAre("2"));
    EXPECT_THAT(Answer("select n from t where " + Times(1001, "not ( ") + "n = 2" + close + ")"),
                ElementsAre("1", "3"));
    EXPECT_THAT(Answer("select n from t where (" + open + "n = 2" + close), ElementsAre("refused"));
    EXPECT_THAT(Answer("select n from t where " + open + "n = 2" + close + ")"), ElementsAre("refused"));
    EXPECT_THAT(Answer("select n from " + Times(1000, "[") + "t"), ElementsAre("refused"));
}

TEST_F(BadQuery, KeywordsAsNames_AreNamesInBracketsOnly) {
    EXPECT_THAT(Troubles("select select from t"), ElementsAre(CheckBoth));
    EXPECT_THAT(Troubles("select from from t"), ElementsAre(CheckBoth));
    EXPECT_THAT(Troubles("select n from where"), ElementsAre(CheckBoth));
    EXPECT_THAT(Troubles("select n from t where top = 1"),
                ElementsAre("SQL Analyze - invalid condintion '1'"))
        << "what follows TOP is a number";
    EXPECT_THAT(Troubles("select n from t where [select] = 1"),
                ElementsAre("SQL Analyze - invalid condition 'select = 1'"));
    EXPECT_THAT(Answer("select [from] from t where [from] = 0 order by [from]"), ElementsAre("0", "0", "0"));
    EXPECT_THAT(Answer("select n from t order by [order]"), ElementsAre("refused"));
}

TEST_F(BadQuery, UnknownFieldsAndTables_AreNamed) {
    EXPECT_THAT(Troubles("select n, x, y from t"),
                ElementsAre("SQL Analyze - no 'x' field found in 't' table"));
    EXPECT_THAT(Troubles("select n from t, u where n = 1"), ElementsAre("SQL Analyze - no table 'u' found"));
    EXPECT_THAT(Troubles("select n from u where n = 1"),
                ElementsAre("SQL Analyze - no table 'u' found", "SQL Analyze - no table 'u' found"));
    EXPECT_THAT(Troubles("select n from t where x = 1"),
                ElementsAre("SQL Analyze - invalid condition 'x = 1'"));
    TakeLog(m_database);
    EXPECT_THAT(Answer("select n from t order by x"), ElementsAre("refused"));
    EXPECT_THAT(TakeLog(m_database), Contains("SQL Analyze - no 'x' field found in 't' table"));
}

TEST_F(BadQuery, ConditionsCutShort_AreQuoted) {
    EXPECT_THAT(Troubles("select n from t where n"), ElementsAre("SQL Analyze - invalid condintion 'n'"));
    EXPECT_THAT(Troubles("select n from t where n >"), ElementsAre("SQL Analyze - invalid condintion 'n >'"));
    EXPECT_THAT(Troubles("select n from t where n = 1 and t ="),
                ElementsAre("SQL Analyze - invalid condintion 't ='"));
    EXPECT_THAT(Troubles("select n from t where n = 1 or (r"),
                ElementsAre("SQL Analyze - invalid condintion 'r'"));
    EXPECT_THAT(Answer("select n from t where"), ElementsAre("1", "2", "3"));
    EXPECT_THAT(Answer("select n from t where not"), IsEmpty());
}

TEST_F(BadQuery, AMegabyteOfConditions_ComesToAnEnd) {
    ExpectEnd("select n,t from t where n=1", " or n=1", "");
    ExpectEnd("select n,t from t where n=1", " and x=1", "");
}

TEST_F(BadQuery, AMegabyteOfOperators_ComesToAnEnd) {
    ExpectEnd("select n,t from t where n=1", "=<>", "");
    ExpectEnd("select ", "*", " from t");
    ExpectEnd("select n,t from t where ", "not ", "n=1");
}

TEST_F(BadQuery, AMegabyteOfBrackets_ComesToAnEnd) {
    ExpectEnd("select n,t from t where ", "(", "n=1");
    ExpectEnd("select n,t from t where ", "[", "");
    RunQuery("select n,t from t where " + Times(MegaByte / 2, "(") + "n=1" + Times(MegaByte / 2, ")"));
}

TEST_F(BadQuery, AMegabyteOfNames_ComesToAnEnd) {
    ExpectEnd("select n", ",t", " from t");
    ExpectEnd("select distinct n", ",t", " from t order by r");
    ExpectEnd("select n", ",x", " from t");
    ExpectEnd("select n,t from t", ",u", "");
}

TEST_F(BadQuery, AMegabyteOfOrderNames_CostsTheRowsNothing) {
    ExpectEnd("select n,t from t order by t", ",t", "");
    EXPECT_THAT(Answer("select n from t order by t, r, t, n, r, t desc"), ElementsAre("3", "1", "2"));
    // Each name counts once, or a hundred thousand rows would take the memory of a hundred thousand columns.
    m_database.GetTableData("T")->AddRows(100000);
    RunQuery("select n,t from t order by t" + Times(MegaByte / 16, ",t"));
}

TEST_F(BadQuery, AMegabyteOfQuotedText_ComesToAnEnd) {
    ExpectEnd("select n,t from t where t='", "Abc ", "'");
    ExpectEnd("select n,t from t where t='", "Abc ", "");
    ExpectEnd("select n,t from t where n='", "1", "'");
    ExpectEnd("select n,t from t where r='0.", "1", "'");
    ExpectEnd("select n,t from t where ", "'", "");
}

}  // namespace
