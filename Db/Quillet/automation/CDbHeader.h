// What kind of catalog a database is, for automation clients.
#pragma once

#include "Quillet/Db_TableData.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/FirstRow.h"

namespace quillet::automation {

// Shows nothing until it is told what. Each property is one field of the table's first row, as text.
class CDbHeader final : public Dispatch<IDbHeader> {
public:
    explicit CDbHeader(IUnknown* outer) : Dispatch(outer) {}

    // Nothing for null.
    void Show(const DbTableData* data) { m_row.Show(data); }

    HRESULT STDMETHODCALLTYPE get_Category(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Category(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_Symbol(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Symbol(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_Title(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Title(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_CatalogType(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_CatalogType(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_UnitsType(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_UnitsType(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_Version(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Version(BSTR newVal) override;

private:
    // Positions of the fields.
    enum Field : uint64 {
        CategoryField = 0,
        SymbolField,
        TitleField,
        CatalogTypeField,
        UnitsTypeField,
        VersionField
    };

    HRESULT GiveText(Field field, BSTR* text) const;
    HRESULT TakeText(Field field, BSTR text) const;

    FirstRow m_row;
};

}  // namespace quillet::automation
