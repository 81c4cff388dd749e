// One row of a table as a list of named columns.
#pragma once

#include <vector>

#include "Quillet/dbaccess/DBACCESS_COLUMN.h"
#include "Quillet/dbaccess/IDbParamValues.h"

// A vector of the columns in the order of the table, found by position or by name.
//
// Names are case-sensitive and searched in the order of the columns. A column matches its name and what
// follows each of the dots in it: "a.b.c" is found as a.b.c, b.c and c. The getters by name convert nothing:
// each reads its own slot, whatever the code of the column is.
class QUILLET_API DBACCESS_RECORD : public IDbParamValues, public std::vector<DBACCESS_COLUMN> {
public:
    DBACCESS_RECORD() = default;
    DBACCESS_RECORD(const DBACCESS_RECORD& other) = default;
    DBACCESS_RECORD(DBACCESS_RECORD&& other) noexcept = default;
    DBACCESS_RECORD& operator=(const DBACCESS_RECORD& other) = default;
    DBACCESS_RECORD& operator=(DBACCESS_RECORD&& other) noexcept = default;
    ~DBACCESS_RECORD() override;

    // The column at a position, from 0. If there is none, a fresh column that belongs to no record.
    DBACCESS_COLUMN& operator[](int position);
    const DBACCESS_COLUMN& operator[](int position) const;
    DBACCESS_COLUMN& operator[](std::size_t position) { return (*this)[static_cast<int>(position)]; }
    const DBACCESS_COLUMN& operator[](std::size_t position) const {
        return (*this)[static_cast<int>(position)];
    }
    // The column of the name, which is appended if there is none.
    DBACCESS_COLUMN& operator[](const quillet::CString& name);
    DBACCESS_COLUMN& operator[](const WCHAR* name) { return (*this)[quillet::CString(name)]; }

    // The column of the name. If there is none, a column that all records of the process share: what is
    // written to that of the first form is read by the next call of that form that finds no column.
    DBACCESS_COLUMN& find(const quillet::CString& name);
    const DBACCESS_COLUMN& find(const quillet::CString& name) const;
    DBACCESS_COLUMN& find(const WCHAR* name) { return find(quillet::CString(name)); }
    const DBACCESS_COLUMN& find(const WCHAR* name) const { return find(quillet::CString(name)); }
    // The position of the column, from 0; -1 if there is none.
    int findIdx(const quillet::CString& name) const;
    int findIdx(const WCHAR* name) const { return findIdx(quillet::CString(name)); }

    // The slot of 16-bit integers, not that of GetLong.
    long GetInt(const quillet::CString& name) const { return find(name).m_int; }
    long GetLong(const quillet::CString& name) const { return find(name).m_long; }
    double GetDouble(const quillet::CString& name) const { return find(name).m_double; }
    float GetFloat(const quillet::CString& name) const { return find(name).m_float; }
    // The float of the column of the first name, or else of the second; 0 if there is neither.
    float GetFloatEx(const quillet::CString& name, const quillet::CString& fallbackName) const;
    int GetBool(const quillet::CString& name) const { return find(name).m_bool; }
    quillet::CString GetString(const quillet::CString& name) const { return find(name).m_text; }
    // Valid as long as the column.
    const quillet::CByteArray& GetBinary(const quillet::CString& name) const { return find(name).m_binary; }

    using IDbParamValues::GetParam;
    using IDbParamValues::SetParam;
    // Stores a double under the name, in a new last column if there is none of that name.
    IDbParamValues& SetParam(const WCHAR* name, double value) override;
    // The double of the column, whatever its code is. False for an unknown name; value then stays unchanged.
    bool GetParam(const WCHAR* name, double& value) override;

    // Whether the columns of the other are equal to those of this record at the same positions. Columns after
    // those don't count, so a record may equal a shorter one that does not equal it.
    bool operator==(const DBACCESS_RECORD& other) const;
    bool operator!=(const DBACCESS_RECORD& other) const { return !(*this == other); }
    // other == *this.
    bool IsEqual(DBACCESS_RECORD& other) const { return other == *this; }

    // This record becomes a copy of the other.
    void GetData(DBACCESS_RECORD& from) { *this = from; }
    // The other becomes a copy of this record.
    void SetData(DBACCESS_RECORD& to) const { to = *this; }
};
