// Plain decimal numbers, read faster than by the general conversions, with the same result.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Quillet/platform/Automation.h"

namespace quillet {

constexpr unsigned MostPlainDigits = 15;
// A number of so many digits and a power of ten up to this one are doubles without rounding, so that one
// division rounds their quotient correctly.
constexpr std::array<double, MostPlainDigits + 1> PowersOfTen = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// The digits at the beginning of a text and their value. The text ends in what is no digit.
inline const char* ReadDigits(const char* text, std::uint64_t& value) {
    for (unsigned digit = 0; (digit = static_cast<unsigned>(static_cast<unsigned char>(*text)) - '0') < 10;
         ++text) {
        value = value * 10 + digit;
    }
    return text;
}

// Reads a number of at most 15 digits, with a minus sign and a decimal point or without. Returns where it
// ends, which is at what is no digit and must exist in the text; null for any other text and for -0.
inline const char* ReadPlainDouble(const char* text, double& number) {
    const bool isNegative = *text == '-';
    text += isNegative ? 1 : 0;
    std::uint64_t value = 0;
    const char* end = ReadDigits(text, value);
    auto digits = end - text;
    std::ptrdiff_t decimals = 0;
    if (*end == '.' && digits > 0) {
        const char* const fraction = end + 1;
        end = ReadDigits(fraction, value);
        decimals = end - fraction;
        digits = decimals == 0 ? 0 : digits + decimals;
    }
    if (digits == 0 || digits > static_cast<std::ptrdiff_t>(MostPlainDigits) || (isNegative && value == 0)) {
        return nullptr;
    }
    const double quotient = static_cast<double>(static_cast<std::int64_t>(value)) /
                            PowersOfTen[static_cast<std::size_t>(decimals)];
    number = isNegative ? -quotient : quotient;
    return end;
}

// Reads a number with any digits before and after a point, and with an exponent or without, by a conversion
// that gives the nearest double. Returns where it ends; null for any other text, and for numbers at the
// limits of doubles.
const char* ReadNearestDouble(const char* text, const char* end, double& number);

// The same as ReadPlainDouble for whole numbers of at most 10 digits.
inline const char* ReadPlainLong(const char* text, LONG& number) {
    constexpr std::ptrdiff_t MostDigits = 10;
    constexpr std::uint64_t Largest = 0x7FFFFFFF;
    const bool isNegative = *text == '-';
    text += isNegative ? 1 : 0;
    std::uint64_t value = 0;
    const char* const end = ReadDigits(text, value);
    if (end == text || end - text > MostDigits || value > Largest) {
        return nullptr;
    }
    number =
        static_cast<LONG>(isNegative ? -static_cast<std::int64_t>(value) : static_cast<std::int64_t>(value));
    return end;
}

}  // namespace quillet
