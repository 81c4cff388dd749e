#include "Quillet/platform/NumberText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "Quillet/base/CComVariant.h"
#include "support/Seed.h"
#include "support/VariantValues.h"

namespace {

using quillet::platform::MaxNumberText;
using quillet::platform::NumberToText;
using quillet::platform::TextToNumber;

std::string TextOf(const CComVariant& number) {
    char text[MaxNumberText];
    return std::string(text, NumberToText(number, text));
}

// "VarBstrFromR8 function" takes the locale, and "LOCALE_SDECIMAL" is its decimal separator. Wine's
// conversion does not use it where there is an exponent; NumberText still does.
std::string ConvertedText(const CComVariant& number) {
    CComVariant text = number;
    EXPECT_TRUE(SUCCEEDED(text.ChangeType(VT_BSTR)));
    std::basic_string<WCHAR> wide(text.Text());
    if (quillet::test::IsWine()) {
        std::replace(wide.begin(), wide.end(), WCHAR('.'), quillet::platform::DecimalSeparator());
    }
    return CString(wide).ToUtf8();
}

// The result of the conversion of a string variant with the same text.
void ExpectReadAsConverted(const CString& text, VARTYPE type) {
    CComVariant expected(text);
    const HRESULT converted = expected.ChangeType(type);
    CComVariant number;
    EXPECT_EQ(TextToNumber(text.View(), type, &number), converted) << text << " to " << type;
    if (SUCCEEDED(converted)) {
        ASSERT_EQ(number.vt, expected.vt) << text;
        EXPECT_TRUE(number == expected) << text << " to " << type;
    } else {
        EXPECT_EQ(number.vt, VT_EMPTY) << text;
    }
}

TEST(NumberToText, RandomNumbers_EqualTheVariantConversion) {
    std::mt19937_64 random(quillet::test::Seed(11));
    for (int i = 0; i < 20000; ++i) {
        const auto bits = random();
        const auto decimals = static_cast<double>(static_cast<std::int64_t>(bits) % 10'000'000);
        const double dimension = decimals / std::pow(10.0, static_cast<double>(bits >> 40) / (1 << 22));
        const double hundredths = decimals / 100;
        double any = 0;
        std::memcpy(&any, &bits, sizeof any);
        for (const double value : {dimension, hundredths, any, -hundredths}) {
            if (std::isfinite(value)) {
                ASSERT_EQ(TextOf(CComVariant(value)), ConvertedText(CComVariant(value)));
            }
        }
        const auto single = static_cast<float>(hundredths);
        ASSERT_EQ(TextOf(CComVariant(single)), ConvertedText(CComVariant(single)));
        const auto whole = static_cast<std::int32_t>(bits);
        ASSERT_EQ(TextOf(CComVariant(whole)), ConvertedText(CComVariant(whole)));
    }
}

TEST(NumberToText, FewDecimals_AreWrittenWithoutTrailingZeros) {
    const WCHAR separator = quillet::platform::DecimalSeparator();
    const std::string point = CString(quillet::WideView(&separator, 1)).ToUtf8();
    EXPECT_EQ(TextOf(CComVariant(0.5)), "0" + point + "5");
    EXPECT_EQ(TextOf(CComVariant(-0.05)), "-0" + point + "05");
    EXPECT_EQ(TextOf(CComVariant(1234.5678)), "1234" + point + "5678");
    EXPECT_EQ(TextOf(CComVariant(100.0)), "100");
    EXPECT_EQ(TextOf(CComVariant(0.00001)), "1E-05");
    EXPECT_EQ(TextOf(CComVariant(99999999999.9999)), "99999999999" + point + "9999");
}

TEST(NumberToText, TypesThatAreNoNumber_GiveNothing) {
    EXPECT_EQ(TextOf(CComVariant()), "");
    EXPECT_EQ(TextOf(CComVariant("12")), "");
    EXPECT_EQ(TextOf(CComVariant(true)), "");
}

TEST(TextToNumber, AnyText_EqualsTheVariantConversion) {
    for (const char* text : {"",
                             " ",
                             "0",
                             "-0",
                             "12",
                             " 12 ",
                             "+7",
                             "1,234",
                             "1.5",
                             "2.5",
                             "-2.5",
                             "1e3",
                             "1E-3",
                             "(5)",
                             "(-5)",
                             "5-",
                             "1,,2",
                             "\u00A05",
                             "&H1F",
                             "&H80000000",
                             "2147483647",
                             "2147483648",
                             "-2147483648",
                             "-2147483649",
                             "1e400",
                             "abc",
                             "12abc",
                             "true",
                             "false",
                             "True",
                             "FALSE",
                             "#TRUE#",
                             "yes",
                             "0.1",
                             ".5",
                             "5.",
                             "1.1.1",
                             "123456789012345"}) {
        for (const VARTYPE type : {VT_I4, VT_R4, VT_R8, VT_BOOL}) {
            ExpectReadAsConverted(text, type);
        }
    }
}

// More digits and larger exponents than every system's conversion reads exactly.
TEST(TextToNumber, PlainNumber_IsTheNearestReal) {
    for (const char* text : {"123456789012345678901234567890", "-9007199254740993", "1E+308",
                             "-1.52806683464714E+158", "1.7976931348623157E+308", "2.2250738585072014E-308",
                             "4.9406564584124654E-324", "3858.15174969311"}) {
        std::string local = text;
        std::replace(local.begin(), local.end(), '.',
                     static_cast<char>(quillet::platform::DecimalSeparator()));
        CComVariant number;
        ASSERT_TRUE(SUCCEEDED(TextToNumber(CString(local).View(), VT_R8, &number))) << text;
        EXPECT_EQ(number.dblVal, std::strtod(text, nullptr)) << text;
    }
}

TEST(TextToNumber, NumberBeyondTheRange_OverflowsOrIsZero) {
    CComVariant number;
    EXPECT_EQ(TextToNumber(OLESTR("1E2147483648"), VT_R8, &number), DISP_E_OVERFLOW);
    EXPECT_EQ(TextToNumber(OLESTR("-1E39"), VT_R4, &number), DISP_E_OVERFLOW);
    ASSERT_TRUE(SUCCEEDED(TextToNumber(OLESTR("1E-2147483648"), VT_R8, &number)));
    EXPECT_EQ(number.dblVal, 0.0);
}

TEST(TextToNumber, OtherTypes_AreRefused) {
    CComVariant number;
    EXPECT_TRUE(FAILED(TextToNumber(OLESTR("1"), VT_DATE, &number)));
    EXPECT_EQ(number.vt, VT_EMPTY);
}

TEST(DecimalSeparator, LocaleWithCommas_IsTheComma) {
    const WCHAR separator = quillet::platform::DecimalSeparator();
    if (separator == '.') {
        GTEST_SKIP() << "the user's numbers have a decimal point";
    }
    EXPECT_EQ(separator, ',');
    EXPECT_EQ(TextOf(CComVariant(-1.5e20)), "-1,5E+20");
    CComVariant number;
    ASSERT_TRUE(SUCCEEDED(TextToNumber(OLESTR("-1,5E+20"), VT_R8, &number)));
    EXPECT_EQ(number.dblVal, -1.5e20);
}

TEST(DecimalSeparator, AnyLocale_IsThatOfAConvertedNumber) {
    CComVariant text(1.1);
    ASSERT_TRUE(SUCCEEDED(text.ChangeType(VT_BSTR)));
    EXPECT_EQ(text.Text()[1], quillet::platform::DecimalSeparator());
}

}  // namespace
