// The structure of a table, for automation clients.
#pragma once

#include "Quillet/Db_TableDescr.h"
#include "Quillet/automation/CDbFieldDescr.h"

namespace quillet::automation {

// Shows nothing until Show is called. All fields share one wrapper, which shows the field requested last.
class CDbTableDescr final : public Dispatch<IDbTableDescr> {
public:
    explicit CDbTableDescr(IUnknown* outer) : Dispatch(outer) {}

    void Show(const DbTableDescr& descr) { m_descr = Watch<DbTableDescr>(descr.LifeToken()); }
    // Null once it is gone.
    DbTableDescr* Shown() const { return m_descr.Get(); }

    HRESULT STDMETHODCALLTYPE get_FieldsCount(long* pVal) override;
    HRESULT STDMETHODCALLTYPE FieldByIndex(long fieldIdx, IDbFieldDescr** pVal) override;
    HRESULT STDMETHODCALLTYPE FieldByName(BSTR fieldName, IDbFieldDescr** pVal) override;
    HRESULT STDMETHODCALLTYPE CreateField(BSTR fieldName, FieldType Type) override;
    HRESULT STDMETHODCALLTYPE DeleteField(long fieldIdx) override;
    HRESULT STDMETHODCALLTYPE CreateIndex(BSTR Name, BSTR fields) override;

private:
    // The wrapper, showing the field at a position. If there is none, null, and the wrapper shows nothing.
    CDbFieldDescr* FieldAt(DbTableDescr& descr, std::int64_t position);

    Watch<DbTableDescr> m_descr;
    CComPtr<CDbFieldDescr> m_field{new CDbFieldDescr(nullptr)};
};

}  // namespace quillet::automation
