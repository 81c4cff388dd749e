// Numbers as text against the platform's conversion and, where that is ours, against the C library.
//
// QUILLET_TEST_NUMBERS is how many random numbers of each kind are written; 10,000,000 take some minutes.
#include "Quillet/values/NumberWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"
#include "support/Seed.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

int Rounds() {
    const char* const asked = std::getenv("QUILLET_TEST_NUMBERS");
    return asked != nullptr ? std::atoi(asked) : IsWine() ? 5000 : 100000;
}

class NumberWriterTest : public testing::Test {
protected:
    template <typename Number>
    std::string Written(Number number) const {
        char text[platform::MaxNumberText];
        return {text, m_writer.Write(number, text)};
    }

    // What the platform's conversion of variants gives, with the user's separator where there is an exponent
    // too.
    static std::string Converted(const CComVariant& number) {
        CComVariant text = number;
        EXPECT_TRUE(SUCCEEDED(text.ChangeType(VT_BSTR)));
        WideString wide(text.Text());
        if (IsWine()) {
            std::replace(wide.begin(), wide.end(), WCHAR('.'), platform::DecimalSeparator());
        }
        return CString(wide).ToUtf8();
    }

    static std::string Separator() {
        const WCHAR separator = platform::DecimalSeparator();
        return CString(WideView(&separator, 1)).ToUtf8();
    }

    // What the C library gives.
    static std::string Printed(double number, int digits) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.*G", digits, number);
        std::string text = number == 0 ? "0" : buffer;
        const std::size_t point = text.find('.');
        return point == std::string::npos ? text : text.replace(point, 1, Separator());
    }

    void ExpectSame(double number) const {
        ASSERT_EQ(Written(number), Converted(CComVariant(number))) << std::hexfloat << number;
        if (!IsWine() && std::isfinite(number)) {
            ASSERT_EQ(Written(number), Printed(number, std::numeric_limits<double>::digits10))
                << std::hexfloat << number;
        }
    }
    void ExpectSame(float number) const {
        constexpr int Digits = 7;
        ASSERT_EQ(Written(number), Converted(CComVariant(number))) << std::hexfloat << number;
        if (!IsWine() && std::isfinite(number)) {
            ASSERT_EQ(Written(number), Printed(static_cast<double>(number), Digits))
                << std::hexfloat << number;
        }
    }
    template <typename Real>
    void ExpectSameWithNeighbours(Real number) const {
        for (const Real sign : {Real(1), Real(-1)}) {
            ExpectSame(sign * number);
            ExpectSame(sign * std::nextafter(number, std::numeric_limits<Real>::infinity()));
            ExpectSame(sign * std::nextafter(number, Real(0)));
        }
    }

    NumberWriter m_writer;
    std::mt19937_64 m_random{Seed(29)};
};

TEST_F(NumberWriterTest, Doubles_OfAnyBits) {
    for (int i = 0; i < Rounds(); ++i) {
        ExpectSame(std::bit_cast<double>(m_random()));
    }
}

// Those that have no exponent, with all their bits.
TEST_F(NumberWriterTest, Doubles_OfTheSizeOfDimensions) {
    for (int i = 0; i < Rounds(); ++i) {
        const double digits = static_cast<double>(m_random() >> 11);
        const double number = digits / std::pow(10.0, static_cast<double>(m_random() % 21));
        ExpectSame(number);
        ExpectSame(-number);
    }
}

TEST_F(NumberWriterTest, Doubles_OfFewDigits) {
    for (int i = 0; i < Rounds(); ++i) {
        const std::uint64_t power = platform::WholePowersOfTen[1 + m_random() % 15];
        const double digits = static_cast<double>(m_random() % power);
        const double number = digits / static_cast<double>(platform::WholePowersOfTen[m_random() % 20]);
        ExpectSame(number);
        ExpectSame(-number);
    }
}

// Half way between two decimals of 15 digits, which the last digit's parity decides, and next to it. Wine
// rounds them all away from zero.
TEST_F(NumberWriterTest, Doubles_HalfWayBetweenDecimals) {
    for (int i = 0; i < Rounds(); ++i) {
        const double eighths = static_cast<double>(m_random() % (std::uint64_t{1} << 53)) / 8;
        const double number = eighths / static_cast<double>(std::uint64_t{1} << (m_random() % 40));
        ExpectSame(number);
    }
}

TEST_F(NumberWriterTest, Doubles_AroundPowersOfTen) {
    for (int exponent = -330; exponent <= 308; ++exponent) {
        const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
        for (const double factor : {1.0, 9.99999999999999, 9.999999999999995, 1.00000000000001, 5.0, 2.5}) {
            if (std::isfinite(power * factor)) {
                ExpectSameWithNeighbours(power * factor);
            }
        }
    }
}

TEST_F(NumberWriterTest, Doubles_AtTheEdges) {
    using Limits = std::numeric_limits<double>;
    for (const double number :
         {0.0, Limits::min(), Limits::max(), Limits::denorm_min(), Limits::epsilon(), 0x1p53, 0x1p63, 1e11,
          99999999999.9999, 99999999999.99995, 999999999999999.4, 999999999999999.5, 0.0001, 0.00012345}) {
        ExpectSameWithNeighbours(number);
    }
    for (const double number :
         {-0.0, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN()}) {
        ExpectSame(number);
    }
}

TEST_F(NumberWriterTest, Floats_OfAnyBits) {
    for (int i = 0; i < Rounds(); ++i) {
        ExpectSame(std::bit_cast<float>(static_cast<std::uint32_t>(m_random())));
    }
}

TEST_F(NumberWriterTest, Floats_OfTheSizeOfDimensions) {
    for (int i = 0; i < Rounds(); ++i) {
        const auto digits = static_cast<float>(m_random() >> 40);
        ExpectSame(digits / static_cast<float>(std::pow(10.0, static_cast<double>(m_random() % 12))));
    }
}

TEST_F(NumberWriterTest, Floats_AroundPowersOfTen) {
    for (int exponent = -46; exponent <= 38; ++exponent) {
        const float power = std::strtof(("1e" + std::to_string(exponent)).c_str(), nullptr);
        for (const float factor : {1.0F, 9.999999F, 9.9999995F, 1.0000001F, 5.0F, 2.5F}) {
            if (std::isfinite(power * factor)) {
                ExpectSameWithNeighbours(power * factor);
            }
        }
    }
    for (const float number :
         {0.0F, -0.0F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        ExpectSame(number);
    }
}

TEST_F(NumberWriterTest, WholeNumbers) {
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t number : {0, 1, -1, 9, 10, 99, 100, 101, -100, Limits::max(), Limits::min()}) {
        EXPECT_EQ(Written(number), std::to_string(number));
    }
    for (int i = 0; i < Rounds(); ++i) {
        const auto number = static_cast<std::int32_t>(m_random()) >> (m_random() % 31);
        ASSERT_EQ(Written(number), std::to_string(number));
    }
}

}  // namespace
}  // namespace quillet::test
