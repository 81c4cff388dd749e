#include "commands/QueryHints.h"

#include <algorithm>
#include <initializer_list>

#include "Quillet/query/SqlText.h"
#include "Quillet/values/Names.h"
#include "commands/QueryWords.h"
#include "input/Catalog.h"
#include "output/NameSuggestions.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

using Words = std::vector<QueryWord>;

bool IsOneOf(const std::string& word, std::initializer_list<const char*> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::string Plain(const QueryWord& word) {
    return WithoutBrackets(word.m_text).ToUtf8();
}

// A name as it is written in a query.
std::string InQuery(const std::string& name) {
    const bool isKeyword = IsOneOf(
        Lowered(name).ToUtf8(),
        {"select", "top", "distinct", "from", "where", "order", "by", "and", "or", "not", "asc", "desc"});
    return isKeyword || name.find_first_of(" ,;*()<>=") != std::string::npos ? "[" + name + "]" : name;
}

// A text that looks like a number or a quoted value is not a misspelt name.
bool LooksLikeName(const QueryWord& word) {
    return !word.m_isText && word.m_text.find_first_of("0123456789+-.") != 0;
}

std::string SuggestTables(DbDatabase& database, const std::string& name) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        names.push_back(database.GetTableName(i).ToUtf8());
    }
    return SuggestNames(name, names, InQuery);
}

std::string UnclosedQuoteHint(const std::string& text) {
    const std::string mark = UnclosedQuote(text);
    return mark.empty() ? std::string()
                        : std::string(mark == "[" ? "the bracket " : "the quotation mark ") + mark +
                              " is never closed";
}

// Words of other dialects, and what to write instead.
class ForeignWords {
public:
    ForeignWords(const Words& words, bool isCondition) : m_words(words), m_isCondition(isCondition) {}

    // Empty for a word of the language, and for one that may be a name or a value in its place.
    std::string HintOn(std::size_t index) const {
        const QueryWord& word = m_words[index];
        if (word.m_isText || word.m_isBracketed || word.m_isKeyword || word.m_place == RightSide) {
            return {};
        }
        if (word.m_place == Operator) {
            return HintOnOperator(index);
        }
        return Hint(word.m_text,
                    word.m_part == QueryPart::Select ? InsteadInSelect(index) : InsteadOfClause(index));
    }

    // Whether a foreign word has made the places of the following words unreliable.
    bool ShiftsPlaces(std::size_t index) const {
        return m_words[index].Is("between") || m_words[index].Is("in");
    }

private:
    static constexpr std::size_t LeftSide = 0;
    static constexpr std::size_t Operator = 1;
    static constexpr std::size_t RightSide = 2;

    static std::string Hint(const std::string& foreign, const std::string& advice) {
        return advice.empty() ? advice : Quoted(foreign) + " is not supported: " + advice;
    }

    // The advice also replaces a not in the condition.
    std::string HintOnOperator(std::size_t index) const {
        const std::size_t left = LeftOf(index);
        const bool isNegatedInside = std::any_of(m_words.begin() + static_cast<std::ptrdiff_t>(left),
                                                 m_words.begin() + static_cast<std::ptrdiff_t>(index),
                                                 [](const QueryWord& word) { return word.Is("not"); });
        const bool isNegatedBefore = !isNegatedInside && left > 0 && m_words[left - 1].Is("not");
        std::string foreign = m_words[index].m_text;
        if (isNegatedInside) {
            foreign = "not " + foreign;
        } else if (isNegatedBefore) {
            foreign = "not " + m_words[left].m_text + " " + foreign;
        }
        return Hint(foreign,
                    InsteadOfOperator(index, m_words[left].m_text, isNegatedInside || isNegatedBefore));
    }

    std::string InsteadOfOperator(std::size_t index, const std::string& left, bool isNegated) const {
        const std::string& word = m_words[index].m_lowered;
        if (word == "between") {
            return "write " + Grouped(RangeFor(index, left), isNegated);
        }
        if (word == "in") {
            return "write " + Grouped(ListFor(index, left), isNegated);
        }
        if (word == "like") {
            return "there are no patterns; compare whole texts, as in " +
                   Grouped(left + " >= 'a' and " + left + " < 'b'", isNegated);
        }
        if (word == "is") {
            return "write = or !=; there is no word for null, and " + left + " = '' finds empty texts";
        }
        return {};
    }

    // A not applies to everything to its right, up to the end of the enclosing bracket.
    static std::string Grouped(const std::string& conditions, bool isNegated) {
        return isNegated ? "(not (" + conditions + "))" : "(" + conditions + ")";
    }

    // The left side of the condition that an operator belongs to.
    std::size_t LeftOf(std::size_t index) const {
        while (index > 0 && m_words[index].m_place != LeftSide) {
            --index;
        }
        return index;
    }

    std::string RangeFor(std::size_t index, const std::string& left) const {
        const bool isWhole = index + 3 < m_words.size() && m_words[index + 2].Is("and");
        return left + " >= " + (isWhole ? m_words[index + 1].m_text : "1") + " and " + left +
               " <= " + (isWhole ? m_words[index + 3].m_text : "2");
    }

    std::string ListFor(std::size_t index, const std::string& left) const {
        constexpr std::size_t MostShown = 3;
        const std::vector<std::string> values = ValuesAfter(index);
        std::string conditions;
        for (std::size_t i = 0; i < std::min(values.size(), MostShown); ++i) {
            conditions += (i == 0 ? "" : " or ") + left + " = " + values[i];
        }
        return conditions + (values.size() > MostShown ? " or ..." : "");
    }

    // The values in the brackets after a word, or the one without brackets; examples if there is none.
    std::vector<std::string> ValuesAfter(std::size_t index) const {
        std::vector<std::string> values;
        const bool isList = index + 1 < m_words.size() && m_words[index + 1].Is("(");
        for (std::size_t i = index + (isList ? 2 : 1); i < m_words.size() && IsValue(m_words[i]); ++i) {
            values.push_back(m_words[i].m_text);
            if (!isList) {
                break;
            }
        }
        return values.empty() ? std::vector<std::string>{"1", "2"} : values;
    }

    static bool IsValue(const QueryWord& word) {
        return !word.m_isKeyword && word.m_place != QueryWord::None;
    }

    std::string InsteadInSelect(std::size_t index) const {
        const std::string& word = m_words[index].m_lowered;
        const bool isCall = index + 1 < m_words.size() && m_words[index + 1].Is("(");
        if (isCall && IsOneOf(word, {"count", "sum", "avg", "min", "max"})) {
            return "there are no functions; --explain shows the number of rows";
        }
        return word == "as" ? "fields can't have aliases" : "";
    }

    std::string InsteadOfClause(std::size_t index) const {
        const std::string& word = m_words[index].m_lowered;
        if (m_isCondition && IsOneOf(word, {"limit", "offset", "fetch"})) {
            return "find shows the first matching row, and every one with --all";
        }
        if (IsOneOf(word, {"limit", "fetch"})) {
            return "use the option --limit N to show the first N rows of the answer";
        }
        if (word == "offset") {
            return "use the option --offset N to skip the first N rows of the answer";
        }
        if (word == "group") {
            return "rows can't be grouped; 'select distinct' drops duplicates";
        }
        if (word == "having") {
            return "write conditions after where; they apply to single rows";
        }
        if (word == "as") {
            return "tables can't have aliases";
        }
        return IsOneOf(word,
                       {"join", "inner", "left", "right", "outer", "cross", "union", "intersect", "except"})
                   ? "all rows come from one table"
                   : "";
    }

    const Words& m_words;
    bool m_isCondition;
};

// Examines a query that was refused.
class Refusal {
public:
    Refusal(DbDatabase& database, const QueryText& query)
        : m_database(database),
          m_words(query.m_table.empty() ? WordsOfQuery(query.m_text) : WordsOfCondition(query.m_text)),
          m_foreign(m_words, !query.m_table.empty()) {
        if (!query.m_table.empty()) {
            m_tables.push_back(query.m_table);
        }
    }

    std::vector<std::string> Hints() {
        LookAtTables();
        LookAtSelect();
        LookAtConditions();
        LookAtOrder();
        return std::move(m_hints);
    }

private:
    DbTableDescr* FirstTable() const {
        return m_tables.empty() ? nullptr : m_database.GetTableDescr(m_tables.front());
    }

    // Whether the word is foreign; after the first one, the rest of the part can't be interpreted.
    bool TakeForeign(std::size_t index) {
        const std::string hint = m_foreign.HintOn(index);
        if (!hint.empty()) {
            Add(hint);
        }
        return !hint.empty();
    }

    void LookAtTables() {
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            const QueryWord& word = m_words[i];
            if (word.m_part != QueryPart::From || word.m_isKeyword) {
                continue;
            }
            const std::string name = Plain(word);
            if (m_database.IsTable(name)) {
                m_tables.push_back(name);
                continue;
            }
            if (!TakeForeign(i)) {
                SuggestTable(word);
            }
            return;
        }
    }

    void SuggestTable(const QueryWord& word) {
        if (word.m_isText) {
            Add("put names in square brackets, not in quotation marks");
            return;
        }
        Add("table " + Quoted(Plain(word)) + ": " + SuggestTables(m_database, Plain(word)));
    }

    void LookAtSelect() {
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            const QueryWord& word = m_words[i];
            if (word.m_part != QueryPart::Select || word.m_isKeyword || word.m_lowered == "*") {
                continue;
            }
            const DbTableDescr* const descr = TableWithout(word);
            if (descr != nullptr) {
                if (!TakeForeign(i)) {
                    SuggestField(word, *descr);
                }
                return;
            }
        }
    }

    // The first table without such a field.
    const DbTableDescr* TableWithout(const QueryWord& word) const {
        for (const std::string& table : m_tables) {
            const DbTableDescr* const descr = m_database.GetTableDescr(table);
            if (!descr->IsField(word.m_text)) {
                return descr;
            }
        }
        return nullptr;
    }

    void LookAtConditions() {
        const DbTableDescr* const descr = FirstTable();
        std::size_t left = QueryWord::None;
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            const QueryWord& word = m_words[i];
            if (word.m_part != QueryPart::Where || word.m_place == QueryWord::None) {
                continue;
            }
            const bool isField = descr != nullptr && IsFieldOf(*descr, word);
            if ((word.m_place == 1 || !isField) && TakeForeign(i)) {
                if (word.m_place == 0 || m_foreign.ShiftsPlaces(i)) {
                    return;
                }
                left = QueryWord::None;
                continue;
            }
            if (word.m_place == 0) {
                left = isField ? QueryWord::None : i;
            } else if (word.m_place == 2 && !isField && left != QueryWord::None && descr != nullptr) {
                SuggestEither(m_words[left], word, *descr);
                return;
            }
        }
    }

    // Neither side of a condition is a field.
    void SuggestEither(const QueryWord& left, const QueryWord& right, const DbTableDescr& descr) {
        if (LooksLikeName(left)) {
            SuggestField(left, descr);
        } else if (LooksLikeName(right)) {
            SuggestField(right, descr);
        } else {
            Add("one side of a condition must be a field, without quotation marks");
        }
    }

    void LookAtOrder() {
        const DbTableDescr* const descr = FirstTable();
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            const QueryWord& word = m_words[i];
            const bool isName =
                word.m_part == QueryPart::Order && !word.m_isKeyword && !word.Is("asc") && !word.Is("desc");
            if (isName && descr != nullptr && !IsFieldOf(*descr, word)) {
                if (!TakeForeign(i)) {
                    SuggestField(word, *descr);
                }
                return;
            }
        }
    }

    // One more pair of brackets is removed in conditions and orders.
    static bool IsFieldOf(const DbTableDescr& descr, const QueryWord& word) {
        return descr.IsField(WithoutBrackets(word.m_text));
    }

    void SuggestField(const QueryWord& word, const DbTableDescr& descr) {
        if (word.m_isText) {
            Add("put names in square brackets, not in quotation marks");
            return;
        }
        Add("field " + Quoted(Plain(word)) + ": " + SuggestNames(Plain(word), FieldNames(descr), InQuery));
    }

    void Add(const std::string& hint) {
        if (std::find(m_hints.begin(), m_hints.end(), hint) == m_hints.end()) {
            m_hints.push_back(hint);
        }
    }

    DbDatabase& m_database;
    Words m_words;
    ForeignWords m_foreign;
    // The existing tables of the query, up to the first that does not exist.
    std::vector<std::string> m_tables;
    std::vector<std::string> m_hints;
};

bool HasWord(const Words& words, const char* text) {
    return std::any_of(words.begin(), words.end(), [&](const QueryWord& word) { return word.Is(text); });
}

// A hint about a text that does not begin like a query; empty for one that does.
std::string HintOnBeginning(DbDatabase& database, const std::string& text) {
    const Words words = WordsOfQuery(text);
    const bool holdsSelect = Lowered(text).Find("select") >= 0;
    if (words.empty() || words.front().m_isKeyword) {
        return {};
    }
    const QueryWord& first = words.front();
    if (IsOneOf(first.m_lowered, {"insert", "update", "delete", "create", "alter", "drop"})) {
        return "a query can't change a catalog; 'quillet --help' lists the commands that can";
    }
    if (words.size() > 1 && AreSimilar(first.m_lowered, "select")) {
        return "did you mean 'select' instead of " + Quoted(first.m_text) + "?";
    }
    if (holdsSelect || HasWord(words, "from")) {
        return "a query begins with select, not with " + Quoted(first.m_text);
    }
    const std::string name = WithoutBrackets(text).ToUtf8();
    return "table " + Quoted(name) + ": " + SuggestTables(database, name);
}

// The operator that conditions end with; empty if there is none.
std::string LastOperator(const Words& words) {
    std::string last;
    for (const QueryWord& word : words) {
        if (word.m_part == QueryPart::Where) {
            last = word.Is("and") || word.Is("or") || word.Is("not") ? word.m_text : std::string();
        }
    }
    return last;
}

// A warning about a name that matches several fields of a table except for case; empty for any other, and for
// one spelt like the field that is used.
std::string HintOnCase(const DbTableDescr& descr, const QueryWord& word) {
    const std::string name = Plain(word);
    const int taken = descr.GetFieldIndex(name);
    const std::string takenName = taken < 0 ? name : descr.GetField(taken).GetName().ToUtf8();
    std::vector<std::string> fitting;
    for (const std::string& field : FieldNames(descr)) {
        if (CString(field).CompareNoCase(name) == 0) {
            fitting.push_back(field);
        }
    }
    if (fitting.size() < 2 || takenName == name) {
        return {};
    }
    return Quoted(name) + " matches the fields " + JoinQuoted(fitting, "and") + "; " + Quoted(takenName) +
           " is used";
}

bool MayBeField(const QueryWord& word) {
    constexpr std::size_t Operator = 1;
    const bool isOfCondition = word.m_part == QueryPart::Where && word.m_place != QueryWord::None;
    return !word.m_isKeyword && !word.m_isText && word.m_place != Operator &&
           (isOfCondition || word.m_part == QueryPart::Select || word.m_part == QueryPart::Order);
}

// The table in which the fields of a query are looked up; null if there is none.
DbTableDescr* SearchedTable(DbDatabase& database, const QueryText& query, const Words& words) {
    std::string name = query.m_table;
    for (auto word = words.begin(); name.empty() && word != words.end(); ++word) {
        name = word->m_part == QueryPart::From && !word->m_isKeyword ? Plain(*word) : std::string();
    }
    return name.empty() ? nullptr : database.GetTableDescr(name);
}

}  // namespace

std::string HintOnRefusal(DbDatabase& database, const QueryText& query) {
    std::string hint = UnclosedQuoteHint(query.m_text);
    if (hint.empty() && query.m_table.empty()) {
        hint = HintOnBeginning(database, query.m_text);
    }
    std::vector<std::string> hints = {hint};
    if (hint.empty()) {
        hints = Refusal(database, query).Hints();
    }
    std::string all;
    for (const std::string& one : hints) {
        all += "; " + one;
    }
    return all;
}

std::vector<std::string> WarningsOnAnswer(DbDatabase& database, const QueryText& query) {
    std::vector<std::string> warnings;
    const auto warn = [&](const std::string& line) {
        if (!line.empty() && std::find(warnings.begin(), warnings.end(), line) == warnings.end()) {
            warnings.push_back(line);
        }
    };
    warn(UnclosedQuoteHint(query.m_text));
    const Words words = query.m_table.empty() ? WordsOfQuery(query.m_text) : WordsOfCondition(query.m_text);
    const std::string last = LastOperator(words);
    if (!last.empty()) {
        warn("nothing follows " + Quoted(last) + " at the end of the condition");
    }
    if (const DbTableDescr* const descr = SearchedTable(database, query, words)) {
        for (const QueryWord& word : words) {
            warn(MayBeField(word) ? HintOnCase(*descr, word) : std::string());
        }
    }
    return warnings;
}

}  // namespace quillet::tool
