// Plain digits are tried first. Everything else that the rules allow (blanks, groups, currency, brackets,
// exponents, other bases) goes to a reader that collects the significant digits. Both give the same results.
#include "Quillet/platform/posix/NumberText.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace quillet::platform {
namespace {

constexpr bool IsDigit(WCHAR unit) {
    return unit >= u'0' && unit <= u'9';
}

constexpr bool IsSpaceLike(WCHAR unit) {
    return unit == u' ' || unit == 0x00A0 || unit == 0x202F;
}

constexpr bool IsSign(WCHAR unit) {
    return unit == u'+' || unit == u'-';
}

// A decimal number: digits[0 .. count) times ten to the exponent. No digits mean zero.
struct Decimal {
    // No double needs more than 767 digits to be told from its neighbours' midpoints; one more digit stands
    // for all that follow.
    static constexpr int MostDigits = 768;

    std::array<char, MostDigits + 1> digits;
    int count = 0;
    long long exponent = 0;
    bool negative = false;
    // The text was hexadecimal or octal; neither the digits nor the sign are used.
    bool isBits = false;
    std::uint64_t bits = 0;

    // The power of ten below which the value lies.
    long long Magnitude() const { return count + exponent; }
};

class NumberReader {
public:
    NumberReader(WideView text, const NumberSymbols& symbols, Decimal& result)
        : m_text(UpToZero(text)), m_symbols(symbols), m_result(result) {}

    HRESULT Read() {
        ReadAround(m_before, u'(');
        m_result.isBits = At(u'&');
        if (m_result.isBits ? !ReadBits() : !ReadDigits() || !ReadExponent()) {
            return DISP_E_TYPEMISMATCH;
        }
        KeepTail();
        ReadAround(m_after, u')');
        const bool signedTwice = (m_before.plus && m_after.plus) || (m_before.minus && m_after.minus);
        const bool bitsOfMoney = m_result.isBits && (m_before.currency || m_after.currency);
        if (!AtEnd() || signedTwice || m_before.bracket != m_after.bracket || bitsOfMoney) {
            return DISP_E_TYPEMISMATCH;
        }
        m_result.negative = m_before.minus || m_before.bracket || m_after.minus;
        return m_tooManyBits ? DISP_E_OVERFLOW : S_OK;
    }

private:
    // The marks on one side of the digits, each at most once.
    struct Side {
        bool plus = false;
        bool minus = false;
        bool currency = false;
        bool bracket = false;
    };

    bool AtEnd() const { return m_at == m_text.size(); }
    bool At(WCHAR unit) const { return !AtEnd() && m_text[m_at] == unit; }
    bool AtDigit() const { return !AtEnd() && IsDigit(m_text[m_at]); }

    bool SkipBlank() {
        if (AtEnd() || !IsBlank(m_text[m_at])) {
            return false;
        }
        ++m_at;
        return true;
    }

    bool SkipOnce(bool& seen, WideView mark) {
        if (seen || !m_text.substr(m_at).starts_with(mark)) {
            return false;
        }
        seen = true;
        m_at += mark.size();
        return true;
    }

    void ReadAround(Side& side, WCHAR bracket) {
        while (SkipBlank() || SkipOnce(side.plus, u"+") || SkipOnce(side.minus, u"-") ||
               SkipOnce(side.currency, m_symbols.currency) || SkipOnce(side.bracket, WideView(&bracket, 1))) {
        }
    }

    // Group separators may stand anywhere after the first digit. Where the locale uses a kind of space, every
    // kind is accepted.
    bool SkipGroupSeparator() {
        if (AtEnd()) {
            return false;
        }
        const WCHAR unit = m_text[m_at];
        if (unit != m_symbols.group && !(IsSpaceLike(unit) && IsSpaceLike(m_symbols.group))) {
            return false;
        }
        ++m_at;
        return true;
    }

    bool ReadDigits() {
        if (!AtDigit() && !At(m_symbols.decimal)) {
            return false;
        }
        bool any = ReadDigitRun(false);
        if (At(m_symbols.decimal)) {
            ++m_at;
            any = ReadDigitRun(true) || any;
        }
        return any;
    }

    bool ReadDigitRun(bool fraction) {
        bool any = false;
        for (;;) {
            if (AtDigit()) {
                any = true;
                Keep(m_text[m_at++], fraction);
            } else if (!SkipGroupSeparator()) {
                return any;
            }
        }
    }

    void Keep(WCHAR digit, bool fraction) {
        if (m_result.count == 0 && digit == u'0') {
            m_result.exponent -= fraction ? 1 : 0;
        } else if (m_result.count < Decimal::MostDigits) {
            m_result.digits[static_cast<std::size_t>(m_result.count++)] = static_cast<char>(digit);
            m_result.exponent -= fraction ? 1 : 0;
        } else {
            m_result.exponent += fraction ? 0 : 1;
            m_tail = m_tail || digit != u'0';
        }
    }

    // A tail that is not zero only matters where the kept digits end on a midpoint.
    void KeepTail() {
        if (m_tail) {
            m_result.digits[static_cast<std::size_t>(m_result.count++)] = '1';
            --m_result.exponent;
        }
    }

    bool ReadExponent() {
        if (!At(u'e') && !At(u'E')) {
            return true;
        }
        ++m_at;
        const bool negative = At(u'-');
        if (negative || At(u'+')) {
            ++m_at;
        }
        if (!AtDigit()) {
            return false;
        }
        // Far beyond the range of every type, and far from the limits of the arithmetic.
        constexpr long long Largest = 1'000'000'000'000;
        long long value = 0;
        while (AtDigit()) {
            value = std::min(value * 10 + (m_text[m_at++] - u'0'), Largest);
        }
        m_result.exponent += negative ? -value : value;
        return true;
    }

    static int DigitValue(WCHAR unit) {
        if (IsDigit(unit)) {
            return unit - u'0';
        }
        if (unit >= u'a' && unit <= u'f') {
            return unit - u'a' + 10;
        }
        return unit >= u'A' && unit <= u'F' ? unit - u'A' + 10 : 16;
    }

    bool ReadBits() {
        ++m_at;
        const bool hexadecimal = At(u'H') || At(u'h');
        if (!hexadecimal && !At(u'O') && !At(u'o')) {
            return false;
        }
        ++m_at;
        const int shift = hexadecimal ? 4 : 3;
        const std::size_t first = m_at;
        for (; !AtEnd() && DigitValue(m_text[m_at]) < (1 << shift); ++m_at) {
            m_tooManyBits = m_tooManyBits || (m_result.bits >> (64 - shift)) != 0;
            m_result.bits = (m_result.bits << shift) | static_cast<std::uint64_t>(DigitValue(m_text[m_at]));
        }
        return m_at != first;
    }

    const WideView m_text;
    const NumberSymbols& m_symbols;
    Decimal& m_result;
    std::size_t m_at = 0;
    Side m_before;
    Side m_after;
    bool m_tail = false;
    bool m_tooManyBits = false;
};

// A sign, whole digits and, if point is not 0, a fraction, with nothing else around and few enough digits to
// fit. Reading returns false where NumberReader has to look.
struct PlainDecimal {
    static constexpr int MostDigits = 18;

    std::uint64_t digits = 0;
    int fractionDigits = 0;
    bool negative = false;

    bool Read(WideView text, WCHAR point) {
        std::size_t at = 0;
        if (!text.empty() && IsSign(text[0])) {
            negative = text[0] == u'-';
            at = 1;
        }
        if (text.size() - at > MostDigits + 1) {
            return false;
        }
        int count = 0;
        for (; at < text.size() && IsDigit(text[at]); ++at, ++count) {
            digits = digits * 10 + static_cast<std::uint64_t>(text[at] - u'0');
        }
        if (at < text.size() && point != 0 && text[at] == point) {
            for (++at; at < text.size() && IsDigit(text[at]); ++at, ++count, ++fractionDigits) {
                digits = digits * 10 + static_cast<std::uint64_t>(text[at] - u'0');
            }
        }
        return at == text.size() && count > 0 && count <= MostDigits;
    }
};

constexpr std::array<double, PlainDecimal::MostDigits + 1> PowersOfTen = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};

// As many as numbers of 15 digits from 10^-4 on have decimals, and one more.
constexpr std::array<std::uint64_t, 21> PowersOfFive = [] {
    std::array<std::uint64_t, 21> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& entry : powers) {
        entry = power;
        power *= 5;
    }
    return powers;
}();

template <typename Real>
HRESULT NearestReal(const Decimal& decimal, Real& result) {
    if (decimal.isBits) {
        result = static_cast<Real>(static_cast<std::int32_t>(decimal.bits));
        return std::in_range<std::uint32_t>(decimal.bits) ? S_OK : DISP_E_OVERFLOW;
    }
    result = decimal.negative ? Real{-0.0F} : Real{0};
    constexpr long long BeyondEveryReal = 400;
    if (decimal.count == 0 || decimal.Magnitude() < -BeyondEveryReal) {
        return S_OK;
    }
    if (decimal.Magnitude() > BeyondEveryReal) {
        return DISP_E_OVERFLOW;
    }
    constexpr std::size_t ExponentRoom = 8;
    std::array<char, Decimal::MostDigits + 1 + ExponentRoom> text;
    std::memcpy(text.data(), decimal.digits.data(), static_cast<std::size_t>(decimal.count));
    char* end = text.data() + decimal.count;
    *end++ = 'e';
    end = std::to_chars(end, text.data() + text.size(), decimal.exponent).ptr;
    Real magnitude = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, magnitude);
    if (error == std::errc::result_out_of_range) {
        return decimal.Magnitude() > 0 ? DISP_E_OVERFLOW : S_OK;
    }
    if (!std::isfinite(magnitude)) {
        return DISP_E_OVERFLOW;
    }
    result = decimal.negative ? -magnitude : magnitude;
    return S_OK;
}

template <typename Real>
HRESULT ReadReal(WideView text, const Locale& locale, Real& result) {
    Decimal decimal;
    const HRESULT read = NumberReader(text, locale.Numbers(), decimal).Read();
    return FAILED(read) ? read : NearestReal(decimal, result);
}

// Half to even on the decimal digits themselves.
HRESULT RoundToInteger(const Decimal& decimal, std::uint64_t& result) {
    result = 0;
    constexpr long long MostWholeDigits = 20;
    const long long whole = decimal.Magnitude();
    if (decimal.count == 0 || whole < 0) {
        return S_OK;
    }
    if (whole > MostWholeDigits) {
        return DISP_E_OVERFLOW;
    }
    constexpr std::uint64_t Largest = std::numeric_limits<std::uint64_t>::max();
    for (long long at = 0; at < whole; ++at) {
        const auto digit = static_cast<std::uint64_t>(
            at < decimal.count ? decimal.digits[static_cast<std::size_t>(at)] - '0' : 0);
        if (result > (Largest - digit) / 10) {
            return DISP_E_OVERFLOW;
        }
        result = result * 10 + digit;
    }
    if (whole >= decimal.count) {
        return S_OK;
    }
    const char* fraction = decimal.digits.data() + whole;
    const char* end = decimal.digits.data() + decimal.count;
    const bool aboveHalf =
        *fraction > '5' ||
        (*fraction == '5' && std::any_of(fraction + 1, end, [](char digit) { return digit != '0'; }));
    if (aboveHalf || (*fraction == '5' && result % 2 != 0)) {
        if (result == Largest) {
            return DISP_E_OVERFLOW;
        }
        ++result;
    }
    return S_OK;
}

template <typename Integer>
WideView WriteDigits(Integer value, NumberBuffer& buffer) {
    std::array<char, 24> digits;
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    WCHAR* stop = std::copy(digits.data(), const_cast<char*>(end), buffer.data());
    return WideView(buffer.data(), static_cast<std::size_t>(stop - buffer.data()));
}

// A real in decimal: d.ddd times ten to the exponent, without trailing zeros.
struct Scientific {
    std::array<char, 24> digits;
    int count = 0;
    int exponent = 0;
    bool negative = false;

    void Parse(const char* at, const char* end) {
        count = 0;
        negative = *at == '-';
        for (at += negative ? 1 : 0; at != end && *at != 'e'; ++at) {
            if (*at != '.') {
                digits[static_cast<std::size_t>(count++)] = *at;
            }
        }
        while (count > 1 && digits[static_cast<std::size_t>(count - 1)] == '0') {
            --count;
        }
        // from_chars takes no plus sign.
        at += at[1] == '+' ? 2 : 1;
        std::from_chars(at, end, exponent);
    }

    template <typename Real>
    void Set(Real value, int precision) {
        std::array<char, 48> text;
        char* const first = text.data();
        char* const last = text.data() + text.size();
        // The shortest text that reads back is the rounded one as long as the type tells all numbers of that
        // many digits apart. float does not for seven digits, and no type does for subnormal values.
        if (precision <= std::numeric_limits<Real>::digits10 && std::isnormal(value)) {
            Parse(first, std::to_chars(first, last, value, std::chars_format::scientific).ptr);
            if (count <= precision) {
                return;
            }
        }
        Parse(first, std::to_chars(first, last, value, std::chars_format::scientific, precision - 1).ptr);
    }
};

class RealWriter {
public:
    RealWriter(const Scientific& value, WCHAR point, NumberBuffer& buffer)
        : m_value(value), m_point(point), m_buffer(buffer) {}

    WideView Write(int precision) {
        constexpr int LeastFixedExponent = -4;
        if (m_value.negative) {
            Put(u'-');
        }
        if (m_value.exponent < LeastFixedExponent || m_value.exponent >= precision) {
            WriteExponential();
        } else if (m_value.exponent < 0) {
            Put(u'0');
            Put(m_point);
            PutZeros(-m_value.exponent - 1);
            PutDigits(0, m_value.count);
        } else {
            WriteFixed(m_value.exponent + 1);
        }
        return WideView(m_buffer.data(), m_length);
    }

private:
    void Put(WCHAR unit) { m_buffer[m_length++] = unit; }

    void PutZeros(int count) {
        for (int at = 0; at < count; ++at) {
            Put(u'0');
        }
    }

    void PutDigits(int from, int to) {
        for (int at = from; at < to; ++at) {
            Put(static_cast<WCHAR>(m_value.digits[static_cast<std::size_t>(at)]));
        }
    }

    void WriteFixed(int wholeDigits) {
        PutDigits(0, std::min(wholeDigits, m_value.count));
        PutZeros(wholeDigits - m_value.count);
        if (m_value.count > wholeDigits) {
            Put(m_point);
            PutDigits(wholeDigits, m_value.count);
        }
    }

    void WriteExponential() {
        WriteFixed(1);
        Put(u'E');
        Put(m_value.exponent < 0 ? u'-' : u'+');
        const int magnitude = std::abs(m_value.exponent);
        if (magnitude >= 100) {
            Put(static_cast<WCHAR>(u'0' + magnitude / 100));
        }
        Put(static_cast<WCHAR>(u'0' + magnitude / 10 % 10));
        Put(static_cast<WCHAR>(u'0' + magnitude % 10));
    }

    const Scientific& m_value;
    const WCHAR m_point;
    NumberBuffer& m_buffer;
    std::size_t m_length = 0;
};

// The words for infinities and NaNs. The NaN that processors make of 0/0, with the sign bit and no payload,
// has its own.
WideView WordOf(double value) {
    constexpr std::uint64_t Indefinite = 0xFFF8'0000'0000'0000;
    if (std::isinf(value)) {
        return value < 0 ? u"-1.#INF" : u"1.#INF";
    }
    if (std::bit_cast<std::uint64_t>(value) == Indefinite) {
        return u"-1.#IND";
    }
    return std::signbit(value) ? u"-1.#QNAN" : u"1.#QNAN";
}

template <typename Real>
WideView WriteReal(Real value, int precision, WCHAR point, NumberBuffer& buffer) {
    if (!std::isfinite(value)) {
        const WideView word = WordOf(static_cast<double>(value));
        std::replace_copy(word.begin(), word.end(), buffer.begin(), u'.', point);
        return WideView(buffer.data(), word.size());
    }
    ShortDecimal decimal;
    if (ToShortDecimal(static_cast<double>(value), precision, decimal)) {
        const WCHAR* const end = WriteDecimal(value < 0, decimal, WideView(&point, 1), buffer.data());
        return WideView(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
    }
    Scientific scientific;
    scientific.Set(value, precision);
    return RealWriter(scientific, point, buffer).Write(precision);
}

// A double's significand is this product of bits with a power of five, before it is shifted.
__extension__ using WideProduct = unsigned __int128;

// Rounds half to even. The number is at least 10^-4 and less than 10^(precision - 1), so that the product is
// exact, and no whole number.
ShortDecimal RoundToPrecision(double magnitude, int precision) {
    constexpr int FractionBits = std::numeric_limits<double>::digits - 1;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const int binary =
        static_cast<int>(bits >> FractionBits) - (std::numeric_limits<double>::max_exponent - 1);
    constexpr std::uint64_t HiddenBit = std::uint64_t{1} << FractionBits;
    const std::uint64_t significand = (bits & (HiddenBit - 1)) | HiddenBit;
    // 1233 / 2^12 is the logarithm of 2 to the base 10. The number may have one more digit than this gives.
    int decimals = precision - 1 - (binary * 1233 >> 12);
    for (;; --decimals) {
        const WideProduct product =
            WideProduct{significand} * PowersOfFive[static_cast<std::size_t>(decimals)];
        const int shift = FractionBits - binary - decimals;
        auto digits = static_cast<std::uint64_t>(product >> shift);
        if (digits >= WholePowersOfTen[static_cast<std::size_t>(precision)]) {
            continue;
        }
        const std::uint64_t half = std::uint64_t{1} << (shift - 1);
        const std::uint64_t rest = static_cast<std::uint64_t>(product) & (2 * half - 1);
        digits += rest > half || (rest == half && digits % 2 != 0) ? 1U : 0U;
        return {digits, decimals};
    }
}

void DropTrailingZeros(ShortDecimal& decimal) {
    for (const int zeros : {8, 4, 2, 1}) {
        const std::uint64_t power = WholePowersOfTen[static_cast<std::size_t>(zeros)];
        if (decimal.m_decimals >= zeros && decimal.m_digits % power == 0) {
            decimal.m_digits /= power;
            decimal.m_decimals -= zeros;
        }
    }
}

}  // namespace

bool ToShortDecimal(double value, int precision, ShortDecimal& decimal) {
    constexpr double LeastFixed = 1e-4;
    const double magnitude = std::abs(value);
    if (!(magnitude < PowersOfTen[static_cast<std::size_t>(precision - 1)])) {
        return false;
    }
    const auto whole = static_cast<std::int64_t>(magnitude);
    if (static_cast<double>(whole) == magnitude) {
        decimal = {static_cast<std::uint64_t>(whole), 0};
        return true;
    }
    if (magnitude < LeastFixed) {
        return false;
    }
    decimal = RoundToPrecision(magnitude, precision);
    DropTrailingZeros(decimal);
    return true;
}

bool IsBlank(WCHAR unit) {
    constexpr WCHAR FirstBeyondAscii = 0x80;
    return (unit >= u'\t' && unit <= u'\r') || unit == u' ' ||
           (unit >= FirstBeyondAscii && u_isUWhiteSpace(unit));
}

HRESULT ReadInteger(WideView text, const Locale& locale, TextInteger& result) {
    PlainDecimal plain;
    if (plain.Read(text, 0)) {
        result = {plain.digits, plain.negative, false};
        return S_OK;
    }
    Decimal decimal;
    const HRESULT read = NumberReader(text, locale.Numbers(), decimal).Read();
    if (FAILED(read)) {
        return read;
    }
    if (decimal.isBits) {
        result = {decimal.bits, false, true};
        return S_OK;
    }
    result.negative = decimal.negative;
    result.bits = false;
    return RoundToInteger(decimal, result.magnitude);
}

HRESULT ReadDouble(WideView text, const Locale& locale, double& result) {
    // Both operands of the division are exact, so the quotient is the nearest double.
    constexpr std::uint64_t LargestExact = std::uint64_t{1} << std::numeric_limits<double>::digits;
    PlainDecimal plain;
    if (plain.Read(text, locale.Numbers().decimal) && plain.digits <= LargestExact) {
        const double value =
            static_cast<double>(plain.digits) / PowersOfTen[static_cast<std::size_t>(plain.fractionDigits)];
        result = plain.negative ? -value : value;
        return S_OK;
    }
    return ReadReal(text, locale, result);
}

HRESULT ReadFloat(WideView text, const Locale& locale, float& result) {
    // As for doubles, with what a float holds exactly.
    constexpr std::uint64_t LargestExact = std::uint64_t{1} << std::numeric_limits<float>::digits;
    constexpr int MostExactPower = 10;
    PlainDecimal plain;
    if (plain.Read(text, locale.Numbers().decimal) && plain.digits <= LargestExact &&
        plain.fractionDigits <= MostExactPower) {
        const float value = static_cast<float>(plain.digits) /
                            static_cast<float>(PowersOfTen[static_cast<std::size_t>(plain.fractionDigits)]);
        result = plain.negative ? -value : value;
        return S_OK;
    }
    return ReadReal(text, locale, result);
}

WideView WriteInteger(std::int64_t value, NumberBuffer& buffer) {
    return WriteDigits(value, buffer);
}

WideView WriteInteger(std::uint64_t value, NumberBuffer& buffer) {
    return WriteDigits(value, buffer);
}

WideView WriteDouble(double value, WCHAR decimalSeparator, NumberBuffer& buffer) {
    return WriteReal(value, DoubleDigits, decimalSeparator, buffer);
}

WideView WriteFloat(float value, WCHAR decimalSeparator, NumberBuffer& buffer) {
    return WriteReal(value, FloatDigits, decimalSeparator, buffer);
}

}  // namespace quillet::platform
