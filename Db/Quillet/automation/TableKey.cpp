#include "Quillet/automation/TableKey.h"

#include "Quillet/automation/MethodFailure.h"

namespace quillet::automation {

namespace {

bool IsNumber(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_I2:
        case VT_I4:
        case VT_I8:
        case VT_INT:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_UI8:
        case VT_UINT:
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_DECIMAL:
            return true;
        default:
            return false;
    }
}

}  // namespace

TableKey::TableKey(const VARIANT& given) : m_value(Dereferenced(given)) {
    if (!IsName() && (!IsNumber(m_value.vt) || FAILED(m_value.ChangeType(VT_I4)))) {
        throw MethodFailure{DISP_E_TYPEMISMATCH, "A table is named by a text or by a number"};
    }
}

}  // namespace quillet::automation
