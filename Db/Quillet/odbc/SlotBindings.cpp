#include "Quillet/odbc/SlotBindings.h"

#include <algorithm>
#include <cstddef>

#include "Quillet/odbc/FieldReader.h"

namespace quillet::odbc {
namespace {

bool IsInteger(SQLSMALLINT cType) {
    return cType == SQL_C_UTINYINT || cType == SQL_C_SHORT || cType == SQL_C_LONG;
}

}  // namespace

void SlotBindings::Boolean(int position, const CString& name, std::int32_t&) {
    Bind(position, name, SQL_C_BIT, SQL_BIT);
}

void SlotBindings::Integer(int position, const CString& name, std::int32_t&) {
    Bind(position, name, SQL_C_LONG, SQL_SMALLINT);
}

void SlotBindings::Long(int position, const CString& name, std::int32_t&) {
    Bind(position, name, SQL_C_LONG, SQL_INTEGER);
}

void SlotBindings::Single(int position, const CString& name, float&) {
    Bind(position, name, SQL_C_FLOAT, SQL_REAL);
}

void SlotBindings::Double(int position, const CString& name, double&) {
    Bind(position, name, SQL_C_DOUBLE, SQL_DOUBLE);
}

void SlotBindings::Binary(int position, const CString& name, CByteArray&, int maximum) {
    Bind(position, name, SQL_C_BINARY, SQL_VARBINARY, maximum);
}

void SlotBindings::Text(int position, const CString& name, CString&, int maximum) {
    Bind(position, name, SQL_C_WCHAR, SQL_WVARCHAR, maximum);
}

int SlotBindings::FieldOf(int position, const CString& name) const {
    const auto index = static_cast<std::size_t>(position);
    if (index < m_fields.size() && m_fields[index].m_name.CompareNoCase(name) == 0) {
        return position;
    }
    const auto found = std::find_if(m_fields.begin(), m_fields.end(), [&name](const FieldInfo& field) {
        return field.m_name.CompareNoCase(name) == 0;
    });
    if (found != m_fields.end()) {
        return static_cast<int>(found - m_fields.begin());
    }
    return index < m_fields.size() ? position : -1;
}

void SlotBindings::Bind(int position, const CString& name, SQLSMALLINT cType, SQLSMALLINT sqlType,
                        int maximum) {
    const int field = position < 0 ? -1 : FieldOf(position, name);
    if (field < 0) {
        return;
    }
    const auto index = static_cast<std::size_t>(position);
    if (m_bindings.size() <= index) {
        m_bindings.resize(index + 1);
    }
    const FieldInfo& info = m_fields[static_cast<std::size_t>(field)];
    if (cType == SQL_C_LONG && IsInteger(DefaultCType(info.m_sqlType))) {
        cType = DefaultCType(info.m_sqlType);
    }
    m_bindings[index] = {field, info.m_name, cType, sqlType, maximum};
}

}  // namespace quillet::odbc
