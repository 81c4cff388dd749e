#include "Quillet/automation/CDbHeader.h"

namespace quillet::automation {

HRESULT CDbHeader::GiveText(Field field, BSTR* text) const {
    return Give(text, [&] { return m_row.Text(field); });
}

HRESULT CDbHeader::TakeText(Field field, BSTR text) const {
    return Do([&] { m_row.SetText(field, TextOf(text)); });
}

HRESULT CDbHeader::get_Category(BSTR* pVal) {
    return GiveText(CategoryField, pVal);
}

HRESULT CDbHeader::put_Category(BSTR newVal) {
    return TakeText(CategoryField, newVal);
}

HRESULT CDbHeader::get_Symbol(BSTR* pVal) {
    return GiveText(SymbolField, pVal);
}

HRESULT CDbHeader::put_Symbol(BSTR newVal) {
    return TakeText(SymbolField, newVal);
}

HRESULT CDbHeader::get_Title(BSTR* pVal) {
    return GiveText(TitleField, pVal);
}

HRESULT CDbHeader::put_Title(BSTR newVal) {
    return TakeText(TitleField, newVal);
}

HRESULT CDbHeader::get_CatalogType(BSTR* pVal) {
    return GiveText(CatalogTypeField, pVal);
}

HRESULT CDbHeader::put_CatalogType(BSTR newVal) {
    return TakeText(CatalogTypeField, newVal);
}

HRESULT CDbHeader::get_UnitsType(BSTR* pVal) {
    return GiveText(UnitsTypeField, pVal);
}

HRESULT CDbHeader::put_UnitsType(BSTR newVal) {
    return TakeText(UnitsTypeField, newVal);
}

HRESULT CDbHeader::get_Version(BSTR* pVal) {
    return GiveText(VersionField, pVal);
}

HRESULT CDbHeader::put_Version(BSTR newVal) {
    return TakeText(VersionField, newVal);
}

}  // namespace quillet::automation
