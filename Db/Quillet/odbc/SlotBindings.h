// Which slot of a row buffer belongs to which field.
#pragma once

#include <vector>

#include "Quillet/odbc/FieldExchange.h"
#include "Quillet/odbc/FieldInfo.h"
#include "Quillet/odbc/Handle.h"

namespace quillet::odbc {

// One for each position, in the order of positions.
struct SlotBinding {
    // Counts from 0; -1 if nothing is bound at the position.
    int m_field = -1;
    // The field's name as in a statement.
    CString m_name;
    // How its value is fetched.
    SQLSMALLINT m_cType = SQL_C_WCHAR;
    // How its value is written.
    SQLSMALLINT m_sqlType = SQL_WVARCHAR;
    // The most bytes or code units of it that are read.
    int m_maximum = 0;
};

// Finds the bindings.
class SlotBindings : public FieldExchange {
public:
    explicit SlotBindings(const std::vector<FieldInfo>& fields) : m_fields(fields) {}

    std::vector<SlotBinding> Take() { return std::move(m_bindings); }

    void Boolean(int position, const CString& name, std::int32_t& slot) override;
    void Integer(int position, const CString& name, std::int32_t& slot) override;
    void Long(int position, const CString& name, std::int32_t& slot) override;
    void Single(int position, const CString& name, float& slot) override;
    void Double(int position, const CString& name, double& slot) override;
    void Binary(int position, const CString& name, CByteArray& slot, int maximum) override;
    void Text(int position, const CString& name, CString& slot, int maximum) override;

private:
    int FieldOf(int position, const CString& name) const;
    void Bind(int position, const CString& name, SQLSMALLINT cType, SQLSMALLINT sqlType, int maximum = 0);

    const std::vector<FieldInfo>& m_fields;
    std::vector<SlotBinding> m_bindings;
};

}  // namespace quillet::odbc
