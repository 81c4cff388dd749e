// Which tables a database has: by name, and by index in the order of creation.
#pragma once

#include <cstddef>
#include <map>
#include <unordered_map>
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
    // A query whose text is its name, and that follows nothing.
    DbTableInfo* CreateJoin(const CString& name, DbTableInfo& first);

    // Deletes every entry that stands on the named one, and that one, with structure and contents; later
    // tables move up.
    void DeleteWithRelated(const CString& name);
    void Clear();
    // See DbDatabase::RenameTable.
    void Rename(const CString& oldName, const CString& newName);

    // Empties a query that is to be filled anew, from the source on which it stands from now on. The filters
    // of its structure stay: whoever made them may hold them.
    static void Renew(DbTableInfo& query, DbTableInfo& source);

    DbTableInfo* Find(const CString& name);
    DbTableInfo* Find(const DbTableData* data);
    // The query that has the text and is no join; of several the one whose lowered name comes first. Null
    // where there is none.
    DbTableInfo* FindQuery(const CString& sql);
    // Whether another table has the same structure or contents.
    bool IsShared(const DbTableInfo& info) const;

    std::size_t Count() const { return m_descrs.size(); }
    // The positions must be below Count.
    const CString& NameAt(std::size_t index) const { return m_descrs[index].first; }
    DbTableDescr* DescrAt(std::size_t index) const { return m_descrs[index].second; }
    DbTableData* DataAt(std::size_t index) const { return m_data[index].second; }

    Entries& All() { return m_entries; }
    // The contents of all tables that follow the descriptor, each once.
    std::vector<DbTableData*> DataOf(const DbTableDescr& descr) const;

private:
    // Structure and contents of a table that comes; one that goes leaves what nobody uses any more.
    void Use(DbTableDescr* descr, DbTableData* data);
    void Drop(std::size_t index);
    // Whether nobody uses the object any more.
    bool DropUse(const void* object);
    std::size_t UsesOf(const void* object) const;
    void AddText(Entries::iterator query);
    void RemoveText(Entries::iterator query);
    std::size_t IndexOf(const DbTableInfo& info) const;
    std::vector<DbTableInfo*> StandingOn(DbTableInfo& doomed);
    void Renumber();

    DbDatabase& m_owner;
    DbLog& m_log;
    // Parallel: the same tables in the same order.
    std::vector<std::pair<CString, DbTableDescr*>> m_descrs;
    std::vector<std::pair<CString, DbTableData*>> m_data;
    Entries m_entries;
    // How many tables use each structure and each contents.
    std::unordered_map<const void*, std::size_t> m_uses;
    // The contents that follow each structure, one for each table, in the order of creation.
    std::unordered_map<const DbTableDescr*, std::vector<DbTableData*>> m_followers;
    // The queries of each text, but joins, by their lowered names.
    std::unordered_map<CString, std::map<CString, DbTableInfo*>> m_queries;
};

}  // namespace quillet
