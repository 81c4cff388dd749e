// The contents of a table, for automation clients.
#pragma once

#include "Quillet/Db_TableData.h"
#include "Quillet/automation/CDbTableRow.h"

namespace quillet::automation {

// Shows nothing until Show is called. Rows that wait to be read are read first. All rows share one wrapper,
// which shows the row requested last.
class CDbTableData final : public Dispatch<IDbTableData> {
public:
    explicit CDbTableData(IUnknown* outer) : Dispatch(outer) {}

    void Show(const DbTableData& data) { m_data = Watch<DbTableData>(data.LifeToken()); }
    // Null once it is gone.
    DbTableData* Shown() const { return m_data.Get(); }

    HRESULT STDMETHODCALLTYPE get_RowsCount(long* pVal) override;
    HRESULT STDMETHODCALLTYPE AddRow(IDbTableRow** pVal) override;
    HRESULT STDMETHODCALLTYPE Row(long rowIdx, IDbTableRow** pVal) override;
    HRESULT STDMETHODCALLTYPE RemoveRow(long rowIndex) override;

private:
    // The wrapper, showing the row at a position or nothing.
    CDbTableRow* RowAt(DbTableData& data, long position);

    Watch<DbTableData> m_data;
    CComPtr<CDbTableRow> m_row{new CDbTableRow(nullptr)};
};

}  // namespace quillet::automation
