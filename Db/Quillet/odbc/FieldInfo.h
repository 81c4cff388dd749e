// What ODBC says about a field.
#pragma once

#include <cstddef>

#include "Quillet/base/CString.h"

namespace quillet::odbc {

struct FieldInfo {
    CString m_name;
    // As ODBC numbers them: -7 a bit, 4 an integer, 12 a text and so on. A driver's own way to name single
    // precision (a float of four bytes) and bytes (a long text whose type is called binary) is corrected.
    short m_sqlType = 0;
    // Characters, bytes or digits; 0 where the driver does not know.
    std::size_t m_precision = 0;
    short m_scale = 0;
    bool m_isNullable = true;
};

}  // namespace quillet::odbc
