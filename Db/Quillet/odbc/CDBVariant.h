// A value as ODBC delivers it: a type number and a value.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "Quillet/base/CByteArray.h"
#include "Quillet/base/CString.h"

namespace quillet {

// A date and a time of day; the fraction counts nanoseconds.
struct DbTimestamp {
    std::int16_t m_year = 0;
    std::uint16_t m_month = 0;
    std::uint16_t m_day = 0;
    std::uint16_t m_hour = 0;
    std::uint16_t m_minute = 0;
    std::uint16_t m_second = 0;
    std::uint32_t m_fraction = 0;

    friend bool operator==(const DbTimestamp&, const DbTimestamp&) = default;
};

// A value type. A string or a binary has an object that holds it, which may be missing. A getter returns a
// value of its own type; for any other type it gives 0, an empty value or null.
class QUILLET_API CDBVariant {
public:
    enum eType : std::uint32_t {
        Null = 0,
        Bool = 1,
        UnsignedChar = 2,
        Short = 3,
        Long = 4,
        Single = 5,
        Double = 6,
        Date = 7,
        String = 8,
        Binary = 9,
        AsciiString = 10,
        WideString = 11
    };

    CDBVariant() = default;
    // The zero of the type: a string or a binary without an object.
    explicit CDBVariant(eType type) : m_type(type) {}

    eType GetType() const { return m_type; }
    bool IsNull() const { return m_type == Null; }

    // Back to null.
    void Clear() { SetZero(Null); }
    // The zero of the type: a string or a binary without an object.
    void SetZero(eType type);
    void SetBool(std::int32_t value) { SetInteger(Bool, value); }
    void SetUnsignedChar(std::uint8_t value) { SetInteger(UnsignedChar, value); }
    void SetShort(std::int16_t value) { SetInteger(Short, value); }
    void SetLong(std::int32_t value) { SetInteger(Long, value); }
    void SetSingle(float value);
    void SetDouble(double value);
    void SetDate(const DbTimestamp& value);
    void SetString(CString value) { SetText(String, std::move(value)); }
    void SetWideString(CString value) { SetText(WideString, std::move(value)); }
    // Text of one byte for each character, taken as UTF-8.
    void SetAsciiString(std::string value);
    void SetBinary(CByteArray value);

    // The integer of a bool, an unsigned char, a short or a long.
    std::int32_t GetInteger() const { return m_integer; }
    float GetSingle() const { return m_single; }
    double GetDouble() const { return m_double; }
    const DbTimestamp& GetDate() const { return m_date; }
    // The object of a string or a wide string.
    const CString* GetString() const;
    const std::string* GetAsciiString() const;
    const CByteArray* GetBinary() const;

private:
    void SetInteger(eType type, std::int32_t value);
    void SetText(eType type, CString value);

    eType m_type = Null;
    bool m_hasObject = false;
    std::int32_t m_integer = 0;
    float m_single = 0;
    double m_double = 0;
    DbTimestamp m_date;
    CString m_text;
    std::string m_ascii;
    CByteArray m_bytes;
};

}  // namespace quillet

#if !defined(QUILLET_NO_GLOBAL_NAMES)
using quillet::CDBVariant;
#endif
