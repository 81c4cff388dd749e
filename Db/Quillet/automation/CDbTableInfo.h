// The registry's entry for a table or query, for automation clients.
#pragma once

#include "Quillet/Db_Database.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until Show is called. It shows the entry of its table, whatever name the table has in the
// database.
class CDbTableInfo final : public Dispatch<IDbTableInfo> {
public:
    explicit CDbTableInfo(IUnknown* outer) : Dispatch(outer) {}

    // Null shows nothing.
    void Show(const DbDatabase& database, const DbTableInfo* info);

    HRESULT STDMETHODCALLTYPE get_sql(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE get_Type(TableType* pVal) override;

private:
    // Throws MethodFailure if there is none.
    const DbTableInfo& Entry();

    WatchedDatabase m_database;
    Watch<DbTableData> m_data;
    // The name it had when it was last looked up.
    CString m_name;
};

}  // namespace quillet::automation
