// The registry's entry for a table or query, for automation clients.
#pragma once

#include "Quillet/Db_Database.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until it is told what. An entry is that of its table, under whatever name the table stands in
// the database.
class CDbTableInfo final : public Dispatch<IDbTableInfo> {
public:
    explicit CDbTableInfo(IUnknown* outer) : Dispatch(outer) {}

    // Nothing for null.
    void Show(const DbDatabase& database, const DbTableInfo* info);

    HRESULT STDMETHODCALLTYPE get_sql(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE get_Type(TableType* pVal) override;

private:
    // Throws Failure where there is none.
    const DbTableInfo& Entry();

    WatchedDatabase m_database;
    Watch<DbTableData> m_data;
    // The one it had when it was last looked for.
    CString m_name;
};

}  // namespace quillet::automation
