// Values of the reference model as the library's, and both as text.
#pragma once

#include <string>

#include "support/PlainQuery.h"
#include "support/TestHelpers.h"

namespace quillet::test {

inline CComVariant VariantOf(const PlainValue& value) {
    switch (value.m_type) {
        case 'l':
            return Long(static_cast<LONG>(value.m_number));
        case 'd':
            return value.m_number;
        case 't':
            return CString(value.m_text);
        default:
            return NullVariant();
    }
}

inline std::string Printed(const PlainValue& value) {
    if (value.IsNull()) {
        return "null";
    }
    return value.m_type == 't' ? "'" + value.m_text + "'" : value.m_type + std::to_string(value.m_number);
}

inline std::string Printed(const CComVariant& value) {
    switch (value.vt) {
        case VT_NULL:
            return Printed(PlainValue());
        case VT_I4:
            return Printed(PlainValue::Number('l', value.lVal));
        case VT_R8:
            return Printed(PlainValue::Number('d', value.dblVal));
        case VT_BSTR:
            return Printed(PlainValue::Text(TextOf(value)));
        default:
            return "type " + std::to_string(value.vt);
    }
}

}  // namespace quillet::test
