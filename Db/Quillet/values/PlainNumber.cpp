#include "Quillet/values/PlainNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace quillet {

const char* ReadNearestDouble(const char* text, const char* end, double& number) {
    constexpr double Smallest = 1e-280;
    constexpr double Largest = 1e280;
    const auto isDigit = [](char unit) { return unit >= '0' && unit <= '9'; };
    const char* const digits = text + (text != end && *text == '-' ? 1 : 0);
    if (digits == end || !isDigit(*digits)) {
        return nullptr;
    }
    double value = 0;
    const std::from_chars_result result = std::from_chars(text, end, value);
    const double size = std::fabs(value);
    if (result.ec != std::errc() || size < Smallest || size > Largest) {
        return nullptr;
    }
    const char* const point = std::find(digits, result.ptr, '.');
    if (point != result.ptr && (point + 1 == result.ptr || !isDigit(point[1]))) {
        return nullptr;
    }
    number = value;
    return result.ptr;
}

}  // namespace quillet
