// The order of variants: one table, the same for every port.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Quillet/platform/Automation.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

// Rows of one name make one test. The reversed comparison is checked too.
struct Case {
    const char* name;
    Value left;
    Value right;
    HRESULT expected;
    ULONG flags = 0;
    LCID locale = English;
};

constexpr LCID FrenchOfCanada = 0x0C0C;
constexpr double Infinity = std::numeric_limits<double>::infinity();

const Case Cases[] = {
    {"VarCmp_NullOnEitherSide_HasNoOrder", Null(), I4(1), HRESULT{VARCMP_NULL}},
    {"VarCmp_NullOnEitherSide_HasNoOrder", Text(OLESTR("")), Null(), HRESULT{VARCMP_NULL}},
    {"VarCmp_NullOnEitherSide_HasNoOrder", Null(), Null(), HRESULT{VARCMP_NULL}},
    {"VarCmp_NullOnEitherSide_HasNoOrder", Null(), Empty(), HRESULT{VARCMP_NULL}},

    {"VarCmp_EmptyAgainstEmpty_IsEqual", Empty(), Empty(), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), I4(0), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), I4(1), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), I4(-1), HRESULT{VARCMP_GT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), R8(0.5), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Bool(false), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Bool(true), HRESULT{VARCMP_GT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Whole(VT_I2, 1), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), R4(-0.5), HRESULT{VARCMP_GT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Date(0), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Date(37623), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstText_CountsAsEmptyText", Empty(), Text(OLESTR("")), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstText_CountsAsEmptyText", Empty(), Text(OLESTR("a")), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstText_CountsAsEmptyText", Empty(), Text(nullptr), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Bool(true), HRESULT{VARCMP_GT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Whole(VT_I2, 1), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Date(-1), HRESULT{VARCMP_GT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Date(0), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), R4(0.1), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Whole(VT_I8, 1), HRESULT{VARCMP_LT}},
    {"VarCmp_EmptyAgainstANumber_CountsAsZero", Empty(), Whole(VT_UI1, 0), HRESULT{VARCMP_EQ}},

    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("1")), I4(2), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("2")), R8(2), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("")), Whole(VT_I2, 5), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(nullptr), I4(5), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("-1")), Bool(true), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("False")), Bool(true), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("")), Date(1), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("0.1")), R4(0.1), HRESULT{VARCMP_GT}},

    {"VarCmp_NumbersOfOneType_CompareByValue", I4(1), I4(2), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", I4(-1), I4(-2), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", I4(7), I4(7), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfOneType_CompareByValue", Whole(VT_I2, -3), Whole(VT_I2, 3), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", Whole(VT_UI1, 200), Whole(VT_UI1, 100), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", Whole(VT_I8, 9007199254740993), Whole(VT_I8, 9007199254740992),
     HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", R8(0.1), R8(0.2), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", R8(0.0), R8(-0.0), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfOneType_CompareByValue", R4(1.5), R4(1.25), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", Date(37623), Date(37623.5), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", Bool(true), Bool(false), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", Whole(VT_BOOL, 1), Bool(true), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfOneType_CompareByValue", R4(-0.0), R4(0.0), HRESULT{VARCMP_EQ}},

    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Whole(VT_I2, 5), I4(5), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Whole(VT_UI1, 5), I4(6), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(1), Whole(VT_I8, 4294967296), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(2), R8(1.5), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(2), R4(2.5), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", R4(0.5), R8(0.5), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Date(5), I4(5), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Bool(true), I4(-1), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Bool(true), Whole(VT_I2, 0), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Bool(true), R8(-1), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Bool(true), Date(-0.5), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Date(37623.5), R8(37623.25), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(16777217), R8(16777216), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Whole(VT_I8, 4294967296), R8(4294967296.5),
     HRESULT{VARCMP_LT}},
    {"VarCmp_IntegerAgainstADouble_ComparesAsDouble", Whole(VT_I8, 9007199254740993), R8(9007199254740992),
     HRESULT{VARCMP_EQ}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", R8(0.1), R4(0.1), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", R8(0.1000001), R4(0.1), HRESULT{VARCMP_GT}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", Date(0.1), R4(0.1), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", I4(16777217), R4(16777216), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", Whole(VT_I8, 16777217), R4(16777216), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", R8(1e300), R4(1), HRESULT{VARCMP_GT}},
    {"VarCmp_NumberAgainstAFloat_ComparesAsFloat", R8(-1e300), R4(1), HRESULT{VARCMP_LT}},
    {"VarCmp_Infinity_IsTheGreatestNumber", R8(Infinity), R8(1.7976931348623157e308), HRESULT{VARCMP_GT}},
    {"VarCmp_Infinity_IsTheGreatestNumber", R8(Infinity), R8(Infinity), HRESULT{VARCMP_EQ}},
    {"VarCmp_Infinity_IsTheGreatestNumber", R8(-Infinity), I4(-2147483648LL), HRESULT{VARCMP_LT}},
    {"VarCmp_Infinity_IsTheGreatestNumber", R8(Infinity), Text(OLESTR("")), HRESULT{VARCMP_LT}},

    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UI4, 1), I4(1), DISP_E_TYPEMISMATCH},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UI4, 1), Whole(VT_UI4, 1), DISP_E_TYPEMISMATCH},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UI2, 1), R8(1), DISP_E_TYPEMISMATCH},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_I1, 1), Text(OLESTR("1")), DISP_E_TYPEMISMATCH},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_I1, 1), Empty(), DISP_E_TYPEMISMATCH},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UI2, 1), Null(), DISP_E_TYPEMISMATCH},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UINT, 1), I4(1), DISP_E_BADVARTYPE},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UINT, 1), Whole(VT_I1, 1), DISP_E_BADVARTYPE},
    {"VarCmp_IntegerTypesWithoutAnOrder_AreRefused", Whole(VT_UINT, 1), Null(), DISP_E_BADVARTYPE},
    {"VarCmp_ErrorAgainstAnotherType_IsRefused", Whole(VT_ERROR, 1), I4(1), DISP_E_TYPEMISMATCH},
    {"VarCmp_ErrorAgainstAnotherType_IsRefused", Whole(VT_ERROR, 1), Null(), DISP_E_TYPEMISMATCH},
    {"VarCmp_ErrorAgainstAnError_IsEqual", Whole(VT_ERROR, 1), Whole(VT_ERROR, 2), HRESULT{VARCMP_EQ}},

    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("a")), Text(OLESTR("b")), HRESULT{VARCMP_LT}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("abc")), Text(OLESTR("abd")), HRESULT{VARCMP_LT}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("ab")), Text(OLESTR("abc")), HRESULT{VARCMP_LT}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("same")), Text(OLESTR("same")), HRESULT{VARCMP_EQ}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("")), Text(OLESTR("a")), HRESULT{VARCMP_LT}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("9")), Text(OLESTR("a")), HRESULT{VARCMP_LT}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("10")), Text(OLESTR("9")), HRESULT{VARCMP_LT}},
    {"VarCmp_Texts_AreInAlphabeticalOrder", Text(OLESTR("a b")), Text(OLESTR("ab")), HRESULT{VARCMP_LT}},
    {"VarCmp_NullString_CountsAsEmptyText", Text(nullptr), Text(OLESTR("")), HRESULT{VARCMP_EQ}},
    {"VarCmp_NullString_CountsAsEmptyText", Text(nullptr), Text(OLESTR("a")), HRESULT{VARCMP_LT}},
    {"VarCmp_NullString_CountsAsEmptyText", Text(nullptr), Text(nullptr), HRESULT{VARCMP_EQ}},

    {"VarCmp_Digits_ComeInOrderBeforeLetters", Text(OLESTR("1")), Text(OLESTR("2")), HRESULT{VARCMP_LT}},
    {"VarCmp_Digits_ComeInOrderBeforeLetters", Text(OLESTR("a10")), Text(OLESTR("a2")), HRESULT{VARCMP_LT}},
    {"VarCmp_Digits_ComeInOrderBeforeLetters", Text(OLESTR("a1")), Text(OLESTR("aa")), HRESULT{VARCMP_LT}},
    {"VarCmp_Digits_ComeInOrderBeforeLetters", Text(OLESTR("a")), Text(OLESTR("a1")), HRESULT{VARCMP_LT}},
    {"VarCmp_Blanks_ComeBeforeDigitsAndLetters", Text(OLESTR(" a")), Text(OLESTR("1")), HRESULT{VARCMP_LT}},
    {"VarCmp_Blanks_ComeBeforeDigitsAndLetters", Text(OLESTR("a b")), Text(OLESTR("a1")), HRESULT{VARCMP_LT}},
    {"VarCmp_Blanks_ComeBeforeDigitsAndLetters", Text(OLESTR("a  b")), Text(OLESTR("a b")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Blanks_ComeBeforeDigitsAndLetters", Text(OLESTR("a")), Text(OLESTR("a ")), HRESULT{VARCMP_LT}},
    {"VarCmp_Scripts_FollowEachOther", Text(OLESTR("z")), Text(OLESTR("\u03B1")), HRESULT{VARCMP_LT}},
    {"VarCmp_Scripts_FollowEachOther", Text(OLESTR("\u03C9")), Text(OLESTR("\u0430")), HRESULT{VARCMP_LT}},
    {"VarCmp_Scripts_FollowEachOther", Text(OLESTR("\u044F")), Text(OLESTR("\u4E00")), HRESULT{VARCMP_LT}},

    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("a")), Text(OLESTR("A")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("A")), Text(OLESTR("b")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("a")), Text(OLESTR("Z")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("Zebra")), Text(OLESTR("zebu")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("AB")), Text(OLESTR("ac")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("aB")), Text(OLESTR("Ab")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_CaseOfLetters_DecidesLastAndLowerComesFirst", Text(OLESTR("\u0430")), Text(OLESTR("\u0410")),
     HRESULT{VARCMP_LT}},

    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("e")), Text(OLESTR("\u00E9")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("\u00E9")), Text(OLESTR("f")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("Resume")),
     Text(OLESTR("r\u00E9sum\u00E9")), HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("r\u00E9sum\u00E9")),
     Text(OLESTR("resumes")), HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("E")), Text(OLESTR("\u00E9")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("\u00E9")), Text(OLESTR("\u00C9")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("\u00E9")), Text(OLESTR("\u00E8")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("\u00E9")), Text(OLESTR("e\u0301")),
     HRESULT{VARCMP_EQ}},
    {"VarCmp_FirstAccent_Decides", Text(OLESTR("cot\u00E9")), Text(OLESTR("c\u00F4te")), HRESULT{VARCMP_LT}},
    {"VarCmp_FirstAccent_Decides", Text(OLESTR("cot\u00E9")), Text(OLESTR("c\u00F4te")), HRESULT{VARCMP_LT},
     0, German},
    {"VarCmp_LastAccentInFrench_Decides", Text(OLESTR("cot\u00E9")), Text(OLESTR("c\u00F4te")),
     HRESULT{VARCMP_GT}, 0, French},
    {"VarCmp_LastAccentInFrench_Decides", Text(OLESTR("cot\u00E9")), Text(OLESTR("c\u00F4te")),
     HRESULT{VARCMP_GT}, 0, FrenchOfCanada},

    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("abc")), Text(OLESTR("ABC")), HRESULT{VARCMP_EQ},
     NORM_IGNORECASE},
    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("\u00E9")), Text(OLESTR("\u00C9")),
     HRESULT{VARCMP_EQ}, NORM_IGNORECASE},
    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("\u0430b")), Text(OLESTR("\u0410B")),
     HRESULT{VARCMP_EQ}, NORM_IGNORECASE},
    {"VarCmp_IgnoringCase_MakesCasesEqual", I4(1), I4(2), HRESULT{VARCMP_LT}, NORM_IGNORECASE},
    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("e")), Text(OLESTR("\u00C9")), HRESULT{VARCMP_LT},
     NORM_IGNORECASE},
    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("A")), Text(OLESTR("b")), HRESULT{VARCMP_LT},
     NORM_IGNORECASE},

    {"VarCmp_Locale_DecidesTheAlphabet", Text(OLESTR("\u00E5")), Text(OLESTR("z")), HRESULT{VARCMP_LT}, 0,
     English},
    {"VarCmp_Locale_DecidesTheAlphabet", Text(OLESTR("\u00E4")), Text(OLESTR("b")), HRESULT{VARCMP_LT}, 0,
     German},
    {"VarCmp_Locale_DecidesTheAlphabet", Text(OLESTR("\u00E5")), Text(OLESTR("z")), HRESULT{VARCMP_GT}, 0,
     Swedish},
    {"VarCmp_Locale_DecidesTheAlphabet", Text(OLESTR("\u00E5")), Text(OLESTR("\u00E4")), HRESULT{VARCMP_LT},
     0, Swedish},
};

HRESULT TurnedAround(HRESULT order) {
    if (order == HRESULT{VARCMP_LT}) {
        return VARCMP_GT;
    }
    return order == HRESULT{VARCMP_GT} ? VARCMP_LT : order;
}

HRESULT Compare(const Value& left, const Value& right, LCID locale = English, ULONG flags = 0) {
    ScopedVariant leftVariant(left);
    ScopedVariant rightVariant(right);
    return VarCmp(&leftVariant, &rightVariant, locale, flags);
}

class VariantComparison : public testing::TestWithParam<std::string> {};

TEST_P(VariantComparison, Case) {
    for (const Case& row : Cases) {
        if (row.name == GetParam()) {
            SCOPED_TRACE(Describe(row.left) + " against " + Describe(row.right));
            EXPECT_EQ(Compare(row.left, row.right, row.locale, row.flags), row.expected);
            EXPECT_EQ(Compare(row.right, row.left, row.locale, row.flags), TurnedAround(row.expected));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, VariantComparison, testing::ValuesIn(NamesOf(Cases)),
                         [](const auto& tested) { return tested.param; });

// These types are refused differently on the other side.
TEST(VariantComparisonOfOtherTypes, VarCmp_IntIsAnOperandOnTheLeftOnly) {
    EXPECT_EQ(Compare(Whole(VT_INT, 3), I4(4)), HRESULT{VARCMP_LT});
    EXPECT_EQ(Compare(Whole(VT_INT, 3), R8(2.5)), HRESULT{VARCMP_GT});
    EXPECT_EQ(Compare(I4(4), Whole(VT_INT, 3)), DISP_E_BADVARTYPE);
    EXPECT_EQ(Compare(Whole(VT_INT, 3), Whole(VT_INT, 3)), DISP_E_BADVARTYPE);
}

TEST(VariantComparisonOfOtherTypes, VarCmp_UnsignedOf64Bits_HasNoOrder) {
    EXPECT_EQ(Compare(Whole(VT_UI8, 1), I4(1)), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Compare(I4(1), Whole(VT_UI8, 1)), DISP_E_BADVARTYPE);
}

TEST(VariantComparisonOfOtherTypes, VarCmp_NotANumber_EqualsNothing) {
    for (const auto make : {&R4, &R8, &Date}) {
        const Value nothing = make(std::numeric_limits<double>::quiet_NaN());
        const Value one = make(1);
        EXPECT_NE(Compare(nothing, nothing), HRESULT{VARCMP_EQ});
        EXPECT_NE(Compare(nothing, one), HRESULT{VARCMP_EQ});
        EXPECT_NE(Compare(one, nothing), HRESULT{VARCMP_EQ});
    }
}

TEST(VariantComparisonOfOtherTypes, VarCmp_ByteArray_HasNoOrder) {
    ScopedVariant array;
    array->vt = VT_ARRAY | VT_UI1;
    array->parray = SafeArrayCreateVector(VT_UI1, 0, 1);
    for (const Value& value : {I4(1), Text(OLESTR("a")), Empty(), Null()}) {
        ScopedVariant other(value);
        EXPECT_EQ(VarCmp(&array, &other, English, 0), DISP_E_BADVARTYPE) << Describe(value);
        EXPECT_EQ(VarCmp(&other, &array, English, 0), DISP_E_BADVARTYPE) << Describe(value);
    }
    EXPECT_EQ(VarCmp(&array, &array, English, 0), DISP_E_BADVARTYPE);
}

TEST(VariantComparisonOfOtherTypes, VarCmp_Reference_IsNotFollowed) {
    DOUBLE number = 2.5;
    ScopedVariant reference;
    reference->vt = VT_BYREF | VT_R8;
    reference->pdblVal = &number;
    for (const Value& value : {R8(2.5), Null()}) {
        ScopedVariant other(value);
        EXPECT_EQ(VarCmp(&reference, &other, English, 0), DISP_E_BADVARTYPE);
        EXPECT_EQ(VarCmp(&other, &reference, English, 0), DISP_E_BADVARTYPE);
    }
}

TEST(VariantComparisonOfOtherTypes, VarCmp_InterfacePointer_HasNoOrder) {
    ScopedVariant object;
    object->vt = VT_UNKNOWN;
    object->punkVal = nullptr;
    ScopedVariant number(I4(1));
    EXPECT_EQ(VarCmp(&object, &number, English, 0), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VarCmp(&number, &object, English, 0), DISP_E_TYPEMISMATCH);
}

}  // namespace
}  // namespace quillet::test
