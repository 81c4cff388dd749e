// The values of one field as the rows go by.
#pragma once

#include <cstddef>
#include <vector>

#include "Quillet/odbc/CDBVariant.h"
#include "Quillet/odbc/FieldInfo.h"
#include "Quillet/odbc/Handle.h"

namespace quillet::odbc {

// The C type in which a field of an SQL type is fetched.
SQLSMALLINT DefaultCType(short sqlType);

class FieldReader {
public:
    // The column counts from 1.
    FieldReader(SQLUSMALLINT column, const FieldInfo& info, SQLSMALLINT cType);

    // Whether no value of the field takes more than a few kilobytes.
    bool IsShort() const { return m_isShort; }
    SQLSMALLINT CType() const { return m_cType; }

    // From now on the value comes with the row.
    void Bind(const Handle& statement);
    // Says that another row was fetched.
    void NextRow() {
        m_isFetched = m_isBound;
        m_value = m_buffer.data();
    }

    // The value in the current row; null for a NULL. A failure of the driver is thrown as DatabaseError, by
    // pointer, and leaves the value null.
    void GetValue(const Handle& statement, CDBVariant& value);

private:
    bool IsCut() const;
    void Fetch(const Handle& statement);
    template <typename Value>
    Value As() const;

    std::vector<char> m_buffer;
    // A value that is longer than the bound buffer.
    std::vector<char> m_longValue;
    // One of the two.
    const char* m_value = nullptr;
    SQLLEN m_length = SQL_NULL_DATA;
    SQLUSMALLINT m_column;
    SQLSMALLINT m_cType;
    bool m_isShort;
    bool m_isBound = false;
    bool m_isFetched = false;
};

}  // namespace quillet::odbc
