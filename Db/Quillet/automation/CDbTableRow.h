// A row of a table, for automation clients.
#pragma once

#include "Quillet/automation/CDbFieldValue.h"

namespace quillet::automation {

// Shows nothing until Show is called. All cells share one wrapper, which shows the cell requested last.
class CDbTableRow final : public Dispatch<IDbTableRow> {
public:
    explicit CDbTableRow(IUnknown* outer) : Dispatch(outer) {}

    void Show(Watch<DbTableRow> row) { m_row = std::move(row); }

    HRESULT STDMETHODCALLTYPE FieldByIndex(long fieldIdx, IDbFieldValue** pVal) override;
    HRESULT STDMETHODCALLTYPE get_FieldsCount(long* pVal) override;
    HRESULT STDMETHODCALLTYPE FieldByName(BSTR fieldName, IDbFieldValue** pVal) override;

private:
    // The wrapper, showing the cell at a position or nothing.
    CDbFieldValue* CellAt(std::int64_t position);

    Watch<DbTableRow> m_row;
    CComPtr<CDbFieldValue> m_cell{new CDbFieldValue(nullptr)};
};

}  // namespace quillet::automation
