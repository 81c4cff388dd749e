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

bool DbTableInfo::IsQuerySync() const {
    if (m_type != Query || m_related == nullptr) {
        return true;
    }
    if (m_related->m_type == Query) {
        return m_related->IsQuerySync();
    }
    return m_related->m_type != Table || m_related->m_data == nullptr ||
           m_syncStamp == m_related->m_data->GetChangeId();
}

void DbTableInfo::Clear() {
    if (m_descr != nullptr) {
        m_descr->Clear();
    }
    if (m_data != nullptr) {
        m_data->Clear();
    }
}
