// Random numbers against the C library: the fast ways of conversion give what the slow and well-known ones
// give.
#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "VariantValues.h"
#include "platform/Automation.h"

namespace quillet::test {
namespace {

constexpr int Rounds = 200000;

std::string Narrow(BSTR text) {
    return std::string(text, text + SysStringLen(text));
}

std::u16string Wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

VARIANT VariantOf(double value) {
    VARIANT variant = MakeVariant(R8(0));
    variant.dblVal = value;
    return variant;
}

std::string TextOf(VARIANT value) {
    ScopedVariant target;
    EXPECT_EQ(VariantChangeTypeEx(&target, &value, LOCALE_INVARIANT, 0, VT_BSTR), S_OK);
    return Narrow(target->bstrVal);
}

std::string TextOf(double value) {
    return TextOf(VariantOf(value));
}

std::string TextOf(float value) {
    VARIANT variant = MakeVariant(R4(0));
    variant.fltVal = value;
    return TextOf(variant);
}

template <typename Real>
std::string Printed(const char* format, Real value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, static_cast<double>(value));
    return value == 0 ? "0" : buffer;
}

// The converted value, or the failure.
HRESULT Read(const std::string& text, VARTYPE type, VARIANT& result) {
    const std::u16string wide = Wide(text);
    ScopedVariant source(Text(wide.c_str()));
    VariantInit(&result);
    return VariantChangeTypeEx(&result, &source, LOCALE_INVARIANT, 0, type);
}

std::string RandomDecimal(std::mt19937_64& random) {
    const auto digits = [&random](std::uint64_t most) {
        std::string text;
        for (std::uint64_t left = random() % (most + 1); left > 0; --left) {
            text += static_cast<char>('0' + random() % 10);
        }
        return text;
    };
    std::string text = random() % 2 == 0 ? "-" : "";
    text += static_cast<char>('0' + random() % 10);
    text += digits(random() % 4 == 0 ? 25 : 9);
    if (random() % 4 != 0) {
        text += "." + digits(random() % 4 == 0 ? 25 : 9);
    }
    return text;
}

class PosixConversionProperty : public testing::Test {
protected:
    void SetUp() override { ASSERT_STREQ(std::localeconv()->decimal_point, "."); }

    std::mt19937_64 m_random{20030102};
};

TEST_F(PosixConversionProperty, DoubleToText_AnyBits_MatchesPrintf) {
    for (int round = 0; round < Rounds; ++round) {
        const auto value = std::bit_cast<double>(m_random());
        if (std::isfinite(value)) {
            ASSERT_EQ(TextOf(value), Printed("%.15G", value));
        }
    }
}

TEST_F(PosixConversionProperty, DoubleToText_OrdinaryNumbers_MatchPrintf) {
    for (int round = 0; round < Rounds; ++round) {
        const auto whole = static_cast<std::int64_t>(m_random()) >> (m_random() % 60);
        const double value =
            static_cast<double>(whole) / std::pow(10.0, static_cast<double>(m_random() % 20));
        ASSERT_EQ(TextOf(value), Printed("%.15G", value));
    }
}

TEST_F(PosixConversionProperty, DoubleToText_Subnormals_MatchPrintf) {
    for (int round = 0; round < Rounds / 10; ++round) {
        const auto value = std::bit_cast<double>(m_random() >> (12 + m_random() % 52));
        ASSERT_EQ(TextOf(value), Printed("%.15G", value));
    }
}

TEST_F(PosixConversionProperty, FloatToText_AnyBits_MatchesPrintf) {
    for (int round = 0; round < Rounds; ++round) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(m_random()));
        if (std::isfinite(value)) {
            ASSERT_EQ(TextOf(value), Printed("%.7G", value));
        }
    }
}

TEST_F(PosixConversionProperty, TextToDouble_RandomDecimals_MatchStrtod) {
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = RandomDecimal(m_random);
        VARIANT plain;
        VARIANT padded;
        ASSERT_EQ(Read(text, VT_R8, plain), S_OK) << text;
        ASSERT_EQ(Read(" " + text, VT_R8, padded), S_OK) << text;
        ASSERT_EQ(plain.dblVal, std::strtod(text.c_str(), nullptr)) << text;
        ASSERT_EQ(padded.dblVal, plain.dblVal) << text;
    }
}

TEST_F(PosixConversionProperty, TextToDouble_RandomExponents_MatchStrtod) {
    for (int round = 0; round < Rounds; ++round) {
        const int exponent = static_cast<int>(m_random() % 700) - 350;
        const std::string text = RandomDecimal(m_random) + "E" + std::to_string(exponent);
        const double expected = std::strtod(text.c_str(), nullptr);
        VARIANT value;
        if (std::isinf(expected)) {
            ASSERT_EQ(Read(text, VT_R8, value), DISP_E_OVERFLOW) << text;
        } else {
            ASSERT_EQ(Read(text, VT_R8, value), S_OK) << text;
            ASSERT_EQ(value.dblVal, expected) << text;
        }
    }
}

TEST_F(PosixConversionProperty, TextToFloat_RandomDecimals_MatchStrtof) {
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = RandomDecimal(m_random);
        VARIANT plain;
        VARIANT padded;
        ASSERT_EQ(Read(text, VT_R4, plain), S_OK) << text;
        ASSERT_EQ(Read(" " + text, VT_R4, padded), S_OK) << text;
        ASSERT_EQ(plain.fltVal, std::strtof(text.c_str(), nullptr)) << text;
        ASSERT_EQ(padded.fltVal, plain.fltVal) << text;
    }
}

TEST_F(PosixConversionProperty, TextToInteger_RandomIntegers_ComeBack) {
    for (int round = 0; round < Rounds; ++round) {
        const auto expected = static_cast<std::int64_t>(m_random()) >> (m_random() % 64);
        const std::string text = std::to_string(expected);
        for (const std::string& form : {text, " " + text, text + ".0", text + "0E-1"}) {
            VARIANT value;
            ASSERT_EQ(Read(form, VT_I8, value), S_OK) << form;
            ASSERT_EQ(value.llVal, expected) << form;
        }
        ASSERT_EQ(TextOf(MakeVariant(Whole(VT_I8, expected))), text);
    }
}

TEST_F(PosixConversionProperty, TextToInteger_RandomDecimals_RoundAsTheirDoublesDo) {
    for (int round = 0; round < Rounds; ++round) {
        // Quarters are exact in binary, so both ways meet the same half.
        const auto quarters = static_cast<std::int64_t>(m_random()) >> (20 + m_random() % 40);
        const double exact = static_cast<double>(quarters) / 4;
        const std::string text = std::to_string(exact);
        VARIANT fromText;
        ASSERT_EQ(Read(text, VT_I8, fromText), S_OK) << text;
        VARIANT real = VariantOf(exact);
        ASSERT_EQ(VariantChangeTypeEx(&real, &real, LOCALE_INVARIANT, 0, VT_I8), S_OK);
        ASSERT_EQ(fromText.llVal, real.llVal) << text;
        ASSERT_EQ(real.llVal, static_cast<std::int64_t>(std::nearbyint(exact))) << text;
    }
}

TEST_F(PosixConversionProperty, TextToNumber_RandomCharacters_NeverMisbehave) {
    constexpr char Alphabet[] = "0123456789+-().,$&HOEe /:TAPMapm#";
    for (int round = 0; round < Rounds; ++round) {
        std::string text;
        for (std::uint64_t left = m_random() % 12; left > 0; --left) {
            text += Alphabet[m_random() % (sizeof Alphabet - 1)];
        }
        for (const VARTYPE type : {VT_I4, VT_UI1, VT_R8, VT_R4, VT_BOOL, VT_DATE}) {
            VARIANT value;
            const HRESULT result = Read(text, type, value);
            ASSERT_TRUE(result == S_OK || result == DISP_E_TYPEMISMATCH || result == DISP_E_OVERFLOW) << text;
            ASSERT_EQ(value.vt, result == S_OK ? type : VARTYPE{VT_EMPTY}) << text;
        }
    }
}

}  // namespace
}  // namespace quillet::test
