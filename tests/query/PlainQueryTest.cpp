// Random queries, compared with the plain reference.
#include "support/PlainQuery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/CatalogHelpers.h"
#include "support/PlainValues.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

using quillet::test::Printed;

using Strings = std::vector<std::string>;

// Fields, types and rows as text.
Strings Printed(const PlainTable& table) {
    Strings lines(1);
    for (std::size_t i = 0; i < table.m_fields.size(); ++i) {
        lines[0] += table.m_fields[i] + table.m_types[i] + ' ';
    }
    for (const PlainRow& row : table.m_rows) {
        lines.emplace_back();
        for (const PlainValue& value : row) {
            lines.back() += Printed(value) + ' ';
        }
    }
    return lines;
}

Strings Printed(const DbTableDescr& descr, DbTableData& data) {
    Strings lines(1);
    for (const DbFieldDescr* const field : descr) {
        const char type = field->GetType() == VT_I4 ? 'l' : field->GetType() == VT_R8 ? 'd' : 't';
        lines[0] += field->GetName().ToUtf8() + type + ' ';
    }
    for (uint64 i = 0; i < data.size(); ++i) {
        lines.emplace_back();
        for (uint64 field = 0; field < descr.size(); ++field) {
            lines.back() += Printed(data[i].GetField(field).GetVariant()) + ' ';
        }
    }
    return lines;
}

// Texts that are mostly queries.
class QueryWriter {
public:
    explicit QueryWriter(std::mt19937& random) : m_random(random) {}

    std::string Query(const Strings& tables) {
        m_tokens.clear();
        Add("select");
        if (Chance(4)) {
            Add("distinct");
        }
        if (Chance(5)) {
            Add("top");
            Add(OneOf({"0", "1", "2", "3", "5", "99", "2x", "x"}));
        }
        if (Chance(3)) {
            Add("*");
        } else {
            List();
        }
        Add("from");
        Add(OneOf(tables));
        if (Chance(12)) {
            Add(",");
            Add(OneOf(tables));
        }
        if (!Chance(3)) {
            Add("where");
            Expression(2);
        }
        if (Chance(2)) {
            Add("order");
            Add("by");
            List();
            if (Chance(2)) {
                Add(OneOf({"asc", "desc"}));
            }
        }
        if (Chance(5)) {
            Disturb();
        }
        return Text();
    }

private:
    std::size_t Below(std::size_t count) { return m_random() % count; }
    bool Chance(std::size_t one) { return Below(one) == 0; }
    std::string OneOf(const Strings& texts) { return texts[Below(texts.size())]; }
    void Add(const std::string& token) { m_tokens.push_back(token); }

    std::string Field() {
        return Chance(60) ? "nope" : OneOf({"n", "n", "m", "t", "t", "u", "d", "[n]", "[t]"});
    }
    void List() {
        Add(Field());
        while (Chance(2)) {
            Add(",");
            Add(Field());
        }
    }

    void Expression(int depth) {
        Term(depth);
        while (Chance(2)) {
            Add(OneOf({"and", "or"}));
            Term(depth);
        }
    }
    void Term(int depth) {
        if (Chance(5)) {
            Add("not");
        }
        if (depth > 0 && Chance(4)) {
            Add("(");
            Expression(depth - 1);
            Add(")");
        } else {
            Condition();
        }
    }
    void Condition() {
        static const Strings Operators = {"<", "<=", "=", "==", ">=", ">", "!=", "<>"};
        static const Strings Numbers = {"0", "1", "2", "3", "1.5", "'2'"};
        static const Strings Texts = {"a", "B", "'ab'", "'Ab'", "\"c\"", "''", "abc"};
        Strings sides;
        switch (Below(10)) {
            case 0:
                sides = {Field(), Field()};
                break;
            case 1:
                sides = {OneOf({"n", "t", "d"}), OneOf(Chance(2) ? Texts : Numbers)};
                break;
            case 2:
                sides = {"n", "m"};
                break;
            case 3:
                sides = {"t", "u"};
                break;
            case 4:
            case 5:
                sides = {OneOf({"t", "u", "[t]"}), OneOf(Texts)};
                break;
            default:
                sides = {OneOf({"n", "m", "d", "[n]"}), OneOf(Numbers)};
                break;
        }
        if (Chance(4)) {
            std::swap(sides[0], sides[1]);
        }
        Add(sides[0]);
        Add(OneOf(Operators));
        Add(sides[1]);
    }

    void Disturb() {
        const std::size_t at = Below(m_tokens.size());
        const auto place = m_tokens.begin() + static_cast<std::ptrdiff_t>(at);
        switch (Below(4)) {
            case 0:
                m_tokens.erase(place);
                break;
            case 1:
                m_tokens.insert(place, m_tokens[Below(m_tokens.size())]);
                break;
            case 2:
                std::swap(*place, m_tokens[Below(m_tokens.size())]);
                break;
            default:
                m_tokens.insert(place, OneOf({"select", "top", "distinct", "from", "where", "order", "by",
                                              "desc",   "and", "or",       "not",  "(",     ")",     "*",
                                              "=",      "<",   "n",        "1",    "'",     "["}));
                break;
        }
    }

    // The tokens in random case, with a separator between them where they need one.
    std::string Text() {
        static const std::string Glue = "*()<>=,";
        std::string text;
        for (const std::string& token : m_tokens) {
            const bool needed = text.empty() || (Glue.find(text.back()) == std::string::npos &&
                                                 Glue.find(token.front()) == std::string::npos);
            if (needed || Chance(2)) {
                text += OneOf({" ", " ", " ", "  ", "\n", "\r\n"});
            }
            for (const char c : token) {
                const bool raise =
                    token.front() != '\'' && token.front() != '"' && c >= 'a' && c <= 'z' && Chance(4);
                text += raise ? static_cast<char>(c - 'a' + 'A') : c;
            }
        }
        return text.substr(1);
    }

    std::mt19937& m_random;
    Strings m_tokens;
};

// A database and its plain counterpart.
class PlainQueryTest : public testing::Test {
protected:
    PlainValue RandomValue(char type) {
        if (m_random() % 8 == 0) {
            return {};
        }
        if (type == 't') {
            static const Strings Texts = {"", "a", "A", "b", "B", "ab", "Ab", "AB", "abc", "c"};
            return PlainValue::Text(Texts[m_random() % Texts.size()]);
        }
        return PlainValue::Number(type, static_cast<double>(m_random() % 5) / (type == 'd' ? 2 : 1));
    }

    void AddTable(const std::string& name, const Strings& fields, const std::string& types) {
        PlainTable table{name, fields, types, {}};
        DbTableInfo* const info = m_database->CreateTable(CString(name), DbTableInfo::Table);
        for (std::size_t i = 0; i < fields.size(); ++i) {
            info->GetDescr()->CreateField(CString(fields[i]), false,
                                          types[i] == 't'   ? DbFieldDescr::Text
                                          : types[i] == 'd' ? DbFieldDescr::Double
                                                            : DbFieldDescr::Long);
        }
        m_tables[PlainLower(name)] = table;
        for (std::size_t rows = m_random() % 14; rows > 0; --rows) {
            AddRow(name);
        }
    }

    void AddRow(const std::string& name) {
        PlainTable& table = m_tables[PlainLower(name)];
        DbTableData& data = *m_database->GetTableData(CString(name));
        table.m_rows.emplace_back(table.m_fields.size());
        data.AddRow();
        for (std::size_t field = 0; field < table.m_fields.size(); ++field) {
            Change(name, table.m_rows.size() - 1, field);
        }
    }

    void Change(const std::string& name, std::size_t row, std::size_t field) {
        PlainTable& table = m_tables[PlainLower(name)];
        PlainValue& value = table.m_rows[row][field];
        value = RandomValue(table.m_types[field]);
        DbFieldValue& cell = (*m_database->GetTableData(CString(name)))[row][field];
        cell.GetVariant() = VariantOf(value);
        cell.SetChanged();
    }

    void Edit(const std::string& name) {
        PlainTable& table = m_tables[PlainLower(name)];
        if (table.m_rows.empty() || m_random() % 3 == 0) {
            AddRow(name);
        } else if (m_random() % 2 == 0) {
            const std::size_t row = m_random() % table.m_rows.size();
            table.m_rows.erase(table.m_rows.begin() + static_cast<std::ptrdiff_t>(row));
            m_database->GetTableData(CString(name))->DeleteRow(row);
        } else {
            Change(name, m_random() % table.m_rows.size(), m_random() % table.m_fields.size());
        }
    }

    Strings Shown(const std::string& name) {
        DbTableData* const data = m_database->GetTableData(CString(name));
        return data == nullptr ? Strings{"no table"}
                               : Printed(*m_database->GetTableDescr(CString(name)), *data);
    }

    // The log lines of analyses.
    Strings AnalysisLines() {
        Strings lines = TakeLog(*m_database);
        lines.erase(std::remove_if(lines.begin(), lines.end(),
                                   [](const std::string& line) { return line.rfind("SQL Analyze", 0) != 0; }),
                    lines.end());
        return lines;
    }

    void CheckQuery(const std::string& sql) {
        const std::string next = "Query_" + std::to_string(DbDatabase::m_queriesCount);
        const PlainQuery expected(sql, m_tables);
        CString name;
        const bool good = m_database->Query(CString(sql), name);
        EXPECT_EQ(AnalysisLines(), expected.Lines());
        ASSERT_EQ(good, expected.IsGood());
        if (!good) {
            return;
        }
        ++(expected.IsTable() ? m_answeredByTables : m_answered);
        ASSERT_EQ(name.ToUtf8(), expected.IsTable() ? expected.Answered().m_name : next);
        EXPECT_EQ(Shown(name.ToUtf8()), Printed(expected.Answered()));
        if (!expected.IsTable()) {
            m_tables[PlainLower(next)] = expected.Answered();
            m_tables[PlainLower(next)].m_name = next;
            m_queries.emplace_back(next, sql);
        }
    }

    // Every answer, recomputed from those below it.
    void Compare() {
        for (const auto& [name, sql] : m_queries) {
            PlainTable answer = PlainQuery(sql, m_tables).Answered();
            answer.m_name = name;
            m_tables[PlainLower(name)] = answer;
        }
        std::shuffle(m_queries.begin(), m_queries.end(), m_random);
        for (const auto& [name, sql] : m_queries) {
            EXPECT_EQ(Shown(name), Printed(m_tables[PlainLower(name)])) << name << ": " << sql;
        }
        std::sort(m_queries.begin(), m_queries.end(), [](const auto& left, const auto& right) {
            return std::pair(left.first.size(), left.first) < std::pair(right.first.size(), right.first);
        });
    }

    StaticsGuard m_statics;
    std::mt19937 m_random{quillet::test::Seed(20)};
    std::unique_ptr<DbDatabase> m_database;
    PlainTables m_tables;
    // Names and texts, in the order of the queries.
    std::vector<std::pair<std::string, std::string>> m_queries;
    int m_answered = 0;
    int m_answeredByTables = 0;
};

TEST_F(PlainQueryTest, RandomQueries_AreAnsweredAsTheyReadPlainly) {
    constexpr int Rounds = 400;
    constexpr int QueriesOfARound = 8;
    QueryWriter writer(m_random);
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        m_database = std::make_unique<DbDatabase>();
        m_tables.clear();
        m_queries.clear();
        DbDatabase::m_queriesCount = 0;
        AddTable("T", {"n", "M", "t", "u", "d"}, "llttd");
        AddTable("Other", {"t", "n", "D"}, "tld");
        TakeLog(*m_database);
        for (int i = 0; i < QueriesOfARound && !HasFatalFailure(); ++i) {
            Strings names = {"t", "t", "[T]", "other"};
            for (const auto& [name, sql] : m_queries) {
                names.push_back(name);
            }
            if (m_random() % 40 == 0) {
                names.assign(1, "none");
            }
            const std::string sql = writer.Query(names);
            SCOPED_TRACE(testing::Message() << "round " << round << ": " << sql);
            CheckQuery(sql);
        }
        for (int edits = 0; edits < 3; ++edits) {
            Edit(m_random() % 3 == 0 ? "Other" : "T");
            Compare();
        }
        m_database->Sync();
    }
    EXPECT_GT(m_answered, Rounds) << "most texts must be answered for the test to say anything";
    EXPECT_GT(m_answeredByTables, Rounds / 20);
}

}  // namespace
