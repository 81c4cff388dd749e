// One cell of a record: a named, typed value.
#pragma once

#include <cstdint>

#include "Quillet/base/CByteArray.h"
#include "Quillet/base/CString.h"

namespace quillet {
class CDBVariant;
}

// A slot for each kind of value, and a code that says which of them counts. The slots are independent: an
// assignment sets the code and one slot, and leaves the others and the name as they were. A new column has
// zeros and empty values in all of them.
class QUILLET_API DBACCESS_COLUMN {
public:
    // The codes. No other is ever produced.
    enum eType : std::int32_t {
        None = 0,
        // A boolean, and any int.
        Boolean = 1,
        // 16 bits in the file; the slot has 32.
        Integer = 3,
        Long = 4,
        Float = 6,
        Double = 7,
        Binary = 9,
        Text = 10
    };

    DBACCESS_COLUMN() = default;
    // Null gives the empty name.
    explicit DBACCESS_COLUMN(const WCHAR* name) : m_name(name) {}
    explicit DBACCESS_COLUMN(const quillet::CString& name) : m_name(name) {}

    DBACCESS_COLUMN& operator=(const quillet::CString& text);
    // UTF-8; null gives the empty text.
    DBACCESS_COLUMN& operator=(const char* text) { return *this = quillet::CString(text); }
    // Null gives the empty text.
    DBACCESS_COLUMN& operator=(const WCHAR* text) { return *this = quillet::CString(text); }
    DBACCESS_COLUMN& operator=(const quillet::CByteArray& bytes);
    // Sets the code of a boolean, whatever the number is.
    DBACCESS_COLUMN& operator=(int number);
    // Keeps the lower 32 bits where a long has more. LONG is a long on Windows and an int elsewhere: cast it
    // to long for the same code everywhere.
    DBACCESS_COLUMN& operator=(long number);
    DBACCESS_COLUMN& operator=(float number);
    DBACCESS_COLUMN& operator=(double number);
    DBACCESS_COLUMN& operator=(bool value);
    // A single character is neither a text nor a number.
    template <quillet::SingleCharacter Character>
    DBACCESS_COLUMN& operator=(Character) = delete;

    // Takes a value that ODBC delivered; returns this column. Null becomes the empty text. A date and an
    // unsigned char give the code 0 and change no slot; a binary without an object changes nothing at all.
    DBACCESS_COLUMN& Set(const quillet::CDBVariant& value);

    // Whether the slots of this column's code are equal; the other's code does not count. Never for binaries
    // and columns without a value.
    bool equal(const DBACCESS_COLUMN& other) const;
    // Whether everything but the bytes is equal: every other slot, the code and the name.
    bool operator==(const DBACCESS_COLUMN& other) const;
    bool operator!=(const DBACCESS_COLUMN& other) const { return !(*this == other); }
    // Compares the slots of this column's code, texts by code units; false for binaries, columns without a
    // value and NaNs.
    bool operator<(const DBACCESS_COLUMN& other) const;
    // Neither == nor <: two columns with one value and different names are each greater than the other.
    bool operator>(const DBACCESS_COLUMN& other) const { return !(*this == other) && !(*this < other); }

    // Always 80, whatever the size of an object.
    static long SIZE() { return 80; }

    std::int32_t m_long = 0;
    // Also the value of a named parameter.
    double m_double = 0;
    std::int32_t m_int = 0;
    float m_float = 0;
    quillet::CString m_text;
    // 0 or 1 for a boolean, any number for an int.
    std::int32_t m_bool = 0;
    // One of eType.
    std::int32_t m_type = None;
    quillet::CString m_name;
    quillet::CByteArray m_binary;
};
