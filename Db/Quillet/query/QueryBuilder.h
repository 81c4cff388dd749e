// Answers query texts.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "Quillet/Db_QueryAnalysisParams.h"
#include "Quillet/Db_TableInfo.h"

class DbDatabase;
class DbRows;
class DbTableData;
class DbTableDescr;

namespace quillet {

class LazyReader;
class Log;
class Registry;

// Finds the rows that a query asks for, puts them in order, and makes them a table of the database.
class QueryBuilder {
public:
    QueryBuilder(DbDatabase& database, Registry& registry, LazyReader& reader, Log& log)
        : m_database(database), m_registry(registry), m_reader(reader), m_log(log) {}

    // See the members of DbDatabase.
    bool Query(const CString& sql, CString& name);
    bool Analyze(const CString& sql, parser::QueryAnalysisParams& params);
    bool Verify(const CString& sql);

    // The table of the name, or null; its rows may still be unread.
    DbTableInfo* Find(const CString& name);
    // The same with its rows read, or, for a query that is out of date, answered again.
    DbTableInfo* FindInStep(const CString& name);

    // Answers a query again if it is out of date, after the queries that it depends on; no effect for any
    // other entry.
    void Refresh(DbTableInfo& info);
    void RefreshAll();

private:
    class RefreshScope;

    // The entry and the queries that it depends on, down to one that is in m_refreshed; the lowest first.
    std::vector<DbTableInfo*> QueriesUpTo(DbTableInfo& info) const;
    // The lowest of the queries that a query depends on, or the query itself.
    const DbTableInfo& LowestOf(const DbTableInfo& query) const;
    // Whether the rows are those that the query would give now: neither its source has changed since, nor the
    // table below a source that is a query.
    bool IsInStep(const DbTableInfo& query) const;

    // Fills the given query table, or finds the table that answers.
    bool Ask(const CString& sql, DbTableInfo* answer, CString& name);
    static CString NextName();
    void LogCycle(const CString& sql);
    bool FindTable(const CString& text, CString& name);
    bool Answer(const CString& sql, const parser::QueryAnalysisParams& params, DbTableInfo* answer,
                CString& name);
    bool Build(const CString& sql, const parser::QueryAnalysisParams& params, DbTableInfo& source,
               DbTableInfo* answer, const CString& name);
    // found holds visible positions; found and fields are consumed.
    static void Fill(DbTableDescr& toDescr, DbTableData& toData, const parser::QueryAnalysisParams& params,
                     DbTableDescr& descr, DbRows& rows, std::vector<uint64>& fields,
                     std::vector<uint64>& found);
    // The positions of the fields, each once. False, with a line in the log, where a name is no field.
    bool FindFields(const parser::QueryAnalysisParams& params, const std::vector<CString>& names,
                    const DbTableDescr& descr, std::vector<uint64>& fields);
    // Deletes the filters of an analysis.
    void RemoveFilters(const parser::QueryAnalysisParams& params);

    DbDatabase& m_database;
    Registry& m_registry;
    LazyReader& m_reader;
    Log& m_log;
    // The nesting depth of calls.
    std::size_t m_depth = 0;
    // The entries that the outermost call has brought up to date, or tried to, with the lowest query that
    // each depends on; null while it is being tried. With an entry, the queries below it are here too. They
    // are not refreshed again before that call ends, so the structure does not change during an analysis, and
    // a query that can't be answered costs one try.
    std::unordered_map<const DbTableInfo*, const DbTableInfo*> m_refreshed;
};

}  // namespace quillet
