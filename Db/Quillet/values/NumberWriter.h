// Many numbers as text, faster than one at a time, with the same result.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Quillet/platform/DecimalText.h"
#include "Quillet/platform/NumberText.h"

namespace quillet {

// Gives numbers the text that platform::NumberToText gives them, with the decimal separator that was the
// user's when the writer was made. Numbers of few decimals, as dimensions are, need no call of the platform.
class NumberWriter {
public:
    NumberWriter();

    // Each writes no more than platform::MaxNumberText bytes and returns where they end.
    char* Write(double number, char* text) const {
        const double magnitude = std::abs(number);
        // Not for NaN.
        if (magnitude < BeyondWhole) {
            const auto whole = static_cast<std::int64_t>(magnitude);
            if (static_cast<double>(whole) == magnitude) {
                return WriteDecimal(number < 0, {static_cast<std::uint64_t>(whole), 0}, text);
            }
            if (magnitude < BeyondFewDecimals) {
                for (int decimals = 1; decimals <= FewDecimals; ++decimals) {
                    // No double stands for two decimals of 15 digits: if the quotient of two numbers that
                    // doubles hold exactly is the value, it has no other text.
                    const auto power =
                        static_cast<double>(platform::WholePowersOfTen[static_cast<std::size_t>(decimals)]);
                    const auto digits = static_cast<std::int64_t>(magnitude * power + 0.5);
                    if (static_cast<double>(digits) / power == magnitude) {
                        return WriteDecimal(number < 0, {static_cast<std::uint64_t>(digits), decimals}, text);
                    }
                }
            }
        }
        return WriteAny(number, text);
    }
    char* Write(float number, char* text) const { return WriteAny(number, text); }
    char* Write(std::int32_t number, char* text) const {
        const auto magnitude = static_cast<std::uint64_t>(std::abs(std::int64_t{number}));
        return WriteDecimal(number < 0, {magnitude, 0}, text);
    }

private:
    // Above it the text has an exponent.
    static constexpr double BeyondWhole = 1e15;
    // With so many decimals a number has more than 15 digits.
    static constexpr double BeyondFewDecimals = 1e11;
    static constexpr int FewDecimals = 4;

    char* WriteDecimal(bool isNegative, platform::ShortDecimal number, char* text) const {
        return platform::WriteDecimal(isNegative, number, std::string_view(m_separator), text);
    }
    static char* WriteAny(double number, char* text);
    static char* WriteAny(float number, char* text);

    std::string m_separator;
};

}  // namespace quillet
