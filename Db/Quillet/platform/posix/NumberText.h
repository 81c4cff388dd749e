// Numbers as text in both directions, by the rules of OLE Automation. Private to this port.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "Quillet/platform/DecimalText.h"
#include "Quillet/platform/Text.h"
#include "Quillet/platform/posix/Locale.h"

namespace quillet::platform {

// Room for any number as text: sign, 20 digits of an integer, or 17 digits with point, zeros and exponent.
using NumberBuffer = std::array<WCHAR, 32>;

// White space, which may stand around a number and between the parts of a date.
bool IsBlank(WCHAR unit);

// The text before the first zero unit: a text is read up to there, whatever its length.
inline WideView UpToZero(WideView text) {
    return text.substr(0, text.find(WCHAR{0}));
}

// An integer read from text. Where the text was hexadecimal or octal, magnitude holds the bits of the value.
struct TextInteger {
    std::uint64_t magnitude = 0;
    bool negative = false;
    bool bits = false;
};

// Each reads the whole text. S_OK, DISP_E_TYPEMISMATCH if it is not a number, DISP_E_OVERFLOW if the result
// does not fit. Integers are rounded half to even, reals are the nearest to the exact decimal value. A
// hexadecimal or octal number becomes the real of the 32-bit integer that it stands for.
HRESULT ReadInteger(WideView text, const Locale& locale, TextInteger& result);
HRESULT ReadDouble(WideView text, const Locale& locale, double& result);
HRESULT ReadFloat(WideView text, const Locale& locale, float& result);

// The integer that was read; DISP_E_OVERFLOW if it does not fit the type.
template <typename Integer>
HRESULT ToInteger(const TextInteger& number, Integer& result) {
    using Unsigned = std::make_unsigned_t<Integer>;
    if (number.bits) {
        // A number in hexadecimal or octal is the bits of the result, sign included.
        result = static_cast<Integer>(static_cast<Unsigned>(number.magnitude));
        return std::in_range<Unsigned>(number.magnitude) ? S_OK : DISP_E_OVERFLOW;
    }
    const std::uint64_t limit = static_cast<Unsigned>(std::numeric_limits<Integer>::max()) +
                                std::uint64_t{number.negative && std::is_signed_v<Integer>};
    if (number.negative && std::is_unsigned_v<Integer> && number.magnitude != 0) {
        return DISP_E_OVERFLOW;
    }
    if (number.magnitude > limit) {
        return DISP_E_OVERFLOW;
    }
    const std::uint64_t bits = number.negative ? std::uint64_t{0} - number.magnitude : number.magnitude;
    result = static_cast<Integer>(bits);
    return S_OK;
}

// Each returns a view into the buffer.
WideView WriteInteger(std::int64_t value, NumberBuffer& buffer);
WideView WriteInteger(std::uint64_t value, NumberBuffer& buffer);
// At most DoubleDigits significant digits, without trailing zeros.
constexpr int DoubleDigits = 15;
WideView WriteDouble(double value, WCHAR decimalSeparator, NumberBuffer& buffer);
// At most FloatDigits significant digits, without trailing zeros.
constexpr int FloatDigits = 7;
WideView WriteFloat(float value, WCHAR decimalSeparator, NumberBuffer& buffer);

// The magnitude of a number, rounded to so many digits, where its text has no exponent. False for others, and
// for some large numbers.
bool ToShortDecimal(double value, int precision, ShortDecimal& decimal);

}  // namespace quillet::platform
