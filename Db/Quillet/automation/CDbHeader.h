// What kind of catalog a database is, for automation clients.
#pragma once

#include "Quillet/automation/FirstRowObject.h"

namespace quillet::automation {

class CDbHeader final : public FirstRowObject<IDbHeader> {
public:
    explicit CDbHeader(IUnknown* outer) : FirstRowObject(outer) {}

    HRESULT STDMETHODCALLTYPE get_Category(BSTR* pVal) override { return GiveText(CategoryField, pVal); }
    HRESULT STDMETHODCALLTYPE put_Category(BSTR newVal) override { return TakeText(CategoryField, newVal); }
    HRESULT STDMETHODCALLTYPE get_Symbol(BSTR* pVal) override { return GiveText(SymbolField, pVal); }
    HRESULT STDMETHODCALLTYPE put_Symbol(BSTR newVal) override { return TakeText(SymbolField, newVal); }
    HRESULT STDMETHODCALLTYPE get_Title(BSTR* pVal) override { return GiveText(TitleField, pVal); }
    HRESULT STDMETHODCALLTYPE put_Title(BSTR newVal) override { return TakeText(TitleField, newVal); }
    HRESULT STDMETHODCALLTYPE get_CatalogType(BSTR* pVal) override {
        return GiveText(CatalogTypeField, pVal);
    }
    HRESULT STDMETHODCALLTYPE put_CatalogType(BSTR newVal) override {
        return TakeText(CatalogTypeField, newVal);
    }
    HRESULT STDMETHODCALLTYPE get_UnitsType(BSTR* pVal) override { return GiveText(UnitsTypeField, pVal); }
    HRESULT STDMETHODCALLTYPE put_UnitsType(BSTR newVal) override { return TakeText(UnitsTypeField, newVal); }
    HRESULT STDMETHODCALLTYPE get_Version(BSTR* pVal) override { return GiveText(VersionField, pVal); }
    HRESULT STDMETHODCALLTYPE put_Version(BSTR newVal) override { return TakeText(VersionField, newVal); }

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
};

}  // namespace quillet::automation
