#include "Quillet/automation/CDbProperties.h"

namespace quillet::automation {

HRESULT CDbProperties::GiveText(Field field, BSTR* text) const {
    return Give(text, [&] { return m_row.Text(field); });
}

HRESULT CDbProperties::TakeText(Field field, BSTR text) const {
    return Do([&] { m_row.SetText(field, TextOf(text)); });
}

HRESULT CDbProperties::get_Units(BSTR* pVal) {
    return GiveText(UnitsField, pVal);
}

HRESULT CDbProperties::put_Units(BSTR newVal) {
    return TakeText(UnitsField, newVal);
}

HRESULT CDbProperties::get_Material(BSTR* pVal) {
    return GiveText(MaterialField, pVal);
}

HRESULT CDbProperties::put_Material(BSTR newVal) {
    return TakeText(MaterialField, newVal);
}

HRESULT CDbProperties::get_UnitLong(BSTR* pVal) {
    return GiveText(UnitLongField, pVal);
}

HRESULT CDbProperties::put_UnitLong(BSTR newVal) {
    return TakeText(UnitLongField, newVal);
}

HRESULT CDbProperties::get_UnitSect(BSTR* pVal) {
    return GiveText(UnitSectField, pVal);
}

HRESULT CDbProperties::put_UnitSect(BSTR newVal) {
    return TakeText(UnitSectField, newVal);
}

HRESULT CDbProperties::get_UnitWeight(BSTR* pVal) {
    return GiveText(UnitWeightField, pVal);
}

HRESULT CDbProperties::put_UnitWeight(BSTR newVal) {
    return TakeText(UnitWeightField, newVal);
}

}  // namespace quillet::automation
