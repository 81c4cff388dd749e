#include "Quillet/Db_TableInfo.h"

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"

DbTableInfo::DbTableInfo(const quillet::CString& name, eType type, uint64 index, const quillet::CString& sql,
                         DbTableDescr* descr, DbTableData* data, DbTableInfo* related)
    : m_type(type),
      m_index(index),
      m_sql(sql),
      m_name(name),
      m_descr(descr),
      m_data(data),
      m_related(related) {
}

bool DbTableInfo::IsRelatedWith(DbTableInfo* other) const {
    for (const DbTableInfo* entry = this; entry != nullptr && entry->m_type == Query;
         entry = entry->m_related) {
        if (entry->m_related == other && other != nullptr) {
            return true;
        }
    }
    return false;
}

bool DbTableInfo::DependsOn(const DbTableInfo& other) const {
    const DbTableInfo* entry = this;
    while (entry->m_descr != other.m_descr && entry->m_data != other.m_data) {
        if (entry->m_type != Query || entry->m_related == nullptr) {
            return false;
        }
        entry = entry->m_related;
    }
    return true;
}

const DbTableInfo& DbTableInfo::LowestQuery() const {
    const DbTableInfo* query = this;
    while (query->m_type == Query && query->m_related != nullptr && query->m_related->m_type == Query &&
           !query->m_related->IsJoin()) {
        query = query->m_related;
    }
    return *query;
}

bool DbTableInfo::IsQuerySync() const {
    const DbTableInfo& query = LowestQuery();
    const DbTableInfo* const base = query.m_type == Query ? query.m_related : nullptr;
    return base == nullptr || base->m_type != Table || base->m_data == nullptr ||
           query.m_syncStamp == base->m_data->LatestStamp();
}

void DbTableInfo::Clear() {
    // Both or none.
    if (m_data != nullptr) {
        m_data->PrepareClear();
    }
    if (m_descr != nullptr) {
        m_descr->Clear();
    }
    if (m_data != nullptr) {
        m_data->Clear();
    }
}
