// A reference implementation of queries, as plain as possible: one character, token, row and cell at a time.
// The tests compare the library with it.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "Quillet/base/CString.h"

namespace quillet::test {

// Puts blanks around operators. The text is searched once for each operator.
class PlainSpacer {
public:
    explicit PlainSpacer(const WideString& text) : m_text(text) {}

    WideString Spaced() {
        for (const WCHAR unit : WideString(OLESTR("*)(<>="))) {
            for (std::size_t at = 0; at < m_text.size(); ++at) {
                if (m_text[at] == unit && !InQuotes(at)) {
                    at = Space(at);
                }
            }
        }
        return m_text;
    }

private:
    bool InQuotes(std::size_t at) const {
        WCHAR closing = 0;
        for (std::size_t i = 0; i < at; ++i) {
            if (closing != 0) {
                closing = m_text[i] == closing ? WCHAR(0) : closing;
            } else if (m_text[i] == '\'' || m_text[i] == '"' || m_text[i] == 0xFF91) {
                closing = m_text[i];
            }
        }
        return closing != 0;
    }

    WCHAR At(std::size_t at) const { return at < m_text.size() ? m_text[at] : WCHAR(0); }
    bool IsOneOf(WCHAR unit, WideView units) const { return unit != 0 && units.find(unit) != WideView::npos; }

    // The position of the pair that the character belongs to; its own position if it belongs to none.
    std::size_t BeginOfPair(std::size_t at) const {
        std::size_t begin = at;
        while (begin > 0 && IsOneOf(m_text[begin - 1], OLESTR("<>="))) {
            --begin;
        }
        while (begin < at) {
            const bool pair = IsPair(begin);
            if (pair && begin + 1 == at) {
                return begin;
            }
            begin += pair ? 2 : 1;
        }
        return at;
    }
    bool IsPair(std::size_t at) const {
        return (IsOneOf(At(at), OLESTR("<>=")) && At(at + 1) == '=') || (At(at) == '<' && At(at + 1) == '>');
    }

    // Puts blanks around the operator at a position and returns its new end.
    std::size_t Space(std::size_t at) {
        const std::size_t begin = BeginOfPair(at);
        const bool pair = IsPair(begin);
        std::size_t end = begin + (pair ? 2 : 1);
        if (at < 2) {
            return at;
        }
        const bool lone = m_text[at] == '=' && !pair;
        const WCHAR next = At(end);
        const bool joinsNext = lone && IsOneOf(next, OLESTR("=<>!"));
        if (end < m_text.size() && next != ' ' && !joinsNext) {
            m_text.insert(end, 1, ' ');
        }
        const WCHAR before = m_text[begin - (begin > 0 ? 1 : 0)];
        const bool joinsBefore =
            m_text[begin] == '=' && (before == '!' || (lone && IsOneOf(before, OLESTR("=<>"))));
        if (begin >= 2 && before != ' ' && !joinsBefore) {
            m_text.insert(begin, 1, ' ');
            ++end;
        }
        return end - 1;
    }

    WideString m_text;
};

// A null, a number of a long or a double field, or a text.
struct PlainValue {
    char m_type = '0';
    double m_number = 0;
    std::string m_text;
    // Copied with the value; conditions and duplicate checks ignore it.
    bool m_isFlaggedNull = false;

    static PlainValue Number(char type, double number) { return {type, number, {}}; }
    static PlainValue Text(const std::string& text) { return {'t', 0, text}; }

    bool IsNull() const { return m_type == '0'; }
    // The same value of the same type, in the same case.
    friend bool operator==(const PlainValue& left, const PlainValue& right) {
        return left.m_type == right.m_type && left.m_number == right.m_number && left.m_text == right.m_text;
    }
};

inline std::string PlainLower(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

// Letters and digits only: alphabetical, then lower case before upper.
inline bool PlainTextLess(const std::string& left, const std::string& right) {
    if (PlainLower(left) != PlainLower(right)) {
        return PlainLower(left) < PlainLower(right);
    }
    return left > right;
}

inline bool PlainLess(const PlainValue& left, const PlainValue& right) {
    if (left.IsNull() || right.IsNull()) {
        return false;
    }
    return left.m_type == 't' ? PlainTextLess(left.m_text, right.m_text) : left.m_number < right.m_number;
}

inline bool PlainEqualIgnoringCase(const PlainValue& left, const PlainValue& right) {
    return left.m_type == right.m_type && left.m_number == right.m_number &&
           PlainLower(left.m_text) == PlainLower(right.m_text);
}

using PlainRow = std::vector<PlainValue>;

struct PlainTable {
    // As it is spelled.
    std::string m_name;
    std::vector<std::string> m_fields;
    // 'l' for long, 'd' for double, 't' for text.
    std::string m_types;
    std::vector<PlainRow> m_rows;

    int Find(std::string field) const {
        field = Unbracketed(field);
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            if (PlainLower(m_fields[i]) == PlainLower(field)) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }

    static std::string Unbracketed(std::string name) {
        if (!name.empty() && name.back() == ']') {
            name.pop_back();
        }
        if (!name.empty() && name.front() == '[') {
            name.erase(0, 1);
        }
        return name;
    }
};

// By lower-case name.
using PlainTables = std::map<std::string, PlainTable>;

struct PlainOperand {
    int m_field = -1;
    PlainValue m_literal;

    const PlainValue& In(const PlainRow& row) const {
        return m_field < 0 ? m_literal : row[static_cast<std::size_t>(m_field)];
    }
};

struct PlainCondition {
    PlainOperand m_left;
    std::string m_operator;
    PlainOperand m_right;

    bool Holds(const PlainRow& row) const {
        const PlainValue& left = m_left.In(row);
        const PlainValue& right = m_right.In(row);
        // Null is equal to null; case counts for <= and >=, but not for equality.
        if (m_operator == "<") {
            return PlainLess(left, right);
        }
        if (m_operator == ">") {
            return PlainLess(right, left);
        }
        if (m_operator == "<=") {
            return PlainLess(left, right) || left == right;
        }
        if (m_operator == ">=") {
            return PlainLess(right, left) || left == right;
        }
        const bool equal = PlainEqualIgnoringCase(left, right);
        return m_operator == "=" || m_operator == "==" ? equal : !equal;
    }
};

// A token of the condition: '&', '|', '!', '(', ')' or 'c' for a condition.
struct PlainToken {
    char m_kind = 'c';
    std::size_t m_condition = 0;
};

// Inserts where a binary search finds the position; compare(other) is negative if the value goes before the
// other, and zero if it takes the other's position.
template <typename Value, typename Compare>
void PlainInsert(std::vector<Value>& values, const Value& value, const Compare& compare) {
    std::ptrdiff_t low = 0;
    std::ptrdiff_t high = static_cast<std::ptrdiff_t>(values.size()) - 1;
    while (high - low >= 0) {
        const std::ptrdiff_t middle = (low + high) / 2;
        const int order = compare(values[static_cast<std::size_t>(middle)]);
        if (order == 0) {
            low = middle;
            high = middle - 1;
        } else if (order < 0) {
            high = middle - 1;
        } else {
            low = middle + 1;
        }
    }
    values.insert(values.begin() + low, value);
}

// A text, analysed and answered.
class PlainQuery {
public:
    PlainQuery(const std::string& sql, const PlainTables& tables) : m_tables(tables) {
        std::string text = sql;
        for (char& c : text) {
            c = c == '\r' || c == '\n' ? ' ' : c;
        }
        text = LoweredOutsideQuotes(text);
        if (text.find("select") == std::string::npos) {
            AnswerByName(PlainTable::Unbracketed(text));
            return;
        }
        Analyze(text);
        if (m_good) {
            Answer();
        }
    }

    bool IsGood() const { return m_good; }
    // The table that is itself the answer, if there is one.
    bool IsTable() const { return m_isTable; }
    const PlainTable& Answered() const { return m_answer; }
    // The lines of the analysis.
    const std::vector<std::string>& Lines() const { return m_lines; }

private:
    static std::string LoweredOutsideQuotes(const std::string& text) {
        std::string result;
        char closing = 0;
        for (const char c : text) {
            if (closing != 0) {
                closing = c == closing ? char(0) : closing;
                result += c;
            } else {
                closing = c == '\'' || c == '"' ? c : char(0);
                result += PlainLower(std::string(1, c));
            }
        }
        return result;
    }

    void Fail(const std::string& line) {
        m_lines.push_back("SQL Analyze - " + line);
        m_good = false;
    }

    const PlainTable* Table(const std::string& name) const {
        const auto found = m_tables.find(PlainLower(name));
        return found == m_tables.end() ? nullptr : &found->second;
    }

    void AnswerByName(const std::string& name) {
        if (const PlainTable* const table = Table(name)) {
            m_answer = *table;
            m_isTable = true;
        } else {
            Fail("table '" + name + "' not found");
        }
    }

    // ---- Analysis

    void Analyze(const std::string& text) {
        m_lines.push_back("SQL Analyze - query '" + text + "'");
        const std::string spaced =
            CString(WideView(PlainSpacer(WideString(CString(text).View())).Spaced())).ToUtf8();
        std::string token;
        char closing = 0;
        for (std::size_t i = 0; i <= spaced.size(); ++i) {
            const bool atEnd = i == spaced.size();
            const char c = atEnd ? ' ' : spaced[i];
            if (closing != 0 && !atEnd) {
                token += c;
                closing = c == closing ? char(0) : closing;
            } else if (c == ' ' || c == ',' || c == ';') {
                if (!token.empty() && Take(token)) {
                    token.clear();
                }
            } else {
                closing = c == '[' ? ']' : c == '\'' || c == '"' ? c : char(0);
                token += c;
            }
        }
        if (!m_parts.empty()) {
            Fail("invalid condintion '" + Joined(m_parts) + "'");
        }
        if (m_fields.empty() || m_from.empty()) {
            Fail("check 'SELECT' and/or 'FROM' statement");
        }
        m_lines.push_back(m_good ? "SQL Analyze - ok" : "SQL Analyze - failed");
    }

    static std::string Joined(const std::vector<std::string>& parts) {
        std::string text;
        for (const std::string& part : parts) {
            text += (text.empty() ? "" : " ") + part;
        }
        return text;
    }

    bool Take(const std::string& token) {
        const std::string name = PlainTable::Unbracketed(token);
        if (token == "select") {
            m_state = 1;
        } else if (token == "top") {
            m_savedState = m_state;
            m_state = 3;
        } else if (token == "distinct" && m_state == 1) {
            m_distinct = true;
        } else if (token == "from") {
            m_state = 4;
        } else if (token == "where") {
            m_state = 5;
        } else if (token == "order") {
            m_state = 6;
        } else if (token == "by" && m_state == 6) {
            m_state = 7;
        } else if (m_state == 1) {
            m_fields.push_back(token);
        } else if (m_state == 3) {
            m_top = std::atoi(token.c_str());
            m_state = m_savedState;
        } else if (m_state == 4) {
            TakeTable(name);
        } else if (m_state == 5) {
            TakeCondition(token);
        } else if (m_state == 7) {
            if (token == "desc") {
                m_desc = true;
            } else if (token != "asc") {
                m_order.push_back(name);
            }
        } else {
            return false;
        }
        return true;
    }

    void TakeTable(const std::string& name) {
        m_from.push_back(name);
        const PlainTable* const table = Table(name);
        if (table == nullptr) {
            Fail("no table '" + name + "' found");
            return;
        }
        if (m_fields == std::vector<std::string>{"*"}) {
            return;
        }
        for (const std::string& field : m_fields) {
            if (table->Find(field) < 0) {
                FailField(field);
                return;
            }
        }
    }

    void FailField(const std::string& field) {
        Fail("no '" + field + "' field found in '" + m_from.front() + "' table");
    }

    void TakeCondition(const std::string& token) {
        static const std::map<std::string, char> Kinds = {
            {"and", '&'}, {"or", '|'}, {"not", '!'}, {"(", '('}, {")", ')'}};
        const auto kind = Kinds.find(token);
        if (kind != Kinds.end()) {
            m_clause.push_back({kind->second, 0});
            return;
        }
        m_parts.push_back(token);
        if (m_parts.size() < 3) {
            return;
        }
        ++m_read;
        m_parts[0] = PlainTable::Unbracketed(m_parts[0]);
        m_parts[2] = PlainTable::Unbracketed(m_parts[2]);
        const PlainTable* const table = m_from.empty() ? nullptr : Table(m_from.front());
        if (m_from.empty()) {
            Fail("no tables defined, check 'FROM' statement");
        } else if (table == nullptr) {
            Fail("no table '" + m_from.front() + "' found");
        } else if (!AddCondition(*table)) {
            Fail("invalid condition '" + Joined(m_parts) + "'");
        }
        m_parts.clear();
    }

    bool AddCondition(const PlainTable& table) {
        const std::string op = m_parts[1];
        if (op != "<" && op != "<=" && op != "=" && op != "==" && op != ">=" && op != ">" && op != "!=" &&
            op != "<>") {
            return false;
        }
        PlainCondition condition;
        condition.m_operator = op;
        condition.m_left.m_field = table.Find(m_parts[0]);
        condition.m_right.m_field = table.Find(m_parts[2]);
        const auto type = [&](const PlainOperand& operand) {
            return table.m_types[static_cast<std::size_t>(operand.m_field)];
        };
        if (condition.m_left.m_field >= 0 && condition.m_right.m_field >= 0) {
            if (type(condition.m_left) != type(condition.m_right)) {
                return false;
            }
        } else if (condition.m_left.m_field >= 0) {
            if (!Convert(m_parts[2], type(condition.m_left), condition.m_right.m_literal)) {
                return false;
            }
        } else if (condition.m_right.m_field < 0 ||
                   !Convert(m_parts[0], type(condition.m_right), condition.m_left.m_literal)) {
            return false;
        }
        m_clause.push_back({'c', m_conditions.size()});
        m_conditions.push_back(condition);
        return true;
    }

    static bool Convert(std::string literal, char type, PlainValue& value) {
        const auto isQuote = [](char c) { return c == '\'' || c == '"'; };
        if (!literal.empty() && isQuote(literal.front())) {
            literal.erase(0, 1);
        }
        if (!literal.empty() && isQuote(literal.back())) {
            literal.pop_back();
        }
        if (type == 't') {
            value = PlainValue::Text(literal);
            return true;
        }
        char* end = nullptr;
        const double number = std::strtod(literal.c_str(), &end);
        value = PlainValue::Number(type, type == 'l' ? std::nearbyint(number) : number);
        return !literal.empty() && *end == 0;
    }

    // ---- Answer

    bool ClauseIsValid() const {
        int open = 0;
        for (const PlainToken& token : m_clause) {
            open += token.m_kind == '(' ? 1 : token.m_kind == ')' ? -1 : 0;
        }
        return open == 0;
    }

    // Operators wait until a bracket or the end, and are then taken last in, first out.
    bool Meets(const PlainRow& row) const {
        std::vector<PlainToken> waiting;
        std::vector<PlainToken> postfix;
        const auto pop = [&] {
            postfix.push_back(waiting.back());
            waiting.pop_back();
        };
        for (const PlainToken& token : m_clause) {
            if (token.m_kind == 'c') {
                postfix.push_back(token);
            } else if (token.m_kind != ')') {
                waiting.push_back(token);
            } else {
                while (!waiting.empty() && waiting.back().m_kind != '(') {
                    pop();
                }
                if (waiting.empty()) {
                    return false;
                }
                waiting.pop_back();
            }
        }
        while (!waiting.empty()) {
            pop();
        }
        std::vector<bool> values;
        for (const PlainToken& token : postfix) {
            if (token.m_kind == 'c') {
                values.push_back(m_conditions[token.m_condition].Holds(row));
                continue;
            }
            if (token.m_kind == '(' || values.size() < (token.m_kind == '!' ? 1U : 2U)) {
                return false;
            }
            const bool right = values.back();
            if (token.m_kind == '!') {
                values.back() = !right;
                continue;
            }
            values.pop_back();
            const bool left = values.back();
            values.back() = token.m_kind == '&' ? left && right : left || right;
        }
        return values.empty() || values.back();
    }

    bool IsWhole(const PlainTable& source) const {
        if (m_from.size() != 1 || m_read != 0 || !m_order.empty() || m_top != -1) {
            return false;
        }
        bool same = m_fields.size() == source.m_fields.size();
        for (std::size_t i = 0; same && i < m_fields.size(); ++i) {
            same = PlainLower(m_fields[i]) == PlainLower(source.m_fields[i]);
        }
        return same || m_fields.front() == "*";
    }

    // The positions of the fields; nothing if one is unknown.
    std::vector<int> Positions(const PlainTable& source, const std::vector<std::string>& names) {
        std::vector<int> positions;
        for (const std::string& name : names) {
            positions.push_back(source.Find(name));
            if (positions.back() < 0) {
                FailField(name);
                return {};
            }
        }
        return positions;
    }

    static int Compare(const PlainRow& left, const PlainRow& right, const std::vector<int>& fields) {
        for (const int field : fields) {
            const PlainValue& a = left[static_cast<std::size_t>(field)];
            const PlainValue& b = right[static_cast<std::size_t>(field)];
            if (!PlainEqualIgnoringCase(a, b)) {
                return PlainLess(b, a) ? 1 : -1;
            }
        }
        return 0;
    }

    static void Insert(std::vector<PlainRow>& rows, const PlainRow& row, const std::vector<int>& fields) {
        PlainInsert(rows, row, [&](const PlainRow& other) { return Compare(row, other, fields); });
    }

    void Answer() {
        const PlainTable& source = *Table(m_from.front());
        if (IsWhole(source)) {
            m_answer = source;
            m_isTable = true;
            return;
        }
        m_good = ClauseIsValid();
        if (!m_good) {
            return;
        }
        const std::vector<int> fields =
            Positions(source, m_fields.front() == "*" ? source.m_fields : m_fields);
        const std::vector<int> order = m_good ? Positions(source, m_order) : fields;
        if (!m_good) {
            return;
        }
        std::vector<PlainRow> found;
        for (const PlainRow& row : source.m_rows) {
            if (static_cast<int>(found.size()) != m_top && Meets(row)) {
                found.push_back(row);
            }
        }
        if (!order.empty()) {
            std::vector<PlainRow> sorted;
            for (const PlainRow& row : found) {
                Insert(sorted, row, order);
            }
            found = sorted;
            if (m_desc) {
                found.assign(sorted.rbegin(), sorted.rend());
            }
        }
        Show(source, fields, found);
    }

    void Show(const PlainTable& source, const std::vector<int>& fields, const std::vector<PlainRow>& found) {
        std::vector<std::size_t> shown;
        for (const int field : fields) {
            const auto position = static_cast<std::size_t>(field);
            if (m_answer.Find(source.m_fields[position]) < 0) {
                shown.push_back(position);
                m_answer.m_fields.push_back(source.m_fields[position]);
                m_answer.m_types += source.m_types[position];
            }
        }
        for (const PlainRow& row : found) {
            PlainRow cells;
            for (const std::size_t position : shown) {
                cells.push_back(row[position]);
            }
            bool isNew = true;
            for (const PlainRow& kept : m_answer.m_rows) {
                isNew = isNew && !(kept == cells);
            }
            if (isNew || !m_distinct) {
                m_answer.m_rows.push_back(cells);
            }
        }
    }

    const PlainTables& m_tables;
    std::vector<std::string> m_lines;
    bool m_good = true;

    int m_state = 0;
    int m_savedState = 0;
    std::vector<std::string> m_fields;
    std::vector<std::string> m_from;
    std::vector<std::string> m_order;
    std::vector<std::string> m_parts;
    std::vector<PlainToken> m_clause;
    std::vector<PlainCondition> m_conditions;
    std::size_t m_read = 0;
    bool m_desc = false;
    bool m_distinct = false;
    int m_top = -1;

    PlainTable m_answer;
    bool m_isTable = false;
};

}  // namespace quillet::test
