#include "Quillet/automation/CDbTableInfo.h"

namespace quillet::automation {

void CDbTableInfo::Show(const DbDatabase& database, const DbTableInfo* info) {
    m_data = {};
    m_database = WatchedDatabase(database.LifeToken());
    if (info != nullptr && info->GetData() != nullptr) {
        m_data = Watch<DbTableData>(info->GetData()->LifeToken());
        m_name = info->GetName();
    }
}

const DbTableInfo& CDbTableInfo::Entry() {
    const DbTableData* const data = &*m_data;
    DbDatabase& database = *m_database;
    const DbTableInfo* const named = database.GetTableInfo(m_name);
    if (named != nullptr && named->GetData() == data) {
        return *named;
    }
    const auto count = static_cast<std::size_t>(database.GetTablesCount());
    for (std::size_t i = 0; i < count; ++i) {
        const DbTableInfo* const info = database.GetTableInfo(database.GetTableName(i));
        if (info != nullptr && info->GetData() == data) {
            m_name = info->GetName();
            return *info;
        }
    }
    throw MethodFailure{CO_E_OBJNOTCONNECTED, "The table is not found by a name any more"};
}

HRESULT CDbTableInfo::get_sql(BSTR* pVal) {
    return Give(pVal, [&] { return Entry().GetSql(); });
}

HRESULT CDbTableInfo::get_Type(TableType* pVal) {
    return Give(pVal, [&] { return Entry().GetType(); });
}

}  // namespace quillet::automation
