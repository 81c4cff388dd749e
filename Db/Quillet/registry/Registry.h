// Which tables a database has: by name, and by index in the order of creation.
#pragma once

#include <cstddef>
#include <map>
#include <unordered_map>
#include <vector>

#include "Quillet/Db_TableInfo.h"

class DbDatabase;
class DbItem;

namespace quillet {

class Log;

// Owns the structure and the contents of every table. Entries stay at their addresses until they are deleted.
// Whatever creates, renames or deletes does so completely, or throws std::bad_alloc and changes nothing.
class Registry {
public:
    // Ordered by the lowered name.
    using Entries = std::map<CString, DbTableInfo>;

    Registry(DbDatabase& owner, Log& log) : m_owner(owner), m_log(log) {}
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;
    ~Registry() { Clear(); }

    // The only place where tables and queries are created. A null structure or null contents are created too.
    // Null, with a line in the log, if the name is in use; no ownership is taken then.
    DbTableInfo* Create(const CString& name, DbTableInfo::eType type, DbTableDescr* descr, DbTableData* data,
                        const CString& sql, DbTableInfo* related);
    DbTableInfo* Create(const CString& name, DbTableInfo::eType type, const CString& sql,
                        DbTableInfo* related);
    // A query whose text is its name. It does not follow changes of its tables.
    DbTableInfo* CreateJoin(const CString& name, DbTableInfo& first);

    // Deletes the named entry and every entry that depends on it, with structure and contents; later tables
    // move up.
    void DeleteWithRelated(const CString& name);
    // Deletes every query, joins too, and returns how many there were.
    std::size_t DeleteQueries();
    void Clear();
    // See DbDatabase::RenameTable.
    void Rename(const CString& oldName, const CString& newName);

    // Empties a query that will be filled again, from the source that it now depends on. The filters of
    // its structure stay: their users may hold them.
    static void Renew(DbTableInfo& query, DbTableInfo& source);

    DbTableInfo* Find(const CString& name);
    DbTableInfo* Find(const DbTableData* data);
    // The query that has the text and is no join; of several, the one whose lowered name comes first. Null if
    // there is none.
    DbTableInfo* FindQuery(const CString& sql);
    // Whether another table has the same structure or contents.
    bool IsShared(const DbTableInfo& info) const;

    std::size_t Count() const { return m_tables.size(); }
    // The positions must be below Count.
    const CString& NameAt(std::size_t index) const { return m_tables[index].m_name; }
    DbTableDescr* DescrAt(std::size_t index) const { return m_tables[index].m_descr; }
    DbTableData* DataAt(std::size_t index) const { return m_tables[index].m_data; }

    Entries& All() { return m_entries; }
    // The contents of all tables that follow the descriptor, each once.
    std::vector<DbTableData*> DataOf(const DbTableDescr& descr) const;

private:
    struct Table {
        CString m_name;
        CString m_lowered;
        // Null once the table is being deleted.
        DbTableDescr* m_descr = nullptr;
        DbTableData* m_data = nullptr;
        // The table's own entry; null if a rename left it without one.
        DbTableInfo* m_entry = nullptr;
    };
    // How many tables share the contents, and the entry of the only one, if it is known.
    struct Use {
        std::size_t m_tables = 0;
        DbTableInfo* m_entry = nullptr;
    };
    // The queries of one text by their lowered names.
    using Queries = std::map<CString, DbTableInfo*>;

    DbTableInfo* Register(DbTableInfo info);
    void MakeRoomForOne();
    // AddUse counts a new table among the users of its structure and contents. Drop undoes that for a table
    // being deleted, and puts what has no user left on m_doomed.
    void AddUse(DbTableDescr* descr, DbTableData* data);
    void Drop(Table& table);
    // Both remove one user and return whether it was the last.
    bool RemoveUse(DbTableDescr* descr, const DbTableData* follower);
    bool RemoveUse(DbTableData* data);
    std::size_t UsesOf(const DbTableDescr* descr) const;
    std::size_t UsesOf(const DbTableData* data) const;
    void DeleteDoomed();
    void Delete(const std::vector<DbTableInfo*>& doomed);
    // The entry is deleted or renamed, and the table that it was made for may stay.
    void Forget(const DbTableInfo& entry);
    void IndexQueryText(Entries::iterator query);
    void UnindexQueryText(Entries::iterator query);
    std::size_t IndexOf(const DbTableInfo& info) const;
    std::vector<DbTableInfo*> DependentsOf(DbTableInfo& doomed);
    void RenumberFrom(std::size_t index);

    DbDatabase& m_owner;
    Log& m_log;
    // In the order of creation.
    std::vector<Table> m_tables;
    Entries m_entries;
    // The contents that follow each structure, one for each table, in the order of creation.
    std::unordered_map<const DbTableDescr*, std::vector<DbTableData*>> m_followers;
    std::unordered_map<const DbTableData*, Use> m_uses;
    // The queries of each text, except joins.
    std::unordered_map<CString, Queries> m_queries;
    // What is deleted next. There is always room for all structures and contents, so that deleting needs no
    // memory.
    std::vector<DbItem*> m_doomed;
};

}  // namespace quillet
