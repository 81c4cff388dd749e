// Reads a query text.
#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>

#include "Quillet/Db_QueryAnalysisParams.h"
#include "Quillet/query/QueryFields.h"
#include "Quillet/rows/Numbering.h"

class DbTableDescr;

namespace quillet {

class Log;
class QueryBuilder;

// Looks up tables and fields in the database while it reads, and makes the conditions filters of the first
// FROM table's descriptor. Every error leaves a line in the log.
class SqlAnalyzer {
public:
    SqlAnalyzer(QueryBuilder& queries, Log& log, parser::QueryAnalysisParams& params)
        : m_queries(queries), m_log(log), m_params(params) {}

    // True where the text is a query that can be answered.
    bool Analyze(CString sql);

private:
    // False where the token has no place in the query.
    bool Take(WideView text);
    bool TakeKeyword(WideView token);
    void TakeTable(const CString& name);
    void CheckFields(const DbTableDescr& descr);
    void TakeCondition(const CString& token);
    void AddCondition();
    void TakeOrder(const CString& token);
    void Finish();

    // The descriptor of the first FROM table; null, with a line in the log, where there is none, or another
    // one than the record asks for.
    DbTableDescr* SearchedTable();
    void FailTable(const CString& name);
    void FailField(const CString& field);

    QueryBuilder& m_queries;
    Log& m_log;
    parser::QueryAnalysisParams& m_params;
    // The different names of the SELECT list, and how many of its names they were taken from.
    Numbering<CString> m_fields;
    std::size_t m_fieldsTaken = 0;
    // How many of the different names, from the first on, a structure was found to have.
    struct Checked {
        explicit Checked(const DbTableDescr& descr) : m_fields(descr) {}
        QueryFields m_fields;
        std::size_t m_found = 0;
    };
    std::unordered_map<const DbTableDescr*, Checked> m_checked;
    // The fields of the searched table. Dropped when another table is read: the searched one may depend on
    // it.
    std::optional<QueryFields> m_searchedFields;
    bool m_failed = false;
};

}  // namespace quillet
