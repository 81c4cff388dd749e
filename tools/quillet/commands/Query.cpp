// Runs a query on a catalog, and explains how it was analysed.
#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "Quillet/query/SqlText.h"
#include "commands/Commands.h"
#include "commands/Printing.h"
#include "commands/QueryHints.h"
#include "input/Catalog.h"

namespace quillet::tool {

namespace {

// An analysed query text.
struct Analysis {
    std::vector<std::string> m_tokens;
    std::vector<std::string> m_conditions;
    std::string m_clause;
    std::string m_postfix;
    // The first table, as written in the query; empty if there is none.
    std::string m_table;
};

std::vector<std::string> Narrow(const std::vector<CString>& texts) {
    std::vector<std::string> narrow(texts.size());
    std::transform(texts.begin(), texts.end(), narrow.begin(),
                   [](const CString& text) { return text.ToUtf8(); });
    return narrow;
}

Analysis Analyze(DbDatabase& database, const std::string& query) {
    CString text(query);
    JoinLines(text);
    parser::QueryAnalysisParams params;
    database.AnalyzeSQL(text, &params);
    Analysis analysis{Narrow(params.tokens), Narrow(params.conditions), params.clause->GetClauseString(),
                      params.clause->GetRPNString(), ""};
    if (!params.tables.empty()) {
        analysis.m_table = params.tables.front().ToUtf8();
    }
    // The lines were shown when the query was answered.
    std::vector<CString> lines;
    database.GetError(lines);
    if (DbTableDescr* const descr = database.GetTableDescr(analysis.m_table)) {
        descr->ClearFilters();
    }
    return analysis;
}

// How conditions are combined: a tree whose leaves are conditions.
class Combination {
public:
    explicit Combination(const Analysis& analysis) {
        auto condition = analysis.m_conditions.begin();
        std::string_view steps = analysis.m_postfix;
        while (m_isComplete && !steps.empty()) {
            const std::string step(steps.substr(0, steps.find(' ')));
            steps.remove_prefix(std::min(step.size() + 1, steps.size()));
            if (step == "exp") {
                Push({*condition++, None, None});
            } else {
                Combine(step);
            }
        }
    }

    // Each operation inside another one in brackets.
    std::string Text() const {
        if (!m_isComplete || m_operands.empty()) {
            return "never true: an operator or a bracket stands alone";
        }
        std::string text;
        // Further operands have no effect. Operations may be nested as deep as there are conditions.
        std::vector<Piece> pieces = {{"", m_operands.back()}};
        while (!pieces.empty()) {
            const Piece piece = pieces.back();
            pieces.pop_back();
            text += piece.m_text;
            if (piece.m_part != None) {
                Open(m_parts[piece.m_part], pieces);
            }
        }
        return text;
    }

private:
    static constexpr std::size_t None = SIZE_MAX;

    // A condition, or an operation with its operands; NOT has no left one.
    struct Part {
        std::string m_text;
        std::size_t m_left;
        std::size_t m_right;
    };
    // The rest to write: a text, followed by a part.
    struct Piece {
        const char* m_text;
        std::size_t m_part;
    };

    void Push(Part part) {
        m_operands.push_back(m_parts.size());
        m_parts.push_back(std::move(part));
    }

    std::size_t Pop() {
        const std::size_t operand = m_operands.back();
        m_operands.pop_back();
        return operand;
    }

    void Combine(const std::string& step) {
        const bool isNot = step == "NOT";
        if (m_operands.size() < (isNot ? 1 : 2) || step == "(" || step == ")") {
            m_isComplete = false;
            return;
        }
        const std::size_t right = Pop();
        const std::size_t left = isNot ? None : Pop();
        Push({(isNot ? "" : " ") + step + " ", left, right});
    }

    // Replaces a part by its pieces, the first one last.
    void Open(const Part& part, std::vector<Piece>& pieces) const {
        if (part.m_right != None) {
            AddOperand(part.m_right, pieces);
        }
        pieces.push_back({part.m_text.c_str(), None});
        if (part.m_left != None) {
            AddOperand(part.m_left, pieces);
        }
    }

    void AddOperand(std::size_t operand, std::vector<Piece>& pieces) const {
        const bool isOperation = m_parts[operand].m_right != None;
        pieces.push_back({isOperation ? ")" : "", None});
        pieces.push_back({isOperation ? "(" : "", operand});
    }

    std::vector<Part> m_parts;
    std::vector<std::size_t> m_operands;
    bool m_isComplete = true;
};

bool IsQuery(DbDatabase& database, const std::string& table) {
    return database.GetTableInfo(table)->GetType() == DbTableInfo::Query;
}

// The kind of the table that holds the answer.
const char* KindOfAnswer(const DbTableInfo& answer) {
    if (answer.GetType() != DbTableInfo::Query) {
        return "the table itself";
    }
    return answer.GetData()->GetRows()->IsBinded() ? "rows of the table" : "copied rows";
}

// What is known of a query, in the order in which it is printed.
class Explanation {
public:
    explicit Explanation(const Settings& settings)
        : m_isForPeople(settings.m_format == Format::Text), m_facts({{"part"}, {"value"}}) {}

    const Listing& Facts() const { return m_facts; }

    void Add(const char* part, Value value) { m_facts.Add({Value::OfText(part), std::move(value)}); }

    // The conditions are meaningful only if rows were searched with them.
    void AddAnalysis(const Analysis& analysis, bool isSearched) {
        AddTokens(analysis.m_tokens);
        for (const std::string& condition : analysis.m_conditions) {
            Add("condition", Value::OfText(condition));
        }
        if (!analysis.m_clause.empty()) {
            Add("clause", Value::OfText(analysis.m_clause));
            Add("postfix", Value::OfText(analysis.m_postfix));
            if (isSearched) {
                Add("grouping", Value::OfText(Combination(analysis).Text()));
            }
        }
    }

private:
    // Programs need each one separately, people read them on one line.
    void AddTokens(const std::vector<std::string>& tokens) {
        std::string line;
        for (const std::string& token : tokens) {
            line += (line.empty() ? "" : " ") + token;
            if (!m_isForPeople) {
                Add("token", Value::OfText(token));
            }
        }
        if (m_isForPeople) {
            Add("tokens", Value::OfText(line));
        }
    }

    bool m_isForPeople;
    RecordListing m_facts;
};

void Explain(const Settings& settings, Catalog& catalog, const std::string& query,
             const QueryResult& result) {
    DbDatabase& database = catalog.Database();
    Explanation explanation(settings);
    std::string source = result.m_table;
    explanation.Add("read as", Value::OfText(result.m_isQuery ? "query" : "name of a table"));
    if (result.m_isQuery) {
        const Analysis analysis = Analyze(database, query);
        explanation.AddAnalysis(analysis, result.m_isAnswered && IsQuery(database, result.m_table));
        source = analysis.m_table;
    }
    if (const DbTableInfo* const info = database.GetTableInfo(source)) {
        explanation.Add("source", Value::OfText(info->GetName().ToUtf8()));
    }
    if (result.m_isAnswered) {
        const Table answer = catalog.FindTable(result.m_table);
        explanation.Add("answer", Value::OfText(KindOfAnswer(*database.GetTableInfo(result.m_table))));
        explanation.Add("rows", Value::OfCount(answer.m_data->size()));
    }
    Print(settings, explanation.Facts());
}

}  // namespace

int Query(const Settings& settings, const QueryRequest& request) {
    Catalog catalog(request.m_file, settings);
    catalog.ReadStructure();
    const QueryResult result = catalog.Query(request.m_query);
    if (request.m_explain) {
        Explain(settings, catalog, request.m_query, result);
    }
    if (!result.m_isAnswered) {
        throw catalog.Failed(result.m_reason + HintOnRefusal(catalog.Database(), {request.m_query}));
    }
    if (!request.m_explain) {
        PrintRows(settings, catalog.FindTable(result.m_table), request.m_rows);
    }
    for (const std::string& warning : WarningsOnAnswer(catalog.Database(), {request.m_query})) {
        Complain("warning: " + catalog.Path() + ": " + warning);
    }
    catalog.WarnOfFaults();
    return Done;
}

}  // namespace quillet::tool
