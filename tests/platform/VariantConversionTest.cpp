// Conversion between variant types: one table, the same for every port.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "VariantValues.h"
#include "platform/Automation.h"

namespace quillet::test {
namespace {

struct Expected {
    HRESULT result;
    Value value;

    constexpr Expected(const Value& converted) : result(S_OK), value(converted) {}
    constexpr Expected(HRESULT failure) : result(failure) {}
};

// Rows of one name make one test.
struct Case {
    const char* name;
    Value source;
    VARTYPE type;
    LCID locale;
    Expected expected;
    USHORT flags = 0;
};

const Case Cases[] = {
    {"ChangeType_SameType_Copies", Empty(), VT_EMPTY, English, Empty()},
    {"ChangeType_SameType_Copies", Null(), VT_NULL, English, Null()},
    {"ChangeType_SameType_Copies", I4(-7), VT_I4, English, I4(-7)},
    {"ChangeType_SameType_Copies", Bool(true), VT_BOOL, English, Bool(true)},
    {"ChangeType_SameType_Copies", R8(0.1), VT_R8, English, R8(0.1)},
    {"ChangeType_SameType_Copies", Text(OLESTR("no number")), VT_BSTR, English, Text(OLESTR("no number"))},

    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_I1, English, Whole(VT_I1, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_UI1, English, Whole(VT_UI1, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_I2, English, Whole(VT_I2, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_UI2, English, Whole(VT_UI2, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_I4, English, I4(0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_UI4, English, Whole(VT_UI4, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_I8, English, Whole(VT_I8, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_UI8, English, Whole(VT_UI8, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_INT, English, Whole(VT_INT, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_UINT, English, Whole(VT_UINT, 0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_R4, English, R4(0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_R8, English, R8(0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_BOOL, English, Bool(false)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_DATE, English, Date(0)},
    {"ChangeType_Empty_BecomesTheZeroOfTheType", Empty(), VT_BSTR, English, Text(OLESTR(""))},

    {"ChangeType_Null_HasNoOtherType", Null(), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_Null_HasNoOtherType", Null(), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_Null_HasNoOtherType", Null(), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_Null_HasNoOtherType", Null(), VT_BSTR, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_Null_HasNoOtherType", Null(), VT_DATE, English, DISP_E_TYPEMISMATCH},

    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), 15, English, DISP_E_BADVARTYPE},

    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-128), VT_I1, English, Whole(VT_I1, -128)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(255), VT_UI1, English, Whole(VT_UI1, 255)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-32768), VT_I2, English, Whole(VT_I2, -32768)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(65535), VT_UI2, English, Whole(VT_UI2, 65535)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(7), VT_UI4, English, Whole(VT_UI4, 7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-7), VT_I8, English, Whole(VT_I8, -7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(7), VT_UI8, English, Whole(VT_UI8, 7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-7), VT_INT, English, Whole(VT_INT, -7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(7), VT_UINT, English, Whole(VT_UINT, 7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_I1, -5), VT_I4, English, I4(-5)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_UI1, 200), VT_I2, English, Whole(VT_I2, 200)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_I2, -5), VT_I4, English, I4(-5)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_UI2, 65535), VT_I4, English, I4(65535)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_UI4, 4294967295), VT_I8, English,
     Whole(VT_I8, 4294967295)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_I8, -2147483648LL), VT_I4, English,
     I4(-2147483648LL)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(16777217), VT_R8, English, R8(16777217)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_I2, -3), VT_R4, English, R4(-3)},

    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(128), VT_I1, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(-1), VT_UI1, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(256), VT_UI1, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(32768), VT_I2, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(-32769), VT_I2, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(65536), VT_UI2, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(-1), VT_UI4, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(-1), VT_UI8, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_UI4, 2147483648), VT_I4, English,
     DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_I8, 2147483648), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_UI8, -1), VT_I8, English, DISP_E_OVERFLOW},

    {"ChangeType_HalfWayValues_RoundToEven", R8(0.5), VT_I4, English, I4(0)},
    {"ChangeType_HalfWayValues_RoundToEven", R8(1.5), VT_I4, English, I4(2)},
    {"ChangeType_HalfWayValues_RoundToEven", R8(2.5), VT_I4, English, I4(2)},
    {"ChangeType_HalfWayValues_RoundToEven", R8(-0.5), VT_I4, English, I4(0)},
    {"ChangeType_HalfWayValues_RoundToEven", R8(-1.5), VT_I2, English, Whole(VT_I2, -2)},
    {"ChangeType_HalfWayValues_RoundToEven", R8(-2.5), VT_I2, English, Whole(VT_I2, -2)},
    {"ChangeType_HalfWayValues_RoundToEven", R4(3.5), VT_UI1, English, Whole(VT_UI1, 4)},
    {"ChangeType_HalfWayValues_RoundToEven", R4(4.5), VT_UI1, English, Whole(VT_UI1, 4)},
    {"ChangeType_HalfWayValues_RoundToEven", Date(2.5), VT_I4, English, I4(2)},
    {"ChangeType_HalfWayValues_RoundToEven", Text(OLESTR("0.5")), VT_I4, English, I4(0)},
    {"ChangeType_HalfWayValues_RoundToEven", Text(OLESTR("1.5")), VT_I4, English, I4(2)},
    {"ChangeType_HalfWayValues_RoundToEven", Text(OLESTR("2.50")), VT_I2, English, Whole(VT_I2, 2)},
    {"ChangeType_HalfWayValues_RoundToEven", Text(OLESTR("-3.5")), VT_I2, English, Whole(VT_I2, -4)},

    {"ChangeType_OtherFractions_RoundToTheNearest", R8(2.51), VT_I4, English, I4(3)},
    {"ChangeType_OtherFractions_RoundToTheNearest", R8(2.49), VT_I4, English, I4(2)},
    {"ChangeType_OtherFractions_RoundToTheNearest", R8(-2.51), VT_I4, English, I4(-3)},
    {"ChangeType_OtherFractions_RoundToTheNearest", R8(255.4), VT_UI1, English, Whole(VT_UI1, 255)},
    {"ChangeType_OtherFractions_RoundToTheNearest", Text(OLESTR("2.51")), VT_I4, English, I4(3)},
    {"ChangeType_OtherFractions_RoundToTheNearest", Text(OLESTR("2.49")), VT_I4, English, I4(2)},

    {"ChangeType_RealOutOfRange_Overflows", R8(32768), VT_I2, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(-32769), VT_I2, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(2147483648.0), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(-2147483649.0), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(256), VT_UI1, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(-1), VT_UI4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(1e19), VT_I8, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(1e20), VT_UI8, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(1e39), VT_R4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(-1e300), VT_R4, English, DISP_E_OVERFLOW},

    {"ChangeType_RealToReal_TakesTheNearest", R8(0.1), VT_R4, English, R4(0.1)},
    {"ChangeType_RealToReal_TakesTheNearest", R4(0.5), VT_R8, English, R8(0.5)},
    {"ChangeType_RealToReal_TakesTheNearest", R4(0.1), VT_R8, English, R8(static_cast<double>(0.1F))},

    {"ChangeType_NumberToBool_IsTrueUnlessZero", I4(0), VT_BOOL, English, Bool(false)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", I4(1), VT_BOOL, English, Bool(true)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", I4(-5), VT_BOOL, English, Bool(true)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", Whole(VT_UI1, 2), VT_BOOL, English, Bool(true)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", Whole(VT_I8, 65536), VT_BOOL, English, Bool(true)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", R8(0), VT_BOOL, English, Bool(false)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", R8(0.1), VT_BOOL, English, Bool(true)},
    {"ChangeType_NumberToBool_IsTrueUnlessZero", R4(-0.1), VT_BOOL, English, Bool(true)},

    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(true), VT_I1, English, Whole(VT_I1, -1)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(true), VT_I2, English, Whole(VT_I2, -1)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(true), VT_I4, English, I4(-1)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(true), VT_I8, English, Whole(VT_I8, -1)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(true), VT_R4, English, R4(-1)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(true), VT_R8, English, R8(-1)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(false), VT_I4, English, I4(0)},
    {"ChangeType_BoolToNumber_IsMinusOneOrZero", Bool(false), VT_UI1, English, Whole(VT_UI1, 0)},

    {"ChangeType_TrueToUnsigned_SetsAllBits", Bool(true), VT_UI1, English, Whole(VT_UI1, 255)},
    {"ChangeType_TrueToUnsigned_SetsAllBits", Bool(true), VT_UI2, English, Whole(VT_UI2, 65535)},
    {"ChangeType_TrueToUnsigned_SetsAllBits", Bool(true), VT_UI4, English, Whole(VT_UI4, 4294967295)},
    {"ChangeType_TrueToUnsigned_SetsAllBits", Bool(true), VT_UI8, English, Whole(VT_UI8, -1)},

    {"ChangeType_BoolToText_IsANumber", Bool(true), VT_BSTR, English, Text(OLESTR("-1"))},
    {"ChangeType_BoolToText_IsANumber", Bool(false), VT_BSTR, English, Text(OLESTR("0"))},
    {"ChangeType_BoolToTextWithAlphaFlag_IsAWord", Bool(true), VT_BSTR, English, Text(OLESTR("True")),
     VARIANT_ALPHABOOL},
    {"ChangeType_BoolToTextWithAlphaFlag_IsAWord", Bool(false), VT_BSTR, English, Text(OLESTR("False")),
     VARIANT_ALPHABOOL},

    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("True")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("tRUE")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("false")), VT_BOOL, English, Bool(false)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("#TRUE#")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("#FALSE#")), VT_BOOL, English, Bool(false)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("0")), VT_BOOL, English, Bool(false)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("2")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("-1")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("yes")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("Truer")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("")), VT_BOOL, English, DISP_E_TYPEMISMATCH},

    {"ChangeType_IntegerToText_IsDecimal", I4(0), VT_BSTR, English, Text(OLESTR("0"))},
    {"ChangeType_IntegerToText_IsDecimal", I4(1234567), VT_BSTR, English, Text(OLESTR("1234567"))},
    {"ChangeType_IntegerToText_IsDecimal", I4(1234567), VT_BSTR, German, Text(OLESTR("1234567"))},
    {"ChangeType_IntegerToText_IsDecimal", I4(-2147483648LL), VT_BSTR, English, Text(OLESTR("-2147483648"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_I1, -128), VT_BSTR, English, Text(OLESTR("-128"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UI1, 255), VT_BSTR, English, Text(OLESTR("255"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_I2, -32768), VT_BSTR, English, Text(OLESTR("-32768"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UI2, 65535), VT_BSTR, English, Text(OLESTR("65535"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UI4, 4294967295), VT_BSTR, English,
     Text(OLESTR("4294967295"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_I8, -9223372036854775807LL - 1), VT_BSTR, English,
     Text(OLESTR("-9223372036854775808"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UI8, -1), VT_BSTR, English,
     Text(OLESTR("18446744073709551615"))},

    {"ChangeType_DoubleToText_HasFifteenDigits", R8(0), VT_BSTR, English, Text(OLESTR("0"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(1.5), VT_BSTR, English, Text(OLESTR("1.5"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(-1.1), VT_BSTR, English, Text(OLESTR("-1.1"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(0.1), VT_BSTR, English, Text(OLESTR("0.1"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(100), VT_BSTR, English, Text(OLESTR("100"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(1234.5678), VT_BSTR, English, Text(OLESTR("1234.5678"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(1.0 / 3), VT_BSTR, English,
     Text(OLESTR("0.333333333333333"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(2.0 / 3), VT_BSTR, English,
     Text(OLESTR("0.666666666666667"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(0.1 + 0.2), VT_BSTR, English, Text(OLESTR("0.3"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(123456789012345), VT_BSTR, English,
     Text(OLESTR("123456789012345"))},

    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(1e14), VT_BSTR, English,
     Text(OLESTR("100000000000000"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(1e15), VT_BSTR, English, Text(OLESTR("1E+15"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(123456789012345678.0), VT_BSTR, English,
     Text(OLESTR("1.23456789012346E+17"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(0.0001), VT_BSTR, English, Text(OLESTR("0.0001"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(0.00001), VT_BSTR, English, Text(OLESTR("1E-05"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(-1.5e100), VT_BSTR, English,
     Text(OLESTR("-1.5E+100"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(2.5e-10), VT_BSTR, English,
     Text(OLESTR("2.5E-10"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R4(1e6), VT_BSTR, English, Text(OLESTR("1000000"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R4(1e7), VT_BSTR, English, Text(OLESTR("1E+07"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R4(0.00001), VT_BSTR, English, Text(OLESTR("1E-05"))},

    {"ChangeType_FloatToText_HasSevenDigits", R4(0.1), VT_BSTR, English, Text(OLESTR("0.1"))},
    {"ChangeType_FloatToText_HasSevenDigits", R4(-2.25), VT_BSTR, English, Text(OLESTR("-2.25"))},
    {"ChangeType_FloatToText_HasSevenDigits", R4(1.0 / 3), VT_BSTR, English, Text(OLESTR("0.3333333"))},
    {"ChangeType_FloatToText_HasSevenDigits", R4(16777216), VT_BSTR, English, Text(OLESTR("1.677722E+07"))},
    {"ChangeType_FloatToText_HasSevenDigits", R4(123456.7), VT_BSTR, English, Text(OLESTR("123456.7"))},

    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R8(1.5), VT_BSTR, German,
     Text(OLESTR("1,5"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R8(1.5), VT_BSTR, French,
     Text(OLESTR("1,5"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R4(-0.25), VT_BSTR, German,
     Text(OLESTR("-0,25"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R8(1.5e20), VT_BSTR, German,
     Text(OLESTR("1,5E+20"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", Text(OLESTR("1,5")), VT_R8, German, R8(1.5)},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", Text(OLESTR("-2,5")), VT_R8, French,
     R8(-2.5)},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", Text(OLESTR("1.234,5")), VT_R8, German,
     R8(1234.5)},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", Text(OLESTR("2,5")), VT_I4, German, I4(2)},

    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("0")), VT_I4, English, I4(0)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("-128")), VT_I1, English, Whole(VT_I1, -128)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("255")), VT_UI1, English, Whole(VT_UI1, 255)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("-32768")), VT_I2, English,
     Whole(VT_I2, -32768)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("2147483647")), VT_I4, English,
     I4(2147483647)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("-2147483648")), VT_I4, English,
     I4(-2147483648LL)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("4294967295")), VT_UI4, English,
     Whole(VT_UI4, 4294967295)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("9223372036854775807")), VT_I8, English,
     Whole(VT_I8, 9223372036854775807LL)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("-9223372036854775808")), VT_I8, English,
     Whole(VT_I8, -9223372036854775807LL - 1)},
    {"ChangeType_TextToInteger_ReadsTheWholeRange", Text(OLESTR("18446744073709551615")), VT_UI8, English,
     Whole(VT_UI8, -1)},

    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("128")), VT_I1, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("256")), VT_UI1, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("-1")), VT_UI1, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("32768")), VT_I2, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("-32769")), VT_I2, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("2147483648")), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("-2147483649")), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1E10")), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("-1")), VT_UI4, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("99999999999999999999")), VT_I8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1E400")), VT_R8, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1E40")), VT_R4, English, DISP_E_OVERFLOW},

    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("  42")), VT_I4, English, I4(42)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("42  ")), VT_I4, English, I4(42)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("\t-4.5 ")), VT_R8, English, R8(-4.5)},

    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("+5")), VT_I4, English, I4(5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("-5")), VT_I4, English, I4(-5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("5-")), VT_I4, English, I4(-5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("5+")), VT_I4, English, I4(5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("1.5-")), VT_R8, English, R8(-1.5)},

    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(5)")), VT_I4, English, I4(-5)},
    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(1.25)")), VT_R8, English, R8(-1.25)},

    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("$5")), VT_I4, English, I4(5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("$1,234.50")), VT_R8, English, R8(1234.5)},

    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1,234,567")), VT_I4, English, I4(1234567)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1,234.5")), VT_R8, English, R8(1234.5)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1.234.567")), VT_I4, German, I4(1234567)},

    {"ChangeType_PointWithoutDigitsOnOneSide_IsRead", Text(OLESTR(".5")), VT_R8, English, R8(0.5)},
    {"ChangeType_PointWithoutDigitsOnOneSide_IsRead", Text(OLESTR("5.")), VT_R8, English, R8(5)},
    {"ChangeType_PointWithoutDigitsOnOneSide_IsRead", Text(OLESTR("-.25")), VT_R8, English, R8(-0.25)},

    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1E5")), VT_R8, English, R8(1e5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1.5E+05")), VT_R8, English, R8(1.5e5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("25e-1")), VT_R8, English, R8(2.5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1E3")), VT_I4, English, I4(1000)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("12345E-2")), VT_I4, English, I4(123)},

    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&H1F")), VT_I4, English, I4(31)},
    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&h7fff")), VT_I4, English, I4(32767)},
    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&O17")), VT_I4, English, I4(15)},

    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(nullptr), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("   ")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("abc")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("12abc")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("1.2.3")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("-")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("--5")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("(5")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("5)")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("True")), VT_I4, English, DISP_E_TYPEMISMATCH},

    {"ChangeType_TextToReal_TakesTheNearest", Text(OLESTR("0.1")), VT_R8, English, R8(0.1)},
    {"ChangeType_TextToReal_TakesTheNearest", Text(OLESTR("0.1")), VT_R4, English, R4(0.1)},
    {"ChangeType_TextToReal_TakesTheNearest", Text(OLESTR("123456789.125")), VT_R8, English,
     R8(123456789.125)},

    {"ChangeType_DateToNumber_IsItsSerialNumber", Date(37623.25), VT_R8, English, R8(37623.25)},
    {"ChangeType_DateToNumber_IsItsSerialNumber", Date(37623.25), VT_I4, English, I4(37623)},
    {"ChangeType_DateToNumber_IsItsSerialNumber", Date(0), VT_BOOL, English, Bool(false)},
    {"ChangeType_DateToNumber_IsItsSerialNumber", Date(1), VT_BOOL, English, Bool(true)},
    {"ChangeType_NumberToDate_IsItsSerialNumber", R8(37623.25), VT_DATE, English, Date(37623.25)},
    {"ChangeType_NumberToDate_IsItsSerialNumber", I4(-10), VT_DATE, English, Date(-10)},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R8(3000000), VT_DATE, English, DISP_E_OVERFLOW},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R8(-700000), VT_DATE, English, DISP_E_OVERFLOW},

    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, English, Text(OLESTR("1/2/2003"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(1), VT_BSTR, English, Text(OLESTR("12/31/1899"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(-1), VT_BSTR, English, Text(OLESTR("12/29/1899"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, German, Text(OLESTR("02.01.2003"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.0 + 57906.0 / 86400.0), VT_BSTR, English,
     Text(OLESTR("1/2/2003 4:05:06 PM"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(-1.25), VT_BSTR, English,
     Text(OLESTR("12/29/1899 6:00:00 AM"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.0 + 57906.0 / 86400.0), VT_BSTR, German,
     Text(OLESTR("02.01.2003 16:05:06"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(57906.0 / 86400.0), VT_BSTR, English,
     Text(OLESTR("4:05:06 PM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(0), VT_BSTR, English, Text(OLESTR("12:00:00 AM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(0.5), VT_BSTR, English, Text(OLESTR("12:00:00 PM"))},

    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("1/2/2003")), VT_DATE, English,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("02.01.2003")), VT_DATE, German,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("2003-01-02")), VT_DATE, English,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("2003-01-02")), VT_DATE, German,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("1/2/2003 6:00:00 PM")), VT_DATE,
     English, Date(37623.75)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("2003-01-02 06:00:00")), VT_DATE,
     English, Date(37623.25)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("6:00:00 AM")), VT_DATE, English,
     Date(0.25)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("18:00")), VT_DATE, English,
     Date(0.75)},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("soon")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("99/99/2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("25:61")), VT_DATE, English, DISP_E_TYPEMISMATCH},
};

std::vector<std::string> NamesOfCases() {
    std::vector<std::string> names;
    for (const Case& row : Cases) {
        if (names.empty() || names.back() != row.name) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

void CheckIntoAnotherVariant(const Case& row) {
    const Value before = I4(4711);
    ScopedVariant source(row.source);
    ScopedVariant target(before);
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, row.locale, row.flags, row.type), row.expected.result);
    EXPECT_EQ(Describe(*target), Describe(FAILED(row.expected.result) ? before : row.expected.value));
    EXPECT_EQ(Describe(*source), Describe(row.source));
}

void CheckInPlace(const Case& row) {
    ScopedVariant value(row.source);
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, row.locale, row.flags, row.type), row.expected.result);
    EXPECT_EQ(Describe(*value), Describe(FAILED(row.expected.result) ? row.source : row.expected.value));
}

class VariantConversion : public testing::TestWithParam<std::string> {};

TEST_P(VariantConversion, Case) {
    for (const Case& row : Cases) {
        if (row.name == GetParam()) {
            SCOPED_TRACE(Describe(row.source) + " to type " + std::to_string(row.type) + " in locale " +
                         std::to_string(row.locale));
            CheckIntoAnotherVariant(row);
            CheckInPlace(row);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, VariantConversion, testing::ValuesIn(NamesOfCases()),
                         [](const auto& tested) { return tested.param; });

TEST(VariantConversionByReference, ChangeType_ReferenceToANumber_ConvertsWhatItRefersTo) {
    LONG referred = 42;
    ScopedVariant source;
    source->vt = VT_BYREF | VT_I4;
    source->plVal = &referred;
    ScopedVariant target;
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_BSTR), S_OK);
    EXPECT_EQ(Describe(*target), Describe(Text(OLESTR("42"))));
}

TEST(VariantConversionByReference, ChangeType_ReferenceOfTheSameType_CopiesWhatItRefersTo) {
    BSTR referred = SysAllocString(OLESTR("text"));
    ScopedVariant source;
    source->vt = VT_BYREF | VT_BSTR;
    source->pbstrVal = &referred;
    {
        ScopedVariant target;
        EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_BSTR), S_OK);
        EXPECT_EQ(Describe(*target), Describe(Text(OLESTR("text"))));
        EXPECT_NE(target->bstrVal, referred);
    }
    SysFreeString(referred);
}

TEST(VariantConversionByReference, ChangeType_ReferenceToAVariant_ConvertsItsValue) {
    ScopedVariant referred(R8(2.5));
    ScopedVariant source;
    source->vt = VT_BYREF | VT_VARIANT;
    source->pvarVal = &referred;
    ScopedVariant target;
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_I4), S_OK);
    EXPECT_EQ(Describe(*target), Describe(I4(2)));
}

TEST(VariantConversionOfArrays, ChangeType_ByteArrayToItsOwnType_CopiesTheBytes) {
    ScopedVariant source;
    source->vt = VT_ARRAY | VT_UI1;
    source->parray = SafeArrayCreateVector(VT_UI1, 0, 3);
    void* bytes = nullptr;
    ASSERT_EQ(SafeArrayAccessData(source->parray, &bytes), S_OK);
    static_cast<BYTE*>(bytes)[2] = 9;
    SafeArrayUnaccessData(source->parray);

    ScopedVariant target;
    ASSERT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_ARRAY | VT_UI1), S_OK);
    ASSERT_NE(target->parray, source->parray);
    void* copied = nullptr;
    ASSERT_EQ(SafeArrayAccessData(target->parray, &copied), S_OK);
    EXPECT_EQ(static_cast<BYTE*>(copied)[2], 9);
    SafeArrayUnaccessData(target->parray);
}

TEST(VariantConversionOfArrays, ChangeType_ByteArrayToANumber_IsRefused) {
    ScopedVariant source;
    source->vt = VT_ARRAY | VT_UI1;
    source->parray = SafeArrayCreateVector(VT_UI1, 0, 1);
    ScopedVariant target(I4(4711));
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Describe(*target), Describe(I4(4711)));
}

TEST(VariantConversionDefaultLocale, ChangeType_WithoutALocale_ReadsItsOwnText) {
    ScopedVariant value(R8(-1234.5));
    ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_R8), S_OK);
    EXPECT_EQ(Describe(*value), Describe(R8(-1234.5)));
}

}  // namespace
}  // namespace quillet::test
