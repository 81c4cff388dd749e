// Decimal numbers as text.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

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

// Writes the number and returns where it ends.
template <typename Unit>
Unit* WriteDecimal(bool isNegative, ShortDecimal number, std::basic_string_view<Unit> separator, Unit* text) {
    if (isNegative) {
        *text++ = Unit('-');
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
