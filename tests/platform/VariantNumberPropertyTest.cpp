// Random numbers and texts against the C library and a plain reader. Wine must give the same results in the
// domain in which it is exact, and elsewhere the same except for the last places:
// - Text of at most 15 digits, the last of which is between the 10th place before and the 10th place after
//   the decimal point, becomes the nearest real. Wine may be off if there are more digits, or if the exponent
//   is larger.
// - A finite number becomes the nearest text of 15 digits (7 for a float). Of two equally near ones Wine
//   takes the one farther from zero.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include "Quillet/platform/Automation.h"
#include "support/Seed.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

// Wine takes its time.
const int Rounds = IsWine() ? 20000 : 200000;
constexpr int DoubleDigits = 15;
constexpr int FloatDigits = 7;
constexpr int LargestPlace = 10;

VARIANT VariantOf(double value) {
    VARIANT variant = MakeVariant(R8(0));
    variant.dblVal = value;
    return variant;
}

VARIANT VariantOf(float value) {
    VARIANT variant = MakeVariant(R4(0));
    variant.fltVal = value;
    return variant;
}

std::string TextOf(VARIANT value) {
    ScopedVariant target;
    EXPECT_EQ(VariantChangeTypeEx(&target, &value, English, 0, VT_BSTR), S_OK);
    return std::string(target->bstrVal, target->bstrVal + SysStringLen(target->bstrVal));
}

HRESULT Read(const std::string& text, VARTYPE type, VARIANT& result) {
    const std::basic_string<OLECHAR> wide(text.begin(), text.end());
    ScopedVariant source(Text(wide.c_str()));
    VariantInit(&result);
    return VariantChangeTypeEx(&result, &source, English, 0, type);
}

std::string Printed(double value, int digits) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*G", digits, value);
    return value == 0 ? "0" : buffer;
}

// Whether the value is exactly half way between two decimals with that number of digits.
bool IsHalfWay(double value, int digits) {
    constexpr int Decimals = 50;
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "%.*E", Decimals, std::abs(value));
    // The digits after the last one that is kept; the decimal point follows the first digit.
    const std::string rest = std::string(buffer).substr(static_cast<std::size_t>(digits) + 1,
                                                        static_cast<std::size_t>(Decimals + 1 - digits));
    return rest.front() == '5' && rest.find_first_not_of('0', 1) == std::string::npos;
}

// Whether the number is the right one for the text; Wine may be off in the last places, the more the smaller
// the number is.
template <typename Real>
bool IsRead(Real read, Real expected) {
    if (!IsWine()) {
        return read == expected;
    }
    constexpr Real LastPlaces = 8;
    const Real most = LastPlaces * std::max(std::abs(expected) * std::numeric_limits<Real>::epsilon(),
                                            std::numeric_limits<Real>::denorm_min());
    return std::abs(read - expected) <= most;
}

class VariantNumberProperty : public testing::Test {
protected:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    char Digit(int least) { return static_cast<char>('0' + least + Below(10 - least)); }

    // Neither the first nor the last digit is zero.
    std::string Digits(int count) {
        std::string digits;
        for (int at = 0; at < count; ++at) {
            digits += Digit(at == 0 || at == count - 1 ? 1 : 0);
        }
        return digits;
    }

    // A decimal in the exact domain, with or without an exponent.
    std::string Decimal(int mostDigits) {
        std::string text = Digits(1 + Below(mostDigits));
        const int place = Below(2 * LargestPlace + 1) - LargestPlace;
        if (place > 0 || Below(4) == 0) {
            text += (Below(2) == 0 ? "E" : "e") + std::to_string(place);
        } else if (place < 0) {
            const auto fraction = static_cast<std::size_t>(-place);
            if (text.size() <= fraction) {
                text.insert(0, fraction + 1 - text.size(), '0');
            }
            text.insert(text.size() - fraction, ".");
        }
        return (Below(2) == 0 ? "-" : "") + text;
    }

    std::string AnyDigits(int most) {
        std::string digits;
        for (int left = Below(most + 1); left > 0; --left) {
            digits += Digit(0);
        }
        return digits;
    }

    // A plain decimal of up to 51 digits.
    std::string LongDecimal() {
        std::string text = Below(2) == 0 ? "-" : "";
        text += Digit(0);
        text += AnyDigits(Below(4) == 0 ? 25 : 9);
        if (Below(4) != 0) {
            text += "." + AnyDigits(Below(4) == 0 ? 25 : 9);
        }
        return text;
    }

    std::mt19937_64 m_random{quillet::test::Seed(20030102)};
};

// A number that is written as by the C library, except by Wine where it is half way.
void ExpectPrinted(double value) {
    if (std::isfinite(value) && !(IsWine() && IsHalfWay(value, DoubleDigits))) {
        ASSERT_EQ(TextOf(VariantOf(value)), Printed(value, DoubleDigits));
    }
}

TEST_F(VariantNumberProperty, DoubleToText_AnyBits_IsWhatPrintfWrites) {
    for (int round = 0; round < Rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(ExpectPrinted(std::bit_cast<double>(m_random())));
    }
}

TEST_F(VariantNumberProperty, DoubleToText_OrdinaryNumbers_AreWhatPrintfWrites) {
    for (int round = 0; round < Rounds; ++round) {
        const auto whole = static_cast<double>(static_cast<std::int64_t>(m_random()) >> Below(60));
        ASSERT_NO_FATAL_FAILURE(ExpectPrinted(whole / std::pow(10.0, Below(20))));
    }
}

TEST_F(VariantNumberProperty, DoubleToText_Subnormals_AreWhatPrintfWrites) {
    for (int round = 0; round < Rounds / 10; ++round) {
        ASSERT_NO_FATAL_FAILURE(ExpectPrinted(std::bit_cast<double>(m_random() >> (12 + Below(52)))));
    }
}

TEST_F(VariantNumberProperty, FloatToText_AnyBits_IsWhatPrintfWrites) {
    for (int round = 0; round < Rounds; ++round) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(m_random()));
        const double wide = static_cast<double>(value);
        if (std::isfinite(value) && !(IsWine() && IsHalfWay(wide, FloatDigits))) {
            ASSERT_EQ(TextOf(VariantOf(value)), Printed(wide, FloatDigits));
        }
    }
}

TEST_F(VariantNumberProperty, TextToDouble_ManyDigits_IsTheNearest) {
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = LongDecimal();
        VARIANT plain;
        VARIANT padded;
        ASSERT_EQ(Read(text, VT_R8, plain), S_OK) << text;
        ASSERT_EQ(Read(" " + text, VT_R8, padded), S_OK) << text;
        ASSERT_TRUE(IsRead(plain.dblVal, std::strtod(text.c_str(), nullptr))) << text;
        ASSERT_EQ(padded.dblVal, plain.dblVal) << text;
    }
}

TEST_F(VariantNumberProperty, TextToDouble_LargeExponents_IsTheNearestOrOverflows) {
    // Near the largest double, Wine overflows too early.
    const double sure = IsWine() ? 1e300 : std::numeric_limits<double>::max();
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = LongDecimal() + "E" + std::to_string(Below(700) - 350);
        const double expected = std::strtod(text.c_str(), nullptr);
        VARIANT value;
        const HRESULT result = Read(text, VT_R8, value);
        if (std::isinf(expected)) {
            ASSERT_EQ(result, DISP_E_OVERFLOW) << text;
        } else if (std::abs(expected) <= sure) {
            ASSERT_EQ(result, S_OK) << text;
            ASSERT_TRUE(IsRead(value.dblVal, expected)) << text;
        }
    }
}

TEST_F(VariantNumberProperty, TextToFloat_ManyDigits_IsTheNearest) {
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = LongDecimal();
        VARIANT plain;
        VARIANT padded;
        ASSERT_EQ(Read(text, VT_R4, plain), S_OK) << text;
        ASSERT_EQ(Read(" " + text, VT_R4, padded), S_OK) << text;
        ASSERT_TRUE(IsRead(plain.fltVal, std::strtof(text.c_str(), nullptr))) << text;
        ASSERT_EQ(padded.fltVal, plain.fltVal) << text;
    }
}

TEST_F(VariantNumberProperty, TextToDouble_DecimalOfTheDomain_IsTheNearestAndComesBack) {
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = Decimal(DoubleDigits);
        const double expected = std::strtod(text.c_str(), nullptr);
        VARIANT value;
        ASSERT_EQ(Read(text, VT_R8, value), S_OK) << text;
        ASSERT_EQ(value.dblVal, expected) << text;
        const std::string written = TextOf(value);
        ASSERT_EQ(written, Printed(expected, DoubleDigits)) << text;
        ASSERT_EQ(Read(written, VT_R8, value), S_OK) << written;
        ASSERT_EQ(value.dblVal, expected) << written;
    }
}

TEST_F(VariantNumberProperty, TextToFloat_DecimalOfTheDomain_IsTheNearestAndComesBack) {
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = Decimal(FloatDigits);
        const float expected = std::strtof(text.c_str(), nullptr);
        VARIANT value;
        ASSERT_EQ(Read(text, VT_R4, value), S_OK) << text;
        ASSERT_EQ(value.fltVal, expected) << text;
        const std::string written = TextOf(value);
        ASSERT_EQ(Read(written, VT_R4, value), S_OK) << written;
        ASSERT_EQ(Printed(static_cast<double>(value.fltVal), FloatDigits), written) << text;
    }
}

TEST_F(VariantNumberProperty, IntegerToText_AnyValue_ComesBack) {
    for (int round = 0; round < Rounds; ++round) {
        const auto bits = m_random() >> Below(64);
        const auto number = static_cast<std::int64_t>(m_random()) >> Below(64);
        VARIANT value;
        ASSERT_EQ(TextOf(MakeVariant(Whole(VT_I8, number))), std::to_string(number));
        ASSERT_EQ(TextOf(MakeVariant(Whole(VT_UI8, static_cast<long long>(bits)))), std::to_string(bits));
        ASSERT_EQ(Read(std::to_string(number), VT_I8, value), S_OK);
        ASSERT_EQ(value.llVal, number);
        ASSERT_EQ(Read(std::to_string(bits), VT_UI8, value), S_OK);
        ASSERT_EQ(value.ullVal, bits);
        const std::string text = std::to_string(number);
        for (const std::string& form : {" " + text, text + ".0", text + "0E-1"}) {
            ASSERT_EQ(Read(form, VT_I8, value), S_OK) << form;
            ASSERT_EQ(value.llVal, number) << form;
        }
        const bool fits = number == static_cast<std::int32_t>(number);
        ASSERT_EQ(Read(std::to_string(number), VT_I4, value), fits ? S_OK : DISP_E_OVERFLOW) << number;
        if (fits) {
            ASSERT_EQ(value.lVal, static_cast<std::int32_t>(number));
        }
    }
}

TEST_F(VariantNumberProperty, TextToInteger_Quarters_RoundAsTheirDoublesDo) {
    for (int round = 0; round < Rounds; ++round) {
        const double exact =
            static_cast<double>(static_cast<std::int64_t>(m_random()) >> (20 + Below(40))) / 4;
        VARIANT fromText;
        ASSERT_EQ(Read(Printed(exact, 20), VT_I8, fromText), S_OK) << exact;
        VARIANT fromReal = VariantOf(exact);
        ASSERT_EQ(VariantChangeTypeEx(&fromReal, &fromReal, English, 0, VT_I8), S_OK) << exact;
        ASSERT_EQ(fromReal.llVal, static_cast<std::int64_t>(std::nearbyint(exact))) << exact;
        ASSERT_EQ(fromText.llVal, fromReal.llVal) << exact;
    }
}

// What a text of digits, signs, points, commas and blanks is read as.
struct PlainReading {
    std::optional<double> number;
    // Wine reads it, although it is not a number: signs repeated after the digits, and commas after a blank
    // or a sign there.
    bool onlyByWine = false;
};

PlainReading ReadPlainly(const std::string& text) {
    const auto count = [](const std::string& part, char unit) {
        return std::count(part.begin(), part.end(), unit);
    };
    const auto hasAny = [](const std::string& part, const char* units) {
        return part.find_first_of(units) != std::string::npos;
    };
    const std::size_t first = std::min(text.find_first_not_of(" +-"), text.size());
    const std::size_t last = std::min(text.find_first_not_of("0123456789.,", first), text.size());
    const std::string before = text.substr(0, first);
    const std::string after = text.substr(last);
    std::string digits = text.substr(first, last - first);
    const bool commaFirst = digits.starts_with(',');
    std::erase(digits, ',');

    const PlainReading nothing;
    if (count(before, '+') > 1 || count(before, '-') > 1 || commaFirst || count(digits, '.') > 1 ||
        !hasAny(digits, "0123456789")) {
        return nothing;
    }
    const bool continues = hasAny(after, "0123456789.");
    if (count(after, '+') > 1 || count(after, '-') > 1 || (hasAny(after, ",") && !continues)) {
        return {std::nullopt, true};
    }
    if (continues || (count(before, '+') > 0 && count(after, '+') > 0) ||
        (count(before, '-') > 0 && count(after, '-') > 0)) {
        return nothing;
    }
    const double magnitude = std::strtod(digits.c_str(), nullptr);
    return {hasAny(before + after, "-") ? -magnitude : magnitude};
}

TEST_F(VariantNumberProperty, TextToDouble_RandomCharacters_AreReadAsAPlainReaderDoes) {
    constexpr char Alphabet[] = "012345678900000 +-.,";
    constexpr int TextRounds = 100000;
    int numbers = 0;
    for (int round = 0; round < TextRounds; ++round) {
        std::string text;
        for (int left = Below(LargestPlace); left > 0; --left) {
            text += Alphabet[Below(sizeof Alphabet - 1)];
        }
        const PlainReading expected = ReadPlainly(text);
        if (expected.onlyByWine && IsWine()) {
            continue;
        }
        VARIANT value;
        ASSERT_EQ(Read(text, VT_R8, value), expected.number ? S_OK : DISP_E_TYPEMISMATCH)
            << '"' << text << '"';
        if (expected.number) {
            ASSERT_EQ(value.dblVal, *expected.number) << '"' << text << '"';
            ++numbers;
        }
    }
    EXPECT_GT(numbers, TextRounds / 5);
}

TEST_F(VariantNumberProperty, TextToAnything_RandomCharacters_IsReadOrRefused) {
    constexpr char Alphabet[] = "0123456789+-().,$&HOEe /:TAPMapm#";
    for (int round = 0; round < Rounds; ++round) {
        std::string text;
        for (int left = Below(12); left > 0; --left) {
            text += Alphabet[Below(sizeof Alphabet - 1)];
        }
        for (const VARTYPE type : {VT_I4, VT_UI1, VT_R8, VT_R4, VT_BOOL, VT_DATE}) {
            VARIANT value;
            const HRESULT result = Read(text, type, value);
            ASSERT_TRUE(result == S_OK || result == DISP_E_TYPEMISMATCH || result == DISP_E_OVERFLOW) << text;
            ASSERT_EQ(value.vt, result == S_OK ? type : VARTYPE{VT_EMPTY}) << text;
        }
    }
}

TEST_F(VariantNumberProperty, DateToText_AnySecondOfTheCalendar_ComesBack) {
    constexpr int FirstDay = -657434;
    constexpr int LastDay = 2958465;
    constexpr int SecondsPerDay = 86400;
    constexpr double Millisecond = 1.0 / SecondsPerDay / 1000;
    constexpr int DateRounds = 20000;
    for (int round = 0; round < DateRounds; ++round) {
        const int day = FirstDay + Below(LastDay - FirstDay + 1);
        const double time = static_cast<double>(Below(4) == 0 ? 0 : Below(SecondsPerDay)) / SecondsPerDay;
        const double serial = day < 0 ? day - time : day + time;
        for (const LCID locale : {English, German, French, Swedish, LCID{LOCALE_INVARIANT}}) {
            ScopedVariant value(Date(serial));
            ASSERT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_BSTR), S_OK) << serial;
            const std::string text = Describe(*value);
            ASSERT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_DATE), S_OK) << text;
            ASSERT_NEAR(value->date, serial, Millisecond) << text;
        }
    }
}

}  // namespace
}  // namespace quillet::test
