#include "Quillet/query/SqlAnalyzer.h"

#include <algorithm>
#include <limits>

#include "Quillet/Db_Filter.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/Db_TableInfo.h"
#include "Quillet/query/QueryBuilder.h"
#include "Quillet/query/SqlText.h"
#include "Quillet/registry/Log.h"
#include "Quillet/values/Names.h"

namespace quillet {

namespace {

using Params = parser::QueryAnalysisParams;

constexpr std::size_t PartsOfACondition = 3;

// The number that the leading digits give; 0 without any, and the largest number where they give more.
std::int32_t LeadingNumber(WideView digits) {
    constexpr std::int64_t Largest = std::numeric_limits<std::int32_t>::max();
    std::int64_t number = 0;
    for (const WCHAR digit : digits) {
        if (digit < '0' || digit > '9') {
            break;
        }
        number = std::min(number * 10 + (digit - '0'), Largest);
    }
    return static_cast<std::int32_t>(number);
}

// The parts with blanks between them.
CString Joined(const std::vector<CString>& parts) {
    CString text = parts.front();
    for (std::size_t i = 1; i < parts.size(); ++i) {
        text += " ";
        text += parts[i];
    }
    return text;
}

}  // namespace

bool SqlAnalyzer::Analyze(CString sql) {
    LowerOutsideQuotes(sql);
    m_log.Print(Log::Kind::QueryRead, "SQL Analyze - query '%s'", sql.ToUtf8().c_str());
    const CString text = WithBlanksAroundOperators(sql);
    SqlTokens tokens(text.View());
    while (tokens.Next()) {
        if (Take(tokens.Token())) {
            tokens.Drop();
        }
    }
    Finish();
    m_log.Print(Log::Kind::QueryReport, m_failed ? "SQL Analyze - failed" : "SQL Analyze - ok");
    return !m_failed;
}

bool SqlAnalyzer::Take(WideView text) {
    const bool isKeyword = TakeKeyword(text);
    if (!isKeyword && (m_params.state == Params::Start || m_params.state == Params::ByExpected)) {
        return false;
    }
    const CString token(text);
    if (!isKeyword) {
        switch (m_params.state) {
            case Params::Select:
                m_params.fields.push_back(token);
                break;
            case Params::Top:
                m_params.top = LeadingNumber(text);
                m_params.state = m_params.savedState;
                break;
            case Params::From:
                TakeTable(WithoutBrackets(token));
                break;
            case Params::Where:
                TakeCondition(token);
                break;
            case Params::OrderBy:
                TakeOrder(token);
                break;
            case Params::Start:
            case Params::ByExpected:
                break;
        }
    }
    m_params.tokens.push_back(token);
    return true;
}

bool SqlAnalyzer::TakeKeyword(WideView token) {
    if (token == OLESTR("select")) {
        m_params.state = Params::Select;
    } else if (token == OLESTR("top")) {
        m_params.savedState = m_params.state;
        m_params.state = Params::Top;
    } else if (token == OLESTR("distinct") && m_params.state == Params::Select) {
        m_params.distinct = true;
    } else if (token == OLESTR("from")) {
        m_params.state = Params::From;
    } else if (token == OLESTR("where")) {
        m_params.state = Params::Where;
    } else if (token == OLESTR("order")) {
        m_params.state = Params::ByExpected;
    } else if (token == OLESTR("by") && m_params.state == Params::ByExpected) {
        m_params.state = Params::OrderBy;
    } else {
        return false;
    }
    return true;
}

void SqlAnalyzer::TakeTable(const CString& name) {
    m_params.tables.push_back(name);
    DbTableInfo* const info = m_queries.Find(name);
    if (info == nullptr) {
        FailTable(name);
        return;
    }
    // A query that is answered again may have other fields then.
    m_queries.Refresh(*info);
    m_searchedFields.reset();
    if (m_params.fields.size() != 1 || m_params.fields[0] != "*") {
        CheckFields(*info->GetDescr());
    }
}

// The same names and tables may come many times; each name is looked up once in each structure.
void SqlAnalyzer::CheckFields(const DbTableDescr& descr) {
    for (; m_fieldsTaken < m_params.fields.size(); ++m_fieldsTaken) {
        m_fields.NumberOf(m_params.fields[m_fieldsTaken]);
    }
    const std::vector<CString>& fields = m_fields.Keys();
    Checked& checked = m_checked.try_emplace(&descr, descr).first->second;
    while (checked.m_found < fields.size() && checked.m_fields.Find(fields[checked.m_found]) >= 0) {
        ++checked.m_found;
    }
    if (checked.m_found < fields.size()) {
        FailField(fields[checked.m_found]);
    }
}

void SqlAnalyzer::TakeCondition(const CString& token) {
    clv::clause& clause = *m_params.clause;
    if (token == "and") {
        clause.and_();
    } else if (token == "or") {
        clause.or_();
    } else if (token == "not") {
        clause.not_();
    } else if (token == "(") {
        clause.leftBracket();
    } else if (token == ")") {
        clause.rightBracket();
    } else {
        m_params.parts.push_back(token);
        if (m_params.parts.size() == PartsOfACondition) {
            AddCondition();
        }
    }
}

void SqlAnalyzer::AddCondition() {
    std::vector<CString>& parts = m_params.parts;
    parts.front() = WithoutBrackets(parts.front());
    parts.back() = WithoutBrackets(parts.back());
    if (DbTableDescr* const descr = SearchedTable()) {
        if (!m_searchedFields || !m_searchedFields->AreOf(*descr)) {
            m_searchedFields.emplace(*descr);
        }
        DbFilter* const filter =
            descr->AddFilter(m_searchedFields->Side(parts[0]), parts[1], m_searchedFields->Side(parts[2]));
        if (filter != nullptr) {
            m_params.filters.push_back(filter);
            m_params.clause->expr(filter);
        } else {
            m_log.Add(InvalidConditionEntry(Joined(parts)));
            m_failed = true;
        }
    }
    m_params.conditions.push_back(Joined(parts));
    parts.clear();
}

void SqlAnalyzer::TakeOrder(const CString& token) {
    if (token == "desc") {
        m_params.desc = true;
    } else if (token != "asc") {
        m_params.order.push_back(WithoutBrackets(token));
    }
}

void SqlAnalyzer::Finish() {
    if (!m_params.parts.empty()) {
        m_log.Print(Log::Kind::QueryFault, "SQL Analyze - invalid condintion '%s'",
                    Joined(m_params.parts).ToUtf8().c_str());
        m_failed = true;
    }
    if (m_params.fields.empty() || m_params.tables.empty()) {
        m_log.Print(Log::Kind::QueryFault, "SQL Analyze - check 'SELECT' and/or 'FROM' statement");
        m_failed = true;
    }
}

DbTableDescr* SqlAnalyzer::SearchedTable() {
    const CString name = m_params.tables.empty() ? CString() : m_params.tables.front();
    const DbTableInfo* const info = m_params.tables.empty() ? nullptr : m_queries.Find(name);
    DbTableDescr* const descr = info == nullptr ? nullptr : info->GetDescr();
    if (descr == nullptr || (m_params.searched != nullptr && m_params.searched != descr)) {
        FailTable(name);
        return nullptr;
    }
    return descr;
}

void SqlAnalyzer::FailTable(const CString& name) {
    if (m_params.tables.empty()) {
        m_log.Print(Log::Kind::QueryFault, "SQL Analyze - no tables defined, check 'FROM' statement");
    } else {
        m_log.Add(NoTableEntry(name));
    }
    m_failed = true;
}

void SqlAnalyzer::FailField(const CString& field) {
    m_log.Add(NoFieldEntry(field, m_params.tables.front()));
    m_failed = true;
}

}  // namespace quillet
