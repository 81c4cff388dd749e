// Conversion between variant types: one table, the same for every port.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "Quillet/platform/Automation.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

struct Expected {
    HRESULT result;
    Value value;

    constexpr Expected(const Value& converted) : result(S_OK), value(converted) {}
    constexpr Expected(HRESULT failure) : result(failure) {}
};

// Rows of one name make one test. Where Wine is known to differ from the documented rule, the row expects the
// rule and also gives Wine's result, and a comment names the page with the rule.
struct Case {
    const char* name;
    Value source;
    VARTYPE type;
    LCID locale;
    Expected expected;
    USHORT flags = 0;
    std::optional<Expected> wine = std::nullopt;
};

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr long long LowestI8 = std::numeric_limits<long long>::min();

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

    {"ChangeType_ValueToNothing_IsDropped", I4(1), VT_EMPTY, English, Empty()},
    {"ChangeType_ValueToNothing_IsDropped", Date(37623.5), VT_EMPTY, English, Empty()},
    {"ChangeType_ValueToNothing_IsDropped", Text(OLESTR("abc")), VT_EMPTY, English, Empty()},
    {"ChangeType_ValueToNothing_IsDropped", Bool(true), VT_NULL, English, Null()},
    {"ChangeType_ValueToNothing_IsDropped", Text(OLESTR("")), VT_NULL, English, Null()},
    {"ChangeType_ValueToNothing_IsDropped", Empty(), VT_NULL, English, Null()},
    {"ChangeType_NullOrErrorToNothing_IsRefused", Null(), VT_EMPTY, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_NullOrErrorToNothing_IsRefused", Whole(VT_ERROR, 5), VT_EMPTY, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_NullOrErrorToNothing_IsRefused", Whole(VT_ERROR, 5), VT_NULL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_NullOrErrorToNothing_IsRefused", Whole(VT_ERROR, 5), VT_I4, English, DISP_E_TYPEMISMATCH},

    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), 15, English, DISP_E_BADVARTYPE},
    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), 0x1000 | VT_I4, English, DISP_E_BADVARTYPE},
    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), 0x8000 | VT_I4, English, DISP_E_BADVARTYPE},
    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), VT_ARRAY | 0x1000 | VT_I4, English,
     DISP_E_BADVARTYPE},
    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), VT_BYREF | 15, English, DISP_E_BADVARTYPE},
    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), VT_BYREF, English, DISP_E_BADVARTYPE},
    {"ChangeType_TypeThatDoesNotExist_IsRefused", I4(1), VT_ARRAY, English, DISP_E_BADVARTYPE},
    {"ChangeType_ToAReferenceOrAnotherArray_IsRefused", I4(1), VT_BYREF | VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ToAReferenceOrAnotherArray_IsRefused", I4(1), VT_ARRAY | VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ToAReferenceOrAnotherArray_IsRefused", I4(1), VT_ARRAY | VT_UI1, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ToAReferenceOrAnotherArray_IsRefused", I4(1), VT_VARIANT, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_NumberToAnInterfaceOrAnError_IsRefused", I4(1), VT_UNKNOWN, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_NumberToAnInterfaceOrAnError_IsRefused", I4(1), VT_DISPATCH, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_NumberToAnInterfaceOrAnError_IsRefused", I4(1), VT_ERROR, English, DISP_E_TYPEMISMATCH},

    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-128), VT_I1, English, Whole(VT_I1, -128)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(255), VT_UI1, English, Whole(VT_UI1, 255)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-32768), VT_I2, English, Whole(VT_I2, -32768)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(65535), VT_UI2, English, Whole(VT_UI2, 65535)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(7), VT_UI4, English, Whole(VT_UI4, 7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-7), VT_I8, English, Whole(VT_I8, -7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(7), VT_UI8, English, Whole(VT_UI8, 7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(-7), VT_INT, English, Whole(VT_INT, -7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", I4(7), VT_UINT, English, Whole(VT_UINT, 7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_INT, -7), VT_I4, English, I4(-7)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_UINT, 4294967295), VT_UI8, English,
     Whole(VT_UI8, 4294967295)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_UINT, 4294967295), VT_R8, English, R8(4294967295)},
    {"ChangeType_IntegerThatFits_KeepsItsValue", Whole(VT_UI8, -1), VT_R8, English,
     R8(18446744073709551616.0)},
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
    {"ChangeType_IntegerThatDoesNotFit_Overflows", I4(-1), VT_UI8, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_I8, 2147483648), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_UI4, 2147483648), VT_I2, English,
     DISP_E_OVERFLOW},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_UINT, 65536), VT_I2, English, DISP_E_OVERFLOW},

    // "Data Type Conversion APIs": VariantChangeType uses the functions VarUI4FromI4 and so on, and
    // "VarUI4FromI4 function" and similar pages say DISP_E_OVERFLOW, which Wine's functions return when they
    // are called. In VariantChangeType, Wine copies the bits between integers of one size, and the lower bits
    // of 64-bit integers to VT_UI2.
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_I1, -1), VT_UI1, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI1, 255)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_UI1, 128), VT_I1, English, DISP_E_OVERFLOW, 0,
     Whole(VT_I1, -128)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_I2, -1), VT_UI2, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI2, 65535)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_UI2, 32768), VT_I2, English, DISP_E_OVERFLOW, 0,
     Whole(VT_I2, -32768)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", I4(-1), VT_UI4, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI4, 4294967295)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", I4(-1), VT_UINT, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UINT, 4294967295)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_INT, -1), VT_UI4, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI4, 4294967295)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_UI4, 2147483648), VT_I4, English, DISP_E_OVERFLOW,
     0, I4(-2147483648LL)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_UINT, 2147483648), VT_INT, English,
     DISP_E_OVERFLOW, 0, Whole(VT_INT, -2147483648LL)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_I8, -1), VT_UI8, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI8, -1)},
    {"ChangeType_IntegerOfTheOtherSign_Overflows", Whole(VT_UI8, -1), VT_I8, English, DISP_E_OVERFLOW, 0,
     Whole(VT_I8, -1)},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_I8, 65537), VT_UI2, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI2, 1)},
    {"ChangeType_IntegerThatDoesNotFit_Overflows", Whole(VT_UI8, 65537), VT_UI2, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI2, 1)},

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
    {"ChangeType_RealOutOfRange_Overflows", R8(Infinity), VT_I4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(Infinity), VT_R4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealOutOfRange_Overflows", R8(0x1.FFFFFFp127), VT_R4, English, DISP_E_OVERFLOW},

    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(127.4), VT_I1, English,
     Whole(VT_I1, 127)},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(127.5), VT_I1, English, DISP_E_OVERFLOW},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(-128.5), VT_I1, English,
     Whole(VT_I1, -128)},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(2147483647.4), VT_I4, English,
     I4(2147483647)},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(2147483647.5), VT_I4, English,
     DISP_E_OVERFLOW},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(-2147483648.5), VT_I4, English,
     I4(-2147483648LL)},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(-0.5), VT_UI4, English,
     Whole(VT_UI4, 0)},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(-0.6), VT_UI4, English, DISP_E_OVERFLOW},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(9223372036854775808.0), VT_I8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(9223372036854775808.0), VT_UI8, English,
     Whole(VT_UI8, LowestI8)},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(18446744073709551616.0), VT_UI8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(3.4028235e38), VT_R4, English,
     R4(0x1.FFFFFEp127)},
    // "VarI8FromR8 function": DISP_E_OVERFLOW is for a result that does not fit, but the lowest integer does.
    {"ChangeType_RealAtTheEdge_IsRoundedBeforeTheRangeIsChecked", R8(-9223372036854775808.0), VT_I8, English,
     Whole(VT_I8, LowestI8), 0, DISP_E_OVERFLOW},

    // "VarI4FromR8 function" and similar pages: DISP_E_OVERFLOW is for what does not fit, and this is not an
    // integer. Wine's result depends on the compiler.
    {"ChangeType_NotANumberToInteger_Overflows", R8(NotANumber), VT_I2, English, DISP_E_OVERFLOW, 0,
     Whole(VT_I2, -1)},
    {"ChangeType_NotANumberToInteger_Overflows", R8(NotANumber), VT_I4, English, DISP_E_OVERFLOW, 0,
     I4(2147483647)},
    {"ChangeType_NotANumberToInteger_Overflows", R8(NotANumber), VT_UI8, English, DISP_E_OVERFLOW, 0,
     Whole(VT_UI8, 9223372036854775807)},
    {"ChangeType_NotANumberToInteger_Overflows", R4(NotANumber), VT_I4, English, DISP_E_OVERFLOW, 0,
     I4(2147483647)},
    {"ChangeType_NotANumberToInteger_Overflows", Date(NotANumber), VT_I4, English, DISP_E_OVERFLOW, 0,
     I4(2147483647)},
    // "SystemTimeToVariantTime function": a date lies between January 1, 100 and December 31, 9999. Wine
    // accepts this, and writes it as day 0.
    {"ChangeType_NotANumberToDate_Overflows", R8(NotANumber), VT_DATE, English, DISP_E_OVERFLOW, 0,
     Date(NotANumber)},
    {"ChangeType_NotANumberToDate_Overflows", R4(NotANumber), VT_DATE, English, DISP_E_OVERFLOW, 0,
     Date(NotANumber)},
    {"ChangeType_DateThatIsNotANumberToText_IsRefused", Date(NotANumber), VT_BSTR, English, E_INVALIDARG, 0,
     Text(OLESTR("12/30/1899 12:00:00 AM"))},
    {"ChangeType_NotANumberToRealOrBool_Stays", R8(NotANumber), VT_R4, English, R4(NotANumber)},
    {"ChangeType_NotANumberToRealOrBool_Stays", R4(NotANumber), VT_R8, English, R8(NotANumber)},
    {"ChangeType_NotANumberToRealOrBool_Stays", R8(NotANumber), VT_BOOL, English, Bool(true)},

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
    {"ChangeType_TrueToUnsigned_SetsAllBits", Bool(true), VT_UINT, English, Whole(VT_UINT, 4294967295)},

    {"ChangeType_BoolToText_IsANumber", Bool(true), VT_BSTR, English, Text(OLESTR("-1"))},
    {"ChangeType_BoolToText_IsANumber", Bool(false), VT_BSTR, English, Text(OLESTR("0"))},
    {"ChangeType_BoolToText_IsANumber", Whole(VT_BOOL, 1), VT_BSTR, English, Text(OLESTR("1"))},
    {"ChangeType_BoolToTextWithAlphaFlag_IsAWord", Bool(true), VT_BSTR, English, Text(OLESTR("True")),
     VARIANT_ALPHABOOL},
    {"ChangeType_BoolToTextWithAlphaFlag_IsAWord", Bool(false), VT_BSTR, English, Text(OLESTR("False")),
     VARIANT_ALPHABOOL},
    {"ChangeType_BoolToTextWithAlphaFlag_IsAWord", Whole(VT_BOOL, 1), VT_BSTR, English, Text(OLESTR("True")),
     VARIANT_ALPHABOOL},
    {"ChangeType_BoolToTextWithAlphaFlag_IsEnglishInEveryLocale", Bool(true), VT_BSTR, German,
     Text(OLESTR("True")), VARIANT_ALPHABOOL},
    {"ChangeType_AlphaFlag_DoesNotTouchOtherValues", I4(-1), VT_BSTR, English, Text(OLESTR("-1")),
     VARIANT_ALPHABOOL},
    {"ChangeType_AlphaFlag_DoesNotTouchOtherValues", Bool(true), VT_I4, English, I4(-1), VARIANT_ALPHABOOL},

    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("True")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("tRUE")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("false")), VT_BOOL, English, Bool(false)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("#TRUE#")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("#FALSE#")), VT_BOOL, English, Bool(false)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("0")), VT_BOOL, English, Bool(false)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("2")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("-1")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("0.1")), VT_BOOL, English, Bool(true)},
    {"ChangeType_TextToBool_ReadsWordsAndNumbers", Text(OLESTR("true")), VT_BOOL, German, Bool(true)},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("yes")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("Truer")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(nullptr), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR(" True")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("#true#")), VT_BOOL, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextToBool_RefusesOtherText", Text(OLESTR("1E400")), VT_BOOL, English, DISP_E_OVERFLOW},

    {"ChangeType_IntegerToText_IsDecimal", I4(0), VT_BSTR, English, Text(OLESTR("0"))},
    {"ChangeType_IntegerToText_IsDecimal", I4(1234567), VT_BSTR, English, Text(OLESTR("1234567"))},
    {"ChangeType_IntegerToText_IsDecimal", I4(1234567), VT_BSTR, German, Text(OLESTR("1234567"))},
    {"ChangeType_IntegerToText_IsDecimal", I4(-2147483648LL), VT_BSTR, English, Text(OLESTR("-2147483648"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_I1, -128), VT_BSTR, English, Text(OLESTR("-128"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UI1, 255), VT_BSTR, English, Text(OLESTR("255"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_I2, -32768), VT_BSTR, English, Text(OLESTR("-32768"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UI2, 65535), VT_BSTR, English, Text(OLESTR("65535"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_INT, -1), VT_BSTR, English, Text(OLESTR("-1"))},
    {"ChangeType_IntegerToText_IsDecimal", Whole(VT_UINT, 4294967295), VT_BSTR, English,
     Text(OLESTR("4294967295"))},
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
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(99999999999999.95), VT_BSTR, English,
     Text(OLESTR("100000000000000"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(0.99999999999999989), VT_BSTR, English,
     Text(OLESTR("1"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R8(-0.0), VT_BSTR, English, Text(OLESTR("0"))},
    {"ChangeType_DoubleToText_HasFifteenDigits", R4(-0.0), VT_BSTR, English, Text(OLESTR("0"))},
    // "printf": a number exactly half way is rounded to even since Windows 10 version 2004, and up before.
    // Wine rounds up.
    {"ChangeType_DoubleToText_RoundsHalfToEven", R8(642678187955234.5), VT_BSTR, English,
     Text(OLESTR("642678187955234")), 0, Text(OLESTR("642678187955235"))},
    {"ChangeType_DoubleToText_RoundsHalfToEven", R8(642678187955235.5), VT_BSTR, English,
     Text(OLESTR("642678187955236"))},
    {"ChangeType_DoubleToText_RoundsHalfToEven", R4(4699294.5), VT_BSTR, English, Text(OLESTR("4699294")), 0,
     Text(OLESTR("4699295"))},
    // "printf Type Field Characters" of the run-time library before Visual Studio 2015; oleaut32 writes
    // infinities as that did. Wine uses the words of the newer one.
    {"ChangeType_InfinityToText_IsANumberSign", R8(Infinity), VT_BSTR, English, Text(OLESTR("1.#INF")), 0,
     Text(OLESTR("INF"))},
    {"ChangeType_InfinityToText_IsANumberSign", R8(-Infinity), VT_BSTR, English, Text(OLESTR("-1.#INF")), 0,
     Text(OLESTR("-INF"))},
    {"ChangeType_InfinityToText_IsANumberSign", R4(Infinity), VT_BSTR, English, Text(OLESTR("1.#INF")), 0,
     Text(OLESTR("INF"))},
    // The same for NaN: 0/0 is -1.#IND, because the processor sets the sign.
    {"ChangeType_NotANumberToText_IsANumberSign", R8(-NotANumber), VT_BSTR, English, Text(OLESTR("-1.#IND")),
     0, Text(OLESTR("-NAN(IND)"))},
    {"ChangeType_NotANumberToText_IsANumberSign", R4(-NotANumber), VT_BSTR, English, Text(OLESTR("-1.#IND")),
     0, Text(OLESTR("-NAN(IND)"))},
    {"ChangeType_NotANumberToText_IsANumberSign", R8(NotANumber), VT_BSTR, English, Text(OLESTR("1.#QNAN")),
     0, Text(OLESTR("NAN"))},
    // With the locale's separator, like every real number.
    {"ChangeType_NotANumberToText_IsANumberSign", R4(NotANumber), VT_BSTR, German, Text(OLESTR("1,#QNAN")), 0,
     Text(OLESTR("NAN"))},
    {"ChangeType_InfinityToText_IsANumberSign", R8(-Infinity), VT_BSTR, German, Text(OLESTR("-1,#INF")), 0,
     Text(OLESTR("-INF"))},

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
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(999999999999999.9), VT_BSTR, English,
     Text(OLESTR("1E+15"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(1e308), VT_BSTR, English, Text(OLESTR("1E+308"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(1.7976931348623157e308), VT_BSTR, English,
     Text(OLESTR("1.79769313486232E+308"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R8(4.9406564584124654e-324), VT_BSTR, English,
     Text(OLESTR("4.94065645841247E-324"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R4(0x1.FFFFFEp127), VT_BSTR, English,
     Text(OLESTR("3.402823E+38"))},
    {"ChangeType_LargeOrSmallRealToText_HasAnExponent", R4(0x1p-149), VT_BSTR, English,
     Text(OLESTR("1.401298E-45"))},

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
    // "VarBstrFromR8 function" takes the locale, and "LOCALE_SDECIMAL" is its decimal separator. Wine does
    // not use it where there is an exponent.
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R8(1.5e20), VT_BSTR, German,
     Text(OLESTR("1,5E+20")), 0, Text(OLESTR("1.5E+20"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R4(2.5e-10), VT_BSTR, French,
     Text(OLESTR("2,5E-10")), 0, Text(OLESTR("2.5E-10"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", R8(1e20), VT_BSTR, German,
     Text(OLESTR("1E+20"))},
    {"ChangeType_RealInACommaLocale_IsWrittenAndReadWithAComma", Text(OLESTR("1,5E+2")), VT_R8, German,
     R8(150)},
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
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1E309")), VT_R8, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("-1E400")), VT_R8, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1E99999999999")), VT_R8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1E99999999999999999999")), VT_R8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("1.7976931348623159E308")), VT_R8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("-1")), VT_UINT, English, DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("9223372036854775807.5")), VT_I8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_TextBeyondTheRange_Overflows", Text(OLESTR("18446744073709551616")), VT_UI8, English,
     DISP_E_OVERFLOW},

    {"ChangeType_TextTooSmallForADouble_IsZero", Text(OLESTR("1E-400")), VT_R8, English, R8(0)},
    {"ChangeType_TextTooSmallForADouble_IsZero", Text(OLESTR("-1E-400")), VT_R8, English, R8(-0.0)},
    {"ChangeType_TextTooSmallForADouble_IsZero", Text(OLESTR("1E-99999999999")), VT_R8, English, R8(0)},
    {"ChangeType_TextTooSmallForADouble_IsZero", Text(OLESTR("0E99999999999")), VT_R8, English, R8(0)},
    {"ChangeType_TextTooSmallForADouble_IsZero", Text(OLESTR("1E-99999999999999999999")), VT_R8, English,
     R8(0)},
    {"ChangeType_TextTooSmallForADouble_IsZero", Text(OLESTR("0E99999999999999999999")), VT_R8, English,
     R8(0)},
    // "VarR4FromStr function": DISP_E_OVERFLOW is for a result that does not fit, but zero does; Wine returns
    // zero for the double of the same value, and where the text is too small for a double as well.
    {"ChangeType_TextTooSmallForAFloat_IsZero", Text(OLESTR("1E-60")), VT_R4, English, R4(0), 0,
     DISP_E_OVERFLOW},
    {"ChangeType_TextTooSmallForAFloat_IsZero", Text(OLESTR("-1E-60")), VT_R4, English, R4(-0.0), 0,
     DISP_E_OVERFLOW},
    {"ChangeType_TextTooSmallForAFloat_IsZero", Text(OLESTR("1E-400")), VT_R4, English, R4(0)},
    {"ChangeType_TextTooSmallForAFloat_IsZero", R8(1e-60), VT_R4, English, R4(0)},
    {"ChangeType_TextTooSmallForAFloat_IsZero", R8(-1e-60), VT_R4, English, R4(-0.0)},
    // "VarR8FromStr function", "VarR4FromStr function": the value converted. Wine multiplies by one power of
    // ten after the other, and rounds each time.
    {"ChangeType_TextOfTheLargestAndTheSmallestNumber_IsRead", Text(OLESTR("1.7976931348623157E308")), VT_R8,
     English, R8(std::numeric_limits<double>::max()), 0, DISP_E_OVERFLOW},
    {"ChangeType_TextOfTheLargestAndTheSmallestNumber_IsRead", Text(OLESTR("1E308")), VT_R8, English,
     R8(1e308), 0, R8(9.9999999999999981e307)},
    {"ChangeType_TextOfTheLargestAndTheSmallestNumber_IsRead", Text(OLESTR("4.94E-324")), VT_R8, English,
     R8(std::numeric_limits<double>::denorm_min()), 0, R8(0)},
    {"ChangeType_TextOfTheLargestAndTheSmallestNumber_IsRead", Text(OLESTR("1E-45")), VT_R4, English,
     R4(static_cast<double>(std::numeric_limits<float>::denorm_min())), 0, DISP_E_OVERFLOW},
    {"ChangeType_TextOfTheLargestAndTheSmallestNumber_IsRead", Text(OLESTR("3.4028235E38")), VT_R4, English,
     R4(static_cast<double>(std::numeric_limits<float>::max()))},
    {"ChangeType_NegativeZeroText_KeepsItsSignInAReal", Text(OLESTR("-0")), VT_R8, English, R8(-0.0)},
    {"ChangeType_NegativeZeroText_KeepsItsSignInAReal", Text(OLESTR("(0.0)")), VT_R8, English, R8(-0.0)},
    {"ChangeType_NegativeZeroText_KeepsItsSignInAReal", Text(OLESTR("-0")), VT_R4, English, R4(-0.0)},
    {"ChangeType_NegativeZeroText_KeepsItsSignInAReal", Text(OLESTR("-0")), VT_UI1, English,
     Whole(VT_UI1, 0)},

    {"ChangeType_TextAtTheEdge_IsRoundedBeforeTheRangeIsChecked", Text(OLESTR("127.4")), VT_I1, English,
     Whole(VT_I1, 127)},
    {"ChangeType_TextAtTheEdge_IsRoundedBeforeTheRangeIsChecked", Text(OLESTR("127.5")), VT_I1, English,
     DISP_E_OVERFLOW},
    {"ChangeType_TextAtTheEdge_IsRoundedBeforeTheRangeIsChecked", Text(OLESTR("-128.5")), VT_I1, English,
     Whole(VT_I1, -128)},
    {"ChangeType_TextAtTheEdge_IsRoundedBeforeTheRangeIsChecked", Text(OLESTR("-0.5")), VT_UI4, English,
     Whole(VT_UI4, 0)},

    {"ChangeType_LongText_IsReadWhole", Text(OLESTR("000000000000000000000000000000000000000007")), VT_I4,
     English, I4(7)},
    {"ChangeType_LongText_IsReadWhole", Text(OLESTR("7.0000000000000000000000000000000000000000")), VT_I4,
     English, I4(7)},
    {"ChangeType_LongText_IsReadWhole", Text(OLESTR("2.50000000000000000000000000000000000000001")), VT_I4,
     English, I4(3)},
    {"ChangeType_LongText_IsReadWhole", Text(OLESTR("12345678901234567")), VT_I8, English,
     Whole(VT_I8, 12345678901234567)},
    {"ChangeType_LongText_IsReadWhole", Text(OLESTR("1234567890123456789012345678")), VT_UI8, English,
     DISP_E_OVERFLOW},

    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("  42")), VT_I4, English, I4(42)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("42  ")), VT_I4, English, I4(42)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("\t-4.5 ")), VT_R8, English, R8(-4.5)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("\r\n\v\f5\r\n")), VT_I4, English, I4(5)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("\u00A05\u2003")), VT_I4, English, I4(5)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("\u30005\u202F")), VT_I4, English, I4(5)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("- 5")), VT_I4, English, I4(-5)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR("5 -")), VT_I4, English, I4(-5)},
    {"ChangeType_BlanksAroundANumber_AreIgnored", Text(OLESTR(" ( 5 ) ")), VT_I4, English, I4(-5)},
    {"ChangeType_BlanksInsideANumber_AreRefused", Text(OLESTR("5 5")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_BlanksInsideANumber_AreRefused", Text(OLESTR("1 E5")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_BlanksInsideANumber_AreRefused", Text(OLESTR("1E 5")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_BlanksInsideANumber_AreRefused", Text(OLESTR("1. 5")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_BlanksInsideANumber_AreRefused", Text(OLESTR("\u200B5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},

    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("+5")), VT_I4, English, I4(5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("-5")), VT_I4, English, I4(-5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("5-")), VT_I4, English, I4(-5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("5+")), VT_I4, English, I4(5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("1.5-")), VT_R8, English, R8(-1.5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("+5-")), VT_R8, English, R8(-5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("-5+")), VT_R8, English, R8(-5)},
    {"ChangeType_SignOnEitherSide_Counts", Text(OLESTR("+-5")), VT_R8, English, R8(-5)},
    {"ChangeType_SameSignTwice_IsRefused", Text(OLESTR("-5-")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_SameSignTwice_IsRefused", Text(OLESTR("+5+")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_SameSignTwice_IsRefused", Text(OLESTR("--5")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_SameSignTwice_IsRefused", Text(OLESTR("++5")), VT_I4, English, DISP_E_TYPEMISMATCH},

    // "VarParseNumFromStr function": a flag allows a mark in one place, and a second one is not part of the
    // number, as in front of it. Wine skips further marks after the digits.
    {"ChangeType_MarkRepeatedBehindANumber_IsRefused", Text(OLESTR("5--")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(-5)},
    {"ChangeType_MarkRepeatedBehindANumber_IsRefused", Text(OLESTR("5++")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(5)},
    {"ChangeType_MarkRepeatedBehindANumber_IsRefused", Text(OLESTR("5$$")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(5)},
    {"ChangeType_MarkRepeatedBehindANumber_IsRefused", Text(OLESTR("(5))")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(-5)},
    {"ChangeType_MarkRepeatedBehindANumber_IsRefused", Text(OLESTR("&H1--")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(1)},
    // The same page: NUMPRS_THOUSANDS is for the digits of the number.
    {"ChangeType_ThousandsSeparatorBehindTheDigits_IsRefused", Text(OLESTR("5-,")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(-5)},
    {"ChangeType_ThousandsSeparatorBehindTheDigits_IsRefused", Text(OLESTR("5 ,")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(5)},
    {"ChangeType_ThousandsSeparatorBehindTheDigits_IsRefused", Text(OLESTR("1E1,000")), VT_R8, English,
     DISP_E_TYPEMISMATCH, 0, R8(10000)},

    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(5)")), VT_I4, English, I4(-5)},
    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(1.25)")), VT_R8, English, R8(-1.25)},
    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(5E1)")), VT_R8, English, R8(-50)},
    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(-5)")), VT_R8, English, R8(-5)},
    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("-(5)")), VT_R8, English, R8(-5)},
    {"ChangeType_Brackets_MakeItNegative", Text(OLESTR("(5)+")), VT_R8, English, R8(-5)},
    {"ChangeType_BracketsThatDoNotMatch_AreRefused", Text(OLESTR("(5")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_BracketsThatDoNotMatch_AreRefused", Text(OLESTR("5)")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_BracketsThatDoNotMatch_AreRefused", Text(OLESTR("((5))")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_BracketsThatDoNotMatch_AreRefused", Text(OLESTR("()")), VT_I4, English, DISP_E_TYPEMISMATCH},
    // "VarParseNumFromStr function": DISP_E_TYPEMISMATCH is also for an opening parenthesis without a closing
    // one. Wine accepts any minus sign for it.
    {"ChangeType_BracketsThatDoNotMatch_AreRefused", Text(OLESTR("(5-")), VT_R8, English, DISP_E_TYPEMISMATCH,
     0, R8(-5)},
    {"ChangeType_BracketsThatDoNotMatch_AreRefused", Text(OLESTR("-(5")), VT_R8, English, DISP_E_TYPEMISMATCH,
     0, R8(-5)},

    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("$5")), VT_I4, English, I4(5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("5 $")), VT_I4, English, I4(5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("-$5")), VT_I4, English, I4(-5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("$-5")), VT_I4, English, I4(-5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("($5.5)")), VT_R8, English, R8(-5.5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("$.5")), VT_R8, English, R8(0.5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("$1,234.50")), VT_R8, English, R8(1234.5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("-5,5 \u20AC")), VT_R8, German, R8(-5.5)},
    {"ChangeType_CurrencySign_IsIgnored", Text(OLESTR("\u20AC5")), VT_I4, French, I4(5)},
    {"ChangeType_CurrencySignAlone_IsRefused", Text(OLESTR("$")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_CurrencySignTwiceInFront_IsRefused", Text(OLESTR("$$5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_CurrencySignOfAnotherLocale_IsRefused", Text(OLESTR("$5")), VT_R8, German,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_CurrencySignOfAnotherLocale_IsRefused", Text(OLESTR("\u20AC5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},

    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1,234,567")), VT_I4, English, I4(1234567)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1,234.5")), VT_R8, English, R8(1234.5)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1.234.567")), VT_I4, German, I4(1234567)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1 234 567,5")), VT_R8, French, R8(1234567.5)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1\u00A0234")), VT_I4, French, I4(1234)},
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1 234")), VT_I4, French, I4(1234)},
    // "LOCALE_STHOUSAND": the character in the locale's data. Current French data has U+202F; Wine's has
    // U+00A0.
    {"ChangeType_ThousandsSeparators_AreIgnored", Text(OLESTR("1\u202F234")), VT_I4, French, I4(1234), 0,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("1,2,3")), VT_I4, English,
     I4(123)},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("1,,2")), VT_I4, English,
     I4(12)},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("5,")), VT_I4, English, I4(5)},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("1,.5")), VT_R8, English,
     R8(1.5)},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("1.2,5")), VT_R8, English,
     R8(1.25)},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("1,E3")), VT_R8, English,
     R8(1000)},
    {"ChangeType_ThousandsSeparatorsBehindADigit_StandAnywhere", Text(OLESTR("1.5")), VT_I4, German, I4(15)},
    {"ChangeType_ThousandsSeparatorInFront_IsRefused", Text(OLESTR(",5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ThousandsSeparatorInFront_IsRefused", Text(OLESTR("-,5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ThousandsSeparatorOfAnotherLocale_IsRefused", Text(OLESTR("1 234")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_ThousandsSeparatorOfAnotherLocale_IsRefused", Text(OLESTR("1'234")), VT_I4, English,
     DISP_E_TYPEMISMATCH},

    {"ChangeType_PointWithoutDigitsOnOneSide_IsRead", Text(OLESTR(".5")), VT_R8, English, R8(0.5)},
    {"ChangeType_PointWithoutDigitsOnOneSide_IsRead", Text(OLESTR("5.")), VT_R8, English, R8(5)},
    {"ChangeType_PointWithoutDigitsOnOneSide_IsRead", Text(OLESTR("-.25")), VT_R8, English, R8(-0.25)},

    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1E5")), VT_R8, English, R8(1e5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1.5E+05")), VT_R8, English, R8(1.5e5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("25e-1")), VT_R8, English, R8(2.5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1E3")), VT_I4, English, I4(1000)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("12345E-2")), VT_I4, English, I4(123)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR(".5E1")), VT_R8, English, R8(5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("5.E1")), VT_R8, English, R8(50)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1E0000000000000000005")), VT_R8, English, R8(1e5)},
    {"ChangeType_Exponent_ShiftsThePoint", Text(OLESTR("1E1-")), VT_R8, English, R8(-10)},
    {"ChangeType_ExponentWithoutDigits_IsRefused", Text(OLESTR("1E")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_ExponentWithoutDigits_IsRefused", Text(OLESTR("1E+")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_ExponentWithoutDigits_IsRefused", Text(OLESTR("1E-")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_ExponentWithoutANumber_IsRefused", Text(OLESTR("E5")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_ExponentWithoutANumber_IsRefused", Text(OLESTR(".E5")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_ExponentWithAFraction_IsRefused", Text(OLESTR("1E5.5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_OtherLetterForTheExponent_IsRefused", Text(OLESTR("1D5")), VT_R8, English,
     DISP_E_TYPEMISMATCH},

    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&H1F")), VT_I4, English, I4(31)},
    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&h7fff")), VT_I4, English, I4(32767)},
    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&O17")), VT_I4, English, I4(15)},
    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR(" &HFF ")), VT_R8, English, R8(255)},
    {"ChangeType_HexAndOctalPrefix_ChooseTheBase", Text(OLESTR("&HFFFF")), VT_I4, English, I4(65535)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFF")), VT_I1, English,
     Whole(VT_I1, -1)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFFFF")), VT_I2, English,
     Whole(VT_I2, -1)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&O37777777777")), VT_I4, English,
     I4(-1)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&H80000000")), VT_R8, English,
     R8(-2147483648.0)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&H8000000000000000")), VT_I8, English,
     Whole(VT_I8, LowestI8)},
    // "VarNumFromParseNum function": the number gets a type that can hold it. Of the negative 32-bit numbers
    // Wine takes only the lowest as a real, and refuses what is close to 64 set bits.
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFFFFFFFF")), VT_R8, English, R8(-1),
     0, DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFFFFFFFF")), VT_R4, English, R4(-1),
     0, DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFFFFFFFF")), VT_I4, English,
     I4(-1)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFFFFFFFF")), VT_I8, English,
     Whole(VT_I8, 4294967295)},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HFFFFFFFFFFFFFFFF")), VT_I8, English,
     Whole(VT_I8, -1), 0, DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&O1777777777777777777777")), VT_UI8,
     English, Whole(VT_UI8, -1), 0, DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalDigits_AreTheBitsOfTheResult", Text(OLESTR("&HF000000000000000")), VT_I8, English,
     Whole(VT_I8, -0x1000000000000000)},
    // "NUMPARSE structure": only decimal numbers have a sign.
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("-&H1")), VT_I4, English, I4(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("+&H1")), VT_I4, English, I4(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("+-&H1")), VT_I4, English, I4(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("- &H1 ")), VT_R8, English, R8(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("&H1-")), VT_I4, English, I4(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("&H1 +")), VT_R8, English, R8(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("+&O17-")), VT_I4, English, I4(15)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("(&H1)")), VT_I4, English, I4(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("-(&H1)")), VT_I4, English, I4(1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("&HFFFFFFFF-")), VT_I4, English, I4(-1)},
    {"ChangeType_MarksAroundHexAndOctal_MeanNothing", Text(OLESTR("-&H80000000")), VT_I4, English,
     I4(-2147483648LL)},
    {"ChangeType_HexAndOctalBeyondTheBits_Overflow", Text(OLESTR("&H10000")), VT_I2, English,
     DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalBeyondTheBits_Overflow", Text(OLESTR("&H100000000")), VT_R8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalBeyondTheBits_Overflow", Text(OLESTR("&H10000000000000000")), VT_I8, English,
     DISP_E_OVERFLOW},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&H")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&HG")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&O8")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&B1")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("& H1")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&H-1")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("-&H1-")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("--&H1")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("(&H1")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&H1)")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("$&H1")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&H1$")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&H1,0")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("&H1.5")), VT_I4, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_HexAndOctalThatIsNoNumber_IsRefused", Text(OLESTR("0x10")), VT_I4, English,
     DISP_E_TYPEMISMATCH},

    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(nullptr), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("   ")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("abc")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("12abc")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("1.2.3")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("-")), VT_I4, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("+")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR(".")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("5%")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("1.#INF")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("INF")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("NaN")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("\uFF15")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("\u0665")), VT_R8, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoNumber_IsRefused", Text(OLESTR("\u22125")), VT_R8, English, DISP_E_TYPEMISMATCH},
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
    {"ChangeType_NumberToDate_IsItsSerialNumber", R8(-657434), VT_DATE, English, Date(-657434)},
    {"ChangeType_NumberToDate_IsItsSerialNumber", R8(-657434.75), VT_DATE, English, Date(-657434.75)},
    {"ChangeType_NumberToDate_IsItsSerialNumber", R8(2958465.75), VT_DATE, English, Date(2958465.75)},
    {"ChangeType_NumberToDate_IsItsSerialNumber", Bool(true), VT_DATE, English, Date(-1)},
    {"ChangeType_NumberToDate_IsItsSerialNumber", R4(37623.5), VT_DATE, English, Date(37623.5)},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R8(3000000), VT_DATE, English, DISP_E_OVERFLOW},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R8(-700000), VT_DATE, English, DISP_E_OVERFLOW},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R8(2958466), VT_DATE, English, DISP_E_OVERFLOW},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R8(-657435), VT_DATE, English, DISP_E_OVERFLOW},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", I4(3000000), VT_DATE, English, DISP_E_OVERFLOW},
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", Whole(VT_UI8, -1), VT_DATE, English,
     DISP_E_OVERFLOW},
    // "SystemTimeToVariantTime function": a date lies between January 1, 100 and December 31, 9999. Wine does
    // not check the range of a VT_R4.
    {"ChangeType_NumberBeyondTheCalendarToDate_Overflows", R4(3000000), VT_DATE, English, DISP_E_OVERFLOW, 0,
     Date(3000000)},

    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, English, Text(OLESTR("1/2/2003"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(1), VT_BSTR, English, Text(OLESTR("12/31/1899"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(-1), VT_BSTR, English, Text(OLESTR("12/29/1899"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(60), VT_BSTR, English, Text(OLESTR("2/28/1900"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(61), VT_BSTR, English, Text(OLESTR("3/1/1900"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(2958465), VT_BSTR, English, Text(OLESTR("12/31/9999"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, French, Text(OLESTR("02/01/2003"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, Swedish, Text(OLESTR("2003-01-02"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, LOCALE_INVARIANT,
     Text(OLESTR("01/02/2003"))},
    {"ChangeType_DateToText_IsTheShortDate", Date(37974), VT_BSTR, German, Text(OLESTR("19.12.2003"))},
    // "DateTime.ToString Method" lists 01.10.2008 as the short date of de-DE. Wine's locale data has it
    // without zeros.
    {"ChangeType_DateToText_IsTheShortDate", Date(37623), VT_BSTR, German, Text(OLESTR("02.01.2003")), 0,
     Text(OLESTR("2.1.2003"))},
    // "Day, Month, Year, and Era Format Pictures": yyyy are four digits. Wine writes as many as the year has.
    {"ChangeType_DateToText_IsTheShortDate", Date(-657434), VT_BSTR, English, Text(OLESTR("1/1/0100")), 0,
     Text(OLESTR("1/1/100"))},
    {"ChangeType_DateBeyondTheCalendarToText_IsRefused", Date(2958466), VT_BSTR, English, E_INVALIDARG},
    {"ChangeType_DateBeyondTheCalendarToText_IsRefused", Date(-657435), VT_BSTR, English, E_INVALIDARG},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.0 + 57906.0 / 86400.0), VT_BSTR, English,
     Text(OLESTR("1/2/2003 4:05:06 PM"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(-1.25), VT_BSTR, English,
     Text(OLESTR("12/29/1899 6:00:00 AM"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.0 + 57906.0 / 86400.0), VT_BSTR, German,
     Text(OLESTR("02.01.2003 16:05:06")), 0, Text(OLESTR("2.1.2003 16:05:06"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.25), VT_BSTR, French,
     Text(OLESTR("02/01/2003 06:00:00"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.75), VT_BSTR, Swedish,
     Text(OLESTR("2003-01-02 18:00:00"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.75), VT_BSTR, LOCALE_INVARIANT,
     Text(OLESTR("01/02/2003 18:00:00"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.0 + 0.25 / 86400.0), VT_BSTR, English,
     Text(OLESTR("1/2/2003 12:00:00 AM"))},
    {"ChangeType_DateWithTimeToText_HasBoth", Date(37623.0 + 86399.9 / 86400.0), VT_BSTR, English,
     Text(OLESTR("1/3/2003 12:00:00 AM"))},
    // "SystemTimeToVariantTime function": no date is after December 31, 9999.
    {"ChangeType_DateWithTimeToText_HasBoth", Date(2958465.0 + 86399.9 / 86400.0), VT_BSTR, English,
     Text(OLESTR("12/31/9999 11:59:59 PM")), 0, Text(OLESTR("1/1/10000 12:00:00 AM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(57906.0 / 86400.0), VT_BSTR, English,
     Text(OLESTR("4:05:06 PM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(0), VT_BSTR, English, Text(OLESTR("12:00:00 AM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(0.5), VT_BSTR, English, Text(OLESTR("12:00:00 PM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(-0.25), VT_BSTR, English, Text(OLESTR("6:00:00 AM"))},
    {"ChangeType_DateZeroToText_IsItsTimeAlone", Date(0.75), VT_BSTR, German, Text(OLESTR("18:00:00"))},

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
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("2.1.2003 18:00")), VT_DATE, German,
     Date(37623.75)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("02/01/2003 18:00:00")), VT_DATE,
     French, Date(37623.75)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("2003-01-02")), VT_DATE, French,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("2003-01-02 06:00:00")), VT_DATE,
     Swedish, Date(37623.25)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("01/02/2003")), VT_DATE,
     LOCALE_INVARIANT, Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("1-2-2003")), VT_DATE, English,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("1-2-2003")), VT_DATE, German,
     Date(37653)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR(" 1 / 2 / 2003\n")), VT_DATE, English,
     Date(37623)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("1/2/2003\t6:00")), VT_DATE, English,
     Date(37623.25)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("12/29/1899 6:00:00 AM")), VT_DATE,
     English, Date(-1.25)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("1/1/100")), VT_DATE, English,
     Date(-657434)},
    {"ChangeType_TextToDate_ReadsLocalAndYearFirstForms", Text(OLESTR("12/31/9999")), VT_DATE, English,
     Date(2958465)},

    {"ChangeType_TextThatIsNoDateInLocalOrder_IsReadInAnother", Text(OLESTR("31/12/2003")), VT_DATE, English,
     Date(37986)},
    {"ChangeType_TextThatIsNoDateInLocalOrder_IsReadInAnother", Text(OLESTR("12/31/2003")), VT_DATE, French,
     Date(37986)},
    {"ChangeType_TextThatIsNoDateInLocalOrder_IsReadInAnother", Text(OLESTR("1/2/2003")), VT_DATE, Swedish,
     Date(37623)},
    {"ChangeType_TextThatIsNoDateInLocalOrder_IsReadInAnother", Text(OLESTR("2003-13-01")), VT_DATE, English,
     Date(37634)},
    {"ChangeType_TextThatIsNoDateInLocalOrder_IsReadInAnother", Text(OLESTR("31/12/1")), VT_DATE, English,
     Date(48183)},

    {"ChangeType_YearOfTwoDigits_LiesBetween1950And2049", Text(OLESTR("1/2/03")), VT_DATE, English,
     Date(37623)},
    {"ChangeType_YearOfTwoDigits_LiesBetween1950And2049", Text(OLESTR("1/2/49")), VT_DATE, English,
     Date(54425)},
    {"ChangeType_YearOfTwoDigits_LiesBetween1950And2049", Text(OLESTR("1/2/50")), VT_DATE, English,
     Date(18265)},
    {"ChangeType_YearOfTwoDigits_LiesBetween1950And2049", Text(OLESTR("02.01.99")), VT_DATE, German,
     Date(36162)},

    {"ChangeType_TimeText_HasOptionalParts", Text(OLESTR("1/2/2003 6 pm")), VT_DATE, English, Date(37623.75)},
    {"ChangeType_TimeText_HasOptionalParts", Text(OLESTR("6PM")), VT_DATE, English, Date(0.75)},
    {"ChangeType_TimeText_HasOptionalParts", Text(OLESTR("12:00 AM")), VT_DATE, English, Date(0)},
    {"ChangeType_TimeText_HasOptionalParts", Text(OLESTR("12:00 PM")), VT_DATE, English, Date(0.5)},
    {"ChangeType_TimeText_HasOptionalParts", Text(OLESTR("18:00 PM")), VT_DATE, English, Date(0.75)},

    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(nullptr), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("37623")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("2/29/2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("4/31/2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("0/1/2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("257/1/2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("1/1/10000")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("02.01.2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("1/2/2003 x")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("1/2/2003/4")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("2003-01-02T06:00:00")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("24:00")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("6:60")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("6:00:60")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("soon")), VT_DATE, English, DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("99/99/2003")), VT_DATE, English,
     DISP_E_TYPEMISMATCH},
    {"ChangeType_TextThatIsNoDate_IsRefused", Text(OLESTR("25:61")), VT_DATE, English, DISP_E_TYPEMISMATCH},
};

const Expected& ExpectedOf(const Case& row) {
    return row.wine && IsWine() ? *row.wine : row.expected;
}

void CheckIntoAnotherVariant(const Case& row) {
    const Expected& expected = ExpectedOf(row);
    const Value before = I4(4711);
    ScopedVariant source(row.source);
    ScopedVariant target(before);
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, row.locale, row.flags, row.type), expected.result);
    EXPECT_EQ(Describe(*target), Describe(FAILED(expected.result) ? before : expected.value));
    EXPECT_EQ(Describe(*source), Describe(row.source));
}

void CheckInPlace(const Case& row) {
    const Expected& expected = ExpectedOf(row);
    ScopedVariant value(row.source);
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, row.locale, row.flags, row.type), expected.result);
    EXPECT_EQ(Describe(*value), Describe(FAILED(expected.result) ? row.source : expected.value));
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

INSTANTIATE_TEST_SUITE_P(Table, VariantConversion, testing::ValuesIn(NamesOf(Cases)),
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

TEST(VariantConversionByReference, ChangeType_ReferenceToAReference_IsFollowedOnce) {
    LONG number = 42;
    ScopedVariant inner;
    inner->vt = VT_BYREF | VT_I4;
    inner->plVal = &number;
    ScopedVariant outer;
    outer->vt = VT_BYREF | VT_VARIANT;
    outer->pvarVal = &inner;
    ScopedVariant target;
    EXPECT_EQ(VariantChangeTypeEx(&target, &outer, English, 0, VT_I4), S_OK);
    EXPECT_EQ(Describe(*target), Describe(I4(42)));

    ScopedVariant outermost;
    outermost->vt = VT_BYREF | VT_VARIANT;
    outermost->pvarVal = &outer;
    EXPECT_EQ(VariantChangeTypeEx(&target, &outermost, English, 0, VT_I4), E_INVALIDARG);
}

TEST(VariantConversionByReference, ChangeType_ReferenceToNothing_LeavesWhatItRefersTo) {
    LONG number = 42;
    ScopedVariant value;
    value->vt = VT_BYREF | VT_I4;
    value->plVal = &number;
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_EMPTY), S_OK);
    EXPECT_EQ(value->vt, VT_EMPTY);
    EXPECT_EQ(number, 42);
}

TEST(VariantConversionByReference, ChangeType_NullReference_IsRefused) {
    for (const VARTYPE referred : {VT_I4, VT_BSTR, VT_VARIANT}) {
        for (const VARTYPE type : {VT_BSTR, VT_I4, VT_EMPTY}) {
            ScopedVariant source;
            source->vt = static_cast<VARTYPE>(VT_BYREF | referred);
            source->byref = nullptr;
            ScopedVariant target(I4(4711));
            EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, type), DISP_E_TYPEMISMATCH);
            EXPECT_EQ(Describe(*target), Describe(I4(4711)));
        }
    }
}

TEST(VariantConversionByReference, ChangeType_NullReferenceAndATypeThatDoesNotExist_IsABadType) {
    ScopedVariant source;
    source->vt = VT_BYREF | VT_I4;
    source->byref = nullptr;
    ScopedVariant target(I4(4711));
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, 15), DISP_E_BADVARTYPE);
    source->vt = VT_BYREF | 15;
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_I4), DISP_E_BADVARTYPE);
    EXPECT_EQ(Describe(*target), Describe(I4(4711)));
    VariantInit(&source);
}

TEST(VariantConversionOfOtherTypes, ChangeType_CurrencyOrDecimal_IsKnownToTheSystemsOwnLibrary) {
    for (const VARTYPE type : {VT_CY, VT_DECIMAL}) {
        ScopedVariant source(I4(7));
        ScopedVariant target(I4(4711));
        EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, type),
                  HasEveryType ? S_OK : DISP_E_BADVARTYPE);
        if (HasEveryType) {
            EXPECT_EQ(target->vt, type);
            EXPECT_EQ(VariantChangeTypeEx(&target, &target, English, 0, VT_I4), S_OK);
        }
        EXPECT_EQ(Describe(*target), Describe(I4(HasEveryType ? 7 : 4711)));
    }
}

// "NUMPARSE structure": digits that don't fit make the number inexact and are not refused, so the nearest
// number is expected. Wine divides by a power of ten that is infinite.
TEST(VariantConversionOfLongTexts, ChangeType_VeryLongText_IsRoundedOnce) {
    using String = std::basic_string<OLECHAR>;
    const String zeros(1000, '0');
    const String nines(2000, '9');
    const String halfWay = OLESTR("9007199254740993.") + zeros;
    const struct {
        String text;
        VARTYPE type;
        Expected expected;
        std::optional<Expected> wine = std::nullopt;
    } Texts[] = {
        {halfWay, VT_R8, R8(9007199254740992.0)},
        {halfWay + OLESTR("1"), VT_R8, R8(9007199254740994.0), R8(Infinity)},
        {nines, VT_R8, DISP_E_OVERFLOW},
        {nines + OLESTR("E-1999"), VT_R8, R8(10), R8(Infinity)},
        {OLESTR("2.5") + zeros + OLESTR("1"), VT_I4, I4(3)},
        {zeros + OLESTR("7"), VT_I4, I4(7)},
    };
    for (const auto& text : Texts) {
        SCOPED_TRACE(text.text.size());
        const Expected& expected = text.wine && IsWine() ? *text.wine : text.expected;
        ScopedVariant source(Text(text.text.c_str()));
        ScopedVariant target;
        EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, text.type), expected.result);
        EXPECT_EQ(Describe(*target), Describe(expected.value));
    }
}

// "VarBstrFromDate function" and "VarDateFromStr function" take the same locale. Wine does not read every
// date or time format that it writes.
TEST(VariantConversionOfDates, ChangeType_DateTextOfAnyLocale_ReadsBack) {
    const struct {
        LCID locale;
        bool winesDate = true;
        bool winesTime = true;
    } Locales[] = {{0x0409},
                   {0x0809},
                   {0x0407},
                   {0x040C},
                   {0x0C0C, true, false},
                   {0x0410},
                   {0x0415},
                   {0x041D},
                   {0x0406, true, false},
                   {0x040B, true, false},
                   {0x040E, false},
                   {0x0427},
                   {0x0402, false, false},
                   {0x0405},
                   {0x0408},
                   {0x041E},
                   {0x0439},
                   {0x041F},
                   {0x0411},
                   {0x0412, false, false},
                   {0x0804},
                   {0x0404, true, false},
                   {0x0419}};
    for (const auto& [locale, winesDate, winesTime] : Locales) {
        for (const double serial :
             {37623.0, 37623.0 + 57906.0 / 86400.0, 44196.0 + 600.0 / 86400.0, 0.75, -1.25}) {
            ScopedVariant value(Date(serial));
            ASSERT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_BSTR), S_OK);
            SCOPED_TRACE("locale " + std::to_string(locale) + " date " + Describe(*value));
            const bool hasDate = serial != 0.75;
            const bool hasTime = serial != 37623.0;
            if (IsWine() && ((hasDate && !winesDate) || (hasTime && !winesTime))) {
                EXPECT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_DATE), DISP_E_TYPEMISMATCH);
                continue;
            }
            ASSERT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_DATE), S_OK);
            EXPECT_NEAR(value->date, serial, 1e-9);
        }
    }
}

// A text is read up to its first null character.
TEST(VariantConversionOfZeroUnits, ChangeType_TextWithAZeroUnit_IsReadUpToIt) {
    const struct {
        const OLECHAR* units;
        UINT length;
        VARTYPE type;
        Expected expected;
    } Texts[] = {
        {OLESTR("5\0"
                "6"),
         3, VT_I4, I4(5)},
        {OLESTR("5\0"
                "6"),
         3, VT_R8, R8(5)},
        {OLESTR("True\0x"), 6, VT_BOOL, Bool(true)},
        {OLESTR("1/2/2003\0x"), 10, VT_DATE, Date(37623)},
        {OLESTR("\0"
                "5"),
         2, VT_I4, DISP_E_TYPEMISMATCH},
    };
    for (const auto& text : Texts) {
        ScopedVariant value;
        value->vt = VT_BSTR;
        value->bstrVal = SysAllocStringLen(text.units, text.length);
        SCOPED_TRACE(Describe(*value));
        ScopedVariant target;
        EXPECT_EQ(VariantChangeTypeEx(&target, &value, English, 0, text.type), text.expected.result);
        EXPECT_EQ(Describe(*target), Describe(text.expected.value));
    }
}

void MakeByteArray(ScopedVariant& value, const std::string& bytes) {
    value->vt = VT_ARRAY | VT_UI1;
    value->parray = SafeArrayCreateVector(VT_UI1, 5, static_cast<ULONG>(bytes.size()));
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(value->parray, &data), S_OK);
    bytes.copy(static_cast<char*>(data), bytes.size());
    SafeArrayUnaccessData(value->parray);
}

std::string BytesOf(SAFEARRAY* array) {
    LONG lower = 0;
    LONG upper = 0;
    SafeArrayGetLBound(array, 1, &lower);
    SafeArrayGetUBound(array, 1, &upper);
    EXPECT_EQ(lower, 0);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    const std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(upper - lower + 1));
    SafeArrayUnaccessData(array);
    return bytes;
}

TEST(VariantConversionOfArrays, ChangeType_ByteArrayToText_TakesTwoBytesForAUnit) {
    ScopedVariant value;
    MakeByteArray(value, std::string("a\0\x01\x02", 4));
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_BSTR), S_OK);
    EXPECT_EQ(Describe(*value), Describe(Text(OLESTR("a\u0201"))));
}

TEST(VariantConversionOfArrays, ChangeType_OddNumberOfBytesToText_KeepsTheLast) {
    ScopedVariant value;
    MakeByteArray(value, std::string("a\0b", 3));
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_BSTR), S_OK);
    EXPECT_EQ(SysStringByteLen(value->bstrVal), 3U);
    EXPECT_EQ(Describe(*value), Describe(Text(OLESTR("a"))));
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_ARRAY | VT_UI1), S_OK);
    EXPECT_EQ(BytesOf(value->parray), std::string("a\0b", 3));
}

TEST(VariantConversionOfArrays, ChangeType_NoBytesToText_IsTheEmptyText) {
    ScopedVariant value;
    MakeByteArray(value, "");
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_BSTR), S_OK);
    EXPECT_EQ(Describe(*value), Describe(Text(OLESTR(""))));
}

TEST(VariantConversionOfArrays, ChangeType_TextToByteArray_HasItsBytes) {
    for (const OLECHAR* text : {OLESTR("a\u0201"), OLESTR("")}) {
        ScopedVariant value(Text(text));
        const std::string bytes(reinterpret_cast<const char*>(text), SysStringByteLen(value->bstrVal));
        EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_ARRAY | VT_UI1), S_OK);
        EXPECT_EQ(BytesOf(value->parray), bytes);
    }
}

TEST(VariantConversionOfArrays, ChangeType_NullStringToByteArray_HasNoBytes) {
    ScopedVariant value(Text(nullptr));
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_ARRAY | VT_UI1), S_OK);
    EXPECT_EQ(BytesOf(value->parray), "");
}

TEST(VariantConversionOfArrays, ChangeType_NullArrayToText_IsAnInvalidArgument) {
    ScopedVariant value;
    value->vt = VT_ARRAY | VT_UI1;
    value->parray = nullptr;
    EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, VT_BSTR), E_INVALIDARG);
}

TEST(VariantConversionOfArrays, ChangeType_ByteArrayToNothing_IsRefused) {
    for (const VARTYPE type : {VT_EMPTY, VT_NULL}) {
        ScopedVariant value;
        MakeByteArray(value, "ab");
        EXPECT_EQ(VariantChangeTypeEx(&value, &value, English, 0, type), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(value->vt, VT_ARRAY | VT_UI1);
    }
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

TEST(VariantConversionOfArrays, ChangeType_TargetHoldsAnArrayInAccess_IsRefused) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 1);
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    VARIANT target;
    VariantInit(&target);
    target.vt = VT_ARRAY | VT_UI1;
    target.parray = array;
    for (const VARTYPE type : {VT_BSTR, VT_I4}) {
        ScopedVariant source(I4(1));
        EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, type), DISP_E_ARRAYISLOCKED);
        // "VariantClear function", which clears the target, as in the test of that function.
        EXPECT_EQ(target.vt, IsWine() ? VARTYPE{VT_EMPTY} : VARTYPE{VT_ARRAY | VT_UI1});
        target.vt = VT_ARRAY | VT_UI1;
        target.parray = array;
    }
    SafeArrayUnaccessData(array);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(VariantConversionDefaultLocale, ChangeType_WithoutALocale_ReadsItsOwnText) {
    ScopedVariant value(R8(-1234.5));
    ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_R8), S_OK);
    EXPECT_EQ(Describe(*value), Describe(R8(-1234.5)));
}

}  // namespace
}  // namespace quillet::test
