// The units and the material of a catalog, for automation clients.
#pragma once

#include "Quillet/Db_TableData.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/FirstRow.h"

namespace quillet::automation {

// Shows nothing until it is told what. Each property is one field of the table's first row, as text.
class CDbProperties final : public Dispatch<IDbProperties> {
public:
    explicit CDbProperties(IUnknown* outer) : Dispatch(outer) {}

    // Nothing for null.
    void Show(const DbTableData* data) { m_row.Show(data); }

    HRESULT STDMETHODCALLTYPE get_Units(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Units(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_Material(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Material(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_UnitLong(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_UnitLong(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_UnitSect(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_UnitSect(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_UnitWeight(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_UnitWeight(BSTR newVal) override;

private:
    // Positions of the fields.
    enum Field : uint64 { UnitsField = 0, UnitLongField, UnitSectField, UnitWeightField, MaterialField };

    HRESULT GiveText(Field field, BSTR* text) const;
    HRESULT TakeText(Field field, BSTR text) const;

    FirstRow m_row;
};

}  // namespace quillet::automation
