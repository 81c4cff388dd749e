// The value of a column in a row.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Quillet/access/Bytes.h"
#include "Quillet/platform/Text.h"

namespace quillet::access {

// A decimal number: its digits without point as 128 bits, the highest word first, and how many of the digits
// are after the point.
struct Numeric {
    bool m_isNegative = false;
    std::uint8_t m_scale = 0;
    std::array<std::uint32_t, 4> m_words{};

    // With a point, and as many digits after it as the scale says.
    std::string ToText() const;
};

// Texts and bytes are views into the pages or into buffers of whoever read the value, which says how long
// they stay.
struct Value {
    enum eKind {
        Null,
        Boolean,       // m_integer: 0 or 1
        Integer,       // m_integer, whatever the size in the file
        Money,         // m_integer: ten-thousandths
        Single,        // m_real
        Double,        // m_real
        Date,          // m_real: days since 30 December 1899; the fraction is the time, whatever the sign
        ExtendedDate,  // m_integer: days since 1 January of year 1; m_ticks
        Text,          // m_text
        Bytes,         // m_bytes
        Guid,          // m_bytes: 16, its first three numbers in little endian
        Exact,         // m_numeric
        Complex,       // m_integer: what rows of a hidden table refer to
    };

    eKind m_kind = Null;
    std::int64_t m_integer = 0;
    // Since the day began, in units of 100 nanoseconds.
    std::int64_t m_ticks = 0;
    double m_real = 0;
    platform::WideView m_text;
    ByteView m_bytes;
    Numeric m_numeric;
};

}  // namespace quillet::access
