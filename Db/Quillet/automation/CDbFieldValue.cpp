#include "Quillet/automation/CDbFieldValue.h"

#include <algorithm>

#include "Quillet/Db_TableDescr.h"

namespace quillet::automation {

namespace {

// Cells hold values and arrays of values, but no objects, which their host would have to keep alive.
bool IsValueOfACell(const VARIANT& value) {
    switch (value.vt & VT_TYPEMASK) {
        case VT_DISPATCH:
        case VT_UNKNOWN:
        case VT_VARIANT:
        case VT_RECORD:
        case VT_ERROR:
            return false;
        default:
            return true;
    }
}

CComVariant CellValueOf(const VARIANT& given) {
    CComVariant value = Dereferenced(given);
    if (!IsValueOfACell(value)) {
        throw MethodFailure{DISP_E_TYPEMISMATCH, "A cell holds no such value"};
    }
    return value;
}

}  // namespace

void CDbFieldValue::Show(const Watch<DbTableRow>& row, std::int64_t position) {
    m_row = {};
    m_field = {};
    m_position = static_cast<uint64>(position);
    const DbTableRow* const shown = row.Get();
    if (shown == nullptr || m_position >= shown->size()) {
        return;
    }
    m_row = row;
    DbTableDescr* const descr = shown->GetDescr();
    if (descr != nullptr && m_position < descr->size()) {
        m_field = Watch<DbFieldDescr>(descr->at(m_position)->LifeToken());
    }
}

DbFieldValue& CDbFieldValue::Cell() {
    DbTableRow& row = *m_row;
    const DbTableDescr* const descr = row.GetDescr();
    if (descr != nullptr && !m_field.IsUnset()) {
        const DbFieldDescr* const field = &*m_field;
        if (m_position >= descr->size() || descr->at(m_position) != field) {
            m_position = static_cast<uint64>(std::find(descr->begin(), descr->end(), field) - descr->begin());
        }
    }
    if (m_position >= row.size()) {
        throw MethodFailure{CO_E_OBJNOTCONNECTED, "The row has no such cell any more"};
    }
    return row.GetField(m_position);
}

HRESULT CDbFieldValue::get_Value(VARIANT* pVal) {
    return Give(pVal, [&]() -> const VARIANT& { return Cell().GetValue(); });
}

HRESULT CDbFieldValue::put_Value(VARIANT newVal) {
    return Do([&] { Cell().SetValue(CellValueOf(GivenValue(newVal))); });
}

HRESULT CDbFieldValue::get_Index(long* pVal) {
    return Give(pVal, [&] { return Cell().GetIndex(); });
}

}  // namespace quillet::automation
