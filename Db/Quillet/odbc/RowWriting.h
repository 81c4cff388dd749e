// Adds rows to a table from the slots of a row buffer.
#pragma once

#include <memory>
#include <vector>

#include "Quillet/odbc/FieldExchange.h"
#include "Quillet/odbc/Handle.h"
#include "Quillet/odbc/SlotBindings.h"

namespace quillet::odbc {

// One prepared statement for all rows. A row is what the slots gave since Begin; a field whose slot was not
// named is a NULL.
class RowWriting : public FieldExchange {
public:
    // The table's name is as in a statement, and at least one binding must have a field.
    RowWriting(const Handle& connection, const CString& table, const std::vector<SlotBinding>& bindings);

    void Begin();
    void Write();

    void Boolean(int position, const CString& name, std::int32_t& slot) override;
    void Integer(int position, const CString& name, std::int32_t& slot) override;
    void Long(int position, const CString& name, std::int32_t& slot) override;
    void Single(int position, const CString& name, float& slot) override;
    void Double(int position, const CString& name, double& slot) override;
    void Binary(int position, const CString& name, CByteArray& slot, int maximum) override;
    void Text(int position, const CString& name, CString& slot, int maximum) override;

private:
    // What the driver was told about a value.
    struct Bound {
        SQLSMALLINT m_cType = 0;
        SQLSMALLINT m_sqlType = 0;
        std::size_t m_size = 0;
        void* m_data = nullptr;
        SQLLEN m_length = 0;

        friend bool operator==(const Bound&, const Bound&) = default;
    };

    // One value of the row. The driver reads it when the statement runs.
    struct Parameter {
        // Counts from 1; 0 if no field is bound at the position.
        SQLUSMALLINT m_number = 0;
        Bound m_bound;
        SQLLEN m_length = SQL_NULL_DATA;
        union {
            SQLCHAR m_bit;
            SQLINTEGER m_integer;
            SQLREAL m_single;
            SQLDOUBLE m_double = 0;
        };
        WideString m_text;
        CByteArray m_bytes;
    };

    // Null if no field is bound at the position.
    Parameter* At(int position);
    void Bind(Parameter& parameter, SQLSMALLINT cType, SQLSMALLINT sqlType, std::size_t size, void* data);

    Handle m_statement;
    std::vector<Parameter> m_parameters;
};

}  // namespace quillet::odbc
