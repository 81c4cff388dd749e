#include "Quillet/odbc/RowWriting.h"

#include <algorithm>
#include <cstddef>

#include "Quillet/odbc/Diagnostics.h"

namespace quillet::odbc {
namespace {

// Texts and bytes beyond this many are of the long types.
constexpr std::size_t LongestVarying = 255;

}  // namespace

RowWriting::RowWriting(const Handle& connection, const CString& table,
                       const std::vector<SlotBinding>& bindings)
    : m_statement(SQL_HANDLE_STMT, connection), m_parameters(bindings.size()) {
    WideString names;
    WideString marks;
    SQLUSMALLINT number = 0;
    for (std::size_t position = 0; position < bindings.size(); ++position) {
        const SlotBinding& binding = bindings[position];
        if (binding.m_field < 0) {
            continue;
        }
        if (number > 0) {
            names += CString(", ").View();
            marks += CString(", ").View();
        }
        names += (CString("[") + binding.m_name + "]").View();
        marks += CString("?").View();
        m_parameters[position].m_number = ++number;
        // A field whose slot no row names is a NULL of the type.
        Bind(m_parameters[position], SQL_C_DEFAULT, binding.m_sqlType, LongestVarying, nullptr);
    }
    WideString text((CString("INSERT INTO ") + table + " (").View());
    text.append(names).append(CString(") VALUES (").View()).append(marks).append(CString(")").View());
    Check(SQLPrepareW(m_statement.Get(), text.data(), static_cast<SQLINTEGER>(text.size())), m_statement);
}

void RowWriting::Begin() {
    for (Parameter& parameter : m_parameters) {
        parameter.m_length = SQL_NULL_DATA;
    }
}

void RowWriting::Write() {
    const SQLRETURN result = SQLExecute(m_statement.Get());
    if (result != SQL_NO_DATA) {
        Check(result, m_statement);
    }
    SQLFreeStmt(m_statement.Get(), SQL_CLOSE);
}

void RowWriting::Boolean(int position, const CString&, std::int32_t& slot) {
    if (Parameter* parameter = At(position)) {
        parameter->m_bit = slot != 0 ? 1 : 0;
        Bind(*parameter, SQL_C_BIT, SQL_BIT, 1, &parameter->m_bit);
    }
}

void RowWriting::Integer(int position, const CString&, std::int32_t& slot) {
    if (Parameter* parameter = At(position)) {
        parameter->m_integer = slot;
        Bind(*parameter, SQL_C_LONG, SQL_SMALLINT, 5, &parameter->m_integer);
    }
}

void RowWriting::Long(int position, const CString&, std::int32_t& slot) {
    if (Parameter* parameter = At(position)) {
        parameter->m_integer = slot;
        Bind(*parameter, SQL_C_LONG, SQL_INTEGER, 10, &parameter->m_integer);
    }
}

void RowWriting::Single(int position, const CString&, float& slot) {
    if (Parameter* parameter = At(position)) {
        parameter->m_single = slot;
        Bind(*parameter, SQL_C_FLOAT, SQL_REAL, 7, &parameter->m_single);
    }
}

void RowWriting::Double(int position, const CString&, double& slot) {
    if (Parameter* parameter = At(position)) {
        parameter->m_double = slot;
        Bind(*parameter, SQL_C_DOUBLE, SQL_DOUBLE, 15, &parameter->m_double);
    }
}

void RowWriting::Binary(int position, const CString&, CByteArray& slot, int) {
    if (Parameter* parameter = At(position)) {
        parameter->m_bytes = slot;
        const auto size = static_cast<std::size_t>(slot.GetSize());
        parameter->m_length = static_cast<SQLLEN>(size);
        // Bound anew for each row: some drivers take the length of bytes when they are bound.
        parameter->m_bound = {};
        Bind(*parameter, SQL_C_BINARY, size > LongestVarying ? SQL_LONGVARBINARY : SQL_VARBINARY,
             std::max(size, LongestVarying),
             // A null pointer would mean NULL, which an empty value is not.
             size > 0 ? parameter->m_bytes.GetData() : &parameter->m_bit);
    }
}

void RowWriting::Text(int position, const CString&, CString& slot, int) {
    if (Parameter* parameter = At(position)) {
        parameter->m_text.assign(slot.View());
        const std::size_t size = parameter->m_text.size();
        parameter->m_length = static_cast<SQLLEN>(size * sizeof(WCHAR));
        Bind(*parameter, SQL_C_WCHAR, size > LongestVarying ? SQL_WLONGVARCHAR : SQL_WVARCHAR,
             std::max(size, LongestVarying), parameter->m_text.data());
    }
}

RowWriting::Parameter* RowWriting::At(int position) {
    const auto index = static_cast<std::size_t>(position);
    if (index >= m_parameters.size() || m_parameters[index].m_number == 0) {
        return nullptr;
    }
    // The length of a number does not matter, as long as it is none of the special values.
    m_parameters[index].m_length = 0;
    return &m_parameters[index];
}

void RowWriting::Bind(Parameter& parameter, SQLSMALLINT cType, SQLSMALLINT sqlType, std::size_t size,
                      void* data) {
    // A driver may read the length as early as here.
    const Bound bound{cType, sqlType, size, data, parameter.m_length};
    if (bound == parameter.m_bound) {
        return;
    }
    Check(SQLBindParameter(m_statement.Get(), parameter.m_number, SQL_PARAM_INPUT, cType, sqlType, size, 0,
                           data, 0, &parameter.m_length),
          m_statement);
    parameter.m_bound = bound;
}

}  // namespace quillet::odbc
