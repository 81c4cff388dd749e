// The registry's entry for one table or query.
#pragma once

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

class DbTableData;
class DbTableDescr;

namespace quillet {
class Registry;
class QueryBuilder;
}  // namespace quillet

// Owns nothing: structure and contents belong to the database. A copy shares the pointers, which live as long
// as the table is registered in the database.
class QUILLET_API DbTableInfo {
public:
    enum eType : std::int32_t { None = 0, Table = 1, Query = 2 };

    DbTableInfo() = default;
    DbTableInfo(const quillet::CString& name, eType type, uint64 index, const quillet::CString& sql,
                DbTableDescr* descr, DbTableData* data, DbTableInfo* related);

    eType GetType() const { return m_type; }
    // The position in the database's list of tables, from 0.
    uint64 GetIndex() const { return m_index; }
    // The text of a query; empty for a table.
    const quillet::CString& GetSql() const { return m_sql; }
    // As given, not lowered.
    const quillet::CString& GetName() const { return m_name; }
    DbTableDescr* GetDescr() const { return m_descr; }
    DbTableData* GetData() const { return m_data; }
    // The entry that a query was computed from; null for a table.
    DbTableInfo* GetRelated() const { return m_related; }
    // The change stamp of the related entry's data at the moment the query's rows were computed.
    long GetSyncStamp() const { return m_syncStamp; }

    void SetName(const quillet::CString& name) { m_name = name; }
    void SetSyncStamp(long stamp) { m_syncStamp = static_cast<std::int32_t>(stamp); }

    // Whether this is a query computed from the other entry, directly or through other queries.
    bool IsRelatedWith(DbTableInfo* other) const;
    // Whether this entry is the other, shares structure or contents with it, or is a query that depends on
    // such an entry. Entries without structure share it, and so do those without contents: two empty entries
    // depend on each other.
    bool DependsOn(const DbTableInfo& other) const;
    // Whether this is the answer of a join. It holds copies and follows nothing; calling the join again fills
    // it anew.
    bool IsJoin() const { return m_isJoin; }
    // Whether a query's rows are those that its base table would give now; true for anything that is no query
    // over another entry. For a query over a query it is that query's answer: its own rows follow when they
    // are requested.
    bool IsQuerySync() const;
    // Empties structure and contents; both objects stay.
    void Clear();

private:
    friend class quillet::Registry;
    friend class quillet::QueryBuilder;

    // The first entry, from this one down, that depends on no query.
    const DbTableInfo& LowestQuery() const;
    void SetIndex(uint64 index) { m_index = index; }
    void SetRelated(DbTableInfo* related) { m_related = related; }

    eType m_type = None;
    uint64 m_index = 0;
    quillet::CString m_sql;
    quillet::CString m_name;
    DbTableDescr* m_descr = nullptr;
    DbTableData* m_data = nullptr;
    DbTableInfo* m_related = nullptr;
    std::int32_t m_syncStamp = 0;
    bool m_isJoin = false;
};
