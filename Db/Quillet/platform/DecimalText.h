// Decimal numbers as text.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace quillet::platform {

// digits / 10^decimals. The last digit of a fraction is not zero.
struct ShortDecimal {
    std::uint64_t m_digits = 0;
    int m_decimals = 0;
};

constexpr std::array<std::uint64_t, 20> WholePowersOfTen = [] {
    std::array<std::uint64_t, 20> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

// The number of decimal digits, 1 for zero.
inline int CountDigits(std::uint64_t number) {
    // 1233 / 2^12 is the logarithm of 2 to the base 10.
    const int least = static_cast<int>(std::bit_width(number | 1)) * 1233 >> 12;
    return least + (number >= WholePowersOfTen[static_cast<std::size_t>(least)] ? 1 : 0) +
           (number == 0 ? 1 : 0);
}

constexpr std::array<char, 200> PairsOfDigits = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < pairs.size() / 2; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Writes so many of the last digits of a number and takes them off it.
template <typename Unit>
void WriteLastDigits(std::uint64_t& number, int count, Unit* text) {
    for (; count >= 2; count -= 2) {
        const std::size_t pair = 2 * static_cast<std::size_t>(number % 100);
        number /= 100;
        text[count - 2] = static_cast<Unit>(PairsOfDigits[pair]);
        text[count - 1] = static_cast<Unit>(PairsOfDigits[pair + 1]);
    }
    if (count == 1) {
        *text = static_cast<Unit>('0' + number % 10);
        number /= 10;
    }
}

// The last eight decimal digits of a number, one in each byte, the first one in the lowest.
inline std::uint64_t EightDigits(std::uint64_t number) {
    // Two numbers of four digits, four of two, and eight of one, side by side. The factors are those of 1 /
    // 100 and 1 / 10 with as many bits as these need.
    const std::uint64_t fours = number / 10000 | (number % 10000) << 32;
    const std::uint64_t hundreds = (fours * 10486) >> 20 & 0x0000007F'0000007F;
    const std::uint64_t twos = hundreds | (fours - 100 * hundreds) << 16;
    const std::uint64_t tens = (twos * 103) >> 10 & 0x000F000F'000F000F;
    return tens | (twos - 10 * tens) << 8;
}

// The same as WriteDecimal for up to eight digits and seven decimals, without a branch for each digit. Writes
// eight bytes after the number too.
inline char* WriteShortDecimal(ShortDecimal number, std::string_view separator, char* text) {
    constexpr std::uint64_t Zeros = 0x30303030'30303030;
    constexpr int Most = 8;
    std::uint64_t digits = EightDigits(number.m_digits);
    // A digit before the separator stays.
    const int leading = std::countr_zero(digits | std::uint64_t{1} << 63) / 8;
    const int dropped = std::min(leading, Most - 1 - number.m_decimals);
    digits = (digits + Zeros) >> (8 * dropped);
    std::memcpy(text, &digits, sizeof digits);
    if (number.m_decimals == 0) {
        return text + Most - dropped;
    }
    const int whole = Most - dropped - number.m_decimals;
    digits >>= 8 * whole;
    text += whole;
    for (const char unit : separator) {
        *text++ = unit;
    }
    std::memcpy(text, &digits, sizeof digits);
    return text + number.m_decimals;
}

// Writes the number and returns where it ends. There must be room for sixteen units more.
template <typename Unit>
Unit* WriteDecimal(bool isNegative, ShortDecimal number, std::basic_string_view<Unit> separator, Unit* text) {
    if (isNegative) {
        *text++ = Unit('-');
    }
    if constexpr (std::is_same_v<Unit, char> && std::endian::native == std::endian::little) {
        if (number.m_digits < WholePowersOfTen[8] && number.m_decimals < 8) {
            return WriteShortDecimal(number, separator, text);
        }
    }
    const int digits = CountDigits(number.m_digits);
    const int whole = digits > number.m_decimals ? digits - number.m_decimals : 1;
    Unit* end = text + whole;
    if (number.m_decimals > 0) {
        for (const Unit unit : separator) {
            *end++ = unit;
        }
        WriteLastDigits(number.m_digits, number.m_decimals, end);
        end += number.m_decimals;
    }
    WriteLastDigits(number.m_digits, whole, text);
    return end;
}

}  // namespace quillet::platform
