// Asks a catalog for rows, and shows how the question was read.
#include <algorithm>
#include <sstream>

#include "Catalog.h"
#include "Commands.h"
#include "Printing.h"

namespace quillet::tool {

namespace {

constexpr int Done = 0;

// A query text, taken apart.
struct Analysis {
    std::vector<std::string> m_tokens;
    std::vector<std::string> m_conditions;
    std::string m_clause;
    std::string m_postfix;
    // The first table, as the query writes it; empty where there is none.
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
    text.Replace("\r", " ");
    text.Replace("\n", " ");
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

struct Operand {
    std::string m_text;
    bool m_isOperation;

    std::string InBrackets() const { return m_isOperation ? "(" + m_text + ")" : m_text; }
};

// The conditions as they are combined, each operation inside another one in brackets.
std::string Grouping(const Analysis& analysis) {
    constexpr const char* Incomplete = "never true: an operator or a bracket stands alone";
    std::vector<Operand> operands;
    auto condition = analysis.m_conditions.begin();
    std::istringstream steps(analysis.m_postfix);
    for (std::string step; steps >> step;) {
        if (step == "exp") {
            operands.push_back({*condition++, false});
            continue;
        }
        const std::size_t needed = step == "NOT" ? 1 : 2;
        if (operands.size() < needed || step == "(" || step == ")") {
            return Incomplete;
        }
        std::string operation = step + " ";
        operation += operands.back().InBrackets();
        operands.pop_back();
        if (needed == 2) {
            operation.insert(0, operands.back().InBrackets() + " ");
            operands.pop_back();
        }
        operands.push_back({operation, true});
    }
    // Further operands have no effect.
    return operands.empty() ? Incomplete : operands.back().m_text;
}

// What the table is that holds the answer.
const char* KindOfAnswer(const DbTableInfo& answer) {
    if (answer.GetType() != DbTableInfo::Query) {
        return "the table itself";
    }
    return answer.GetData()->GetRows()->IsBinded() ? "rows of the table" : "copied rows";
}

// What is known of a query, in the order in which it is told.
class Explanation {
public:
    explicit Explanation(const Settings& settings)
        : m_isForPeople(settings.m_format == Format::Text), m_facts({{"part"}, {"value"}}) {}

    const Listing& Facts() const { return m_facts; }

    void Add(const char* part, Value value) { m_facts.Add({Value::OfText(part), std::move(value)}); }

    void AddAnalysis(const Analysis& analysis, bool isAnswered) {
        AddTokens(analysis.m_tokens);
        for (const std::string& condition : analysis.m_conditions) {
            Add("condition", Value::OfText(condition));
        }
        if (!analysis.m_clause.empty()) {
            Add("clause", Value::OfText(analysis.m_clause));
            Add("postfix", Value::OfText(analysis.m_postfix));
            if (isAnswered) {
                Add("grouping", Value::OfText(Grouping(analysis)));
            }
        }
    }

private:
    // A program wants to see where each one ends, people all in one line.
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

void Explain(const Settings& settings, Catalog& catalog, const std::string& query, const Reply& reply) {
    DbDatabase& database = catalog.Database();
    Explanation explanation(settings);
    std::string source = reply.m_table;
    explanation.Add("read as", Value::OfText(reply.m_isOfQuery ? "query" : "name of a table"));
    if (reply.m_isOfQuery) {
        const Analysis analysis = Analyze(database, query);
        explanation.AddAnalysis(analysis, reply.m_isAnswered);
        source = analysis.m_table;
    }
    if (const DbTableInfo* const info = database.GetTableInfo(source)) {
        explanation.Add("source", Value::OfText(info->GetName().ToUtf8()));
    }
    if (reply.m_isAnswered) {
        const Table answer = catalog.FindTable(reply.m_table);
        explanation.Add("answer", Value::OfText(KindOfAnswer(*database.GetTableInfo(reply.m_table))));
        explanation.Add("rows", Value::OfCount(answer.m_data->size()));
    }
    Print(settings, explanation.Facts());
}

}  // namespace

int Query(const Settings& settings, const QueryRequest& request) {
    Catalog catalog(request.m_file, settings);
    catalog.ReadStructure();
    const Reply reply = catalog.Ask(request.m_query);
    if (request.m_explain) {
        Explain(settings, catalog, request.m_query, reply);
    }
    if (!reply.m_isAnswered) {
        throw catalog.Failed(reply.m_complaint);
    }
    if (!request.m_explain) {
        PrintRows(settings, catalog.FindTable(reply.m_table), request.m_rows);
    }
    catalog.WarnOfFaults();
    return Done;
}

}  // namespace quillet::tool
