// Answers query texts.
#pragma once

#include <cstddef>
#include <unordered_set>
#include <vector>

#include "Quillet/Db_QueryAnalysisParams.h"
#include "Quillet/Db_TableInfo.h"

class DbDatabase;

namespace quillet {

class DbLazyReader;
class DbLog;
class DbRegistry;

// Finds the rows that a query asks for, puts them in order, and makes them a table of the database.
class QueryBuilder {
public:
    QueryBuilder(DbDatabase& database, DbRegistry& registry, DbLazyReader& reader, DbLog& log)
        : m_database(database), m_registry(registry), m_reader(reader), m_log(log) {}

    // See the members of DbDatabase.
    bool Query(const CString& sql, CString& name);
    bool Analyze(const CString& sql, parser::QueryAnalysisParams& params);
    bool Verify(const CString& sql);

    // Answers a query again that is out of step with what it stands on, and before it the queries that it
    // stands on; nothing for any other entry.
    void Refresh(DbTableInfo& info);
    void RefreshAll();

private:
    class Call;

    // The queries that the entry stands on and the entry itself, the lowest first.
    static std::vector<DbTableInfo*> QueriesUpTo(DbTableInfo& info);

    // Fills the given query table, or finds out which table answers.
    bool Ask(const CString& sql, DbTableInfo* answer, CString& name);
    static CString NextName();
    void LogCycle(const CString& sql);
    bool FindTable(const CString& text, CString& name);
    // The query table that was made for the text; null where there is none.
    DbTableInfo* FindAnswer(const CString& sql);
    bool Answer(const CString& sql, const parser::QueryAnalysisParams& params, DbTableInfo* answer,
                CString& name);
    bool Build(const CString& sql, const parser::QueryAnalysisParams& params, DbTableInfo& source,
               DbTableInfo* answer, const CString& name);
    // False, with a line in the log, where a name is no field.
    bool FindFields(const parser::QueryAnalysisParams& params, const std::vector<CString>& names,
                    const DbTableDescr& descr, std::vector<uint64>& fields);
    // Deletes the filters of an analysis.
    void RemoveFilters(const parser::QueryAnalysisParams& params);

    DbDatabase& m_database;
    DbRegistry& m_registry;
    DbLazyReader& m_reader;
    DbLog& m_log;
    // How many calls stand in each other.
    std::size_t m_depth = 0;
    // What the outermost call has brought up to date, or tried to. It stays as it is until that call is over:
    // neither an analysis loses its filters, nor does a query that can't be answered cost more than one try.
    std::unordered_set<const DbTableInfo*> m_refreshed;
};

}  // namespace quillet
