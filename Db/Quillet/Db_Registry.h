// Which tables a database has: by name, and by index in the order of creation.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "Quillet/Db_TableInfo.h"

class DbDatabase;

namespace quillet {

class DbLog;

// Owns the structure and the contents of every table. Entries stay where they are until they are deleted.
class DbRegistry {
public:
    // Ordered by the lowered name.
    using Entries = std::map<CString, DbTableInfo>;

    DbRegistry(DbDatabase& owner, DbLog& log) : m_owner(owner), m_log(log) {}
    DbRegistry(const DbRegistry&) = delete;
    DbRegistry& operator=(const DbRegistry&) = delete;
    ~DbRegistry() { Clear(); }

    // The one place where tables and queries come into being. Null, with a line in the log, where the name is
    // taken; nothing is taken over then. A null structure or null contents are made.
    DbTableInfo* Create(const CString& name, DbTableInfo::eType type, DbTableDescr* descr, DbTableData* data,
                        const CString& sql, DbTableInfo* related);
    DbTableInfo* Create(const CString& name, DbTableInfo::eType type, const CString& sql,
                        DbTableInfo* related);

    // Deletes the entry's structure and contents and the entry; later tables move up.
    void Delete(DbTableInfo* info);
    // Deletes every entry that stands on the named one, then that one.
    void DeleteWithRelated(const CString& name);
    void Clear();
    // See DbDatabase::RenameTable.
    void Rename(const CString& oldName, const CString& newName);

    // From now on the query stands on the other entry.
    void Relate(DbTableInfo& query, DbTableInfo& source) { query.SetRelated(&source); }

    DbTableInfo* Find(const CString& name);
    DbTableInfo* Find(const DbTableData* data);

    std::size_t Count() const { return m_descrs.size(); }
    // The positions must be below Count.
    const CString& NameAt(std::size_t index) const { return m_descrs[index].first; }
    DbTableDescr* DescrAt(std::size_t index) const { return m_descrs[index].second; }
    DbTableData* DataAt(std::size_t index) const { return m_data[index].second; }

    Entries& All() { return m_entries; }
    // The contents of all tables that follow the descriptor, each once.
    std::vector<DbTableData*> DataOf(const DbTableDescr& descr) const;

private:
    void Renumber();

    DbDatabase& m_owner;
    DbLog& m_log;
    // Parallel: the same tables in the same order.
    std::vector<std::pair<CString, DbTableDescr*>> m_descrs;
    std::vector<std::pair<CString, DbTableData*>> m_data;
    Entries m_entries;
};

}  // namespace quillet
