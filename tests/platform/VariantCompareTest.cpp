// The order of variants: one table, the same for every port.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "VariantValues.h"
#include "platform/Automation.h"

namespace quillet::test {
namespace {

// Rows of one name make one test. Where they have an order, the turned around comparison is checked too.
struct Case {
    const char* name;
    Value left;
    Value right;
    HRESULT expected;
    ULONG flags = 0;
    LCID locale = English;
};

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
    {"VarCmp_EmptyAgainstText_CountsAsEmptyText", Empty(), Text(OLESTR("")), HRESULT{VARCMP_EQ}},
    {"VarCmp_EmptyAgainstText_CountsAsEmptyText", Empty(), Text(OLESTR("a")), HRESULT{VARCMP_LT}},

    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("1")), I4(2), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("2")), R8(2), HRESULT{VARCMP_GT}},
    {"VarCmp_TextAgainstANumber_IsAlwaysGreater", Text(OLESTR("")), Whole(VT_I2, 5), HRESULT{VARCMP_GT}},

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

    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Whole(VT_I2, 5), I4(5), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Whole(VT_UI1, 5), I4(6), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(1), Whole(VT_I8, 4294967296), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(2), R8(1.5), HRESULT{VARCMP_GT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", I4(2), R4(2.5), HRESULT{VARCMP_LT}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", R4(0.5), R8(0.5), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Date(5), I4(5), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Bool(true), I4(-1), HRESULT{VARCMP_EQ}},
    {"VarCmp_NumbersOfTwoTypes_CompareByValue", Bool(true), Whole(VT_I2, 0), HRESULT{VARCMP_LT}},

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

    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("e")), Text(OLESTR("\u00E9")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("\u00E9")), Text(OLESTR("f")),
     HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("Resume")),
     Text(OLESTR("r\u00E9sum\u00E9")), HRESULT{VARCMP_LT}},
    {"VarCmp_Accents_DecideAfterLettersAndBeforeCase", Text(OLESTR("r\u00E9sum\u00E9")),
     Text(OLESTR("resumes")), HRESULT{VARCMP_LT}},

    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("abc")), Text(OLESTR("ABC")), HRESULT{VARCMP_EQ},
     NORM_IGNORECASE},
    {"VarCmp_IgnoringCase_MakesCasesEqual", Text(OLESTR("\u00E9")), Text(OLESTR("\u00C9")),
     HRESULT{VARCMP_EQ}, NORM_IGNORECASE},
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

std::vector<std::string> NamesOfCases() {
    std::vector<std::string> names;
    for (const Case& row : Cases) {
        if (names.empty() || names.back() != row.name) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

class VariantComparison : public testing::TestWithParam<std::string> {};

TEST_P(VariantComparison, Case) {
    for (const Case& row : Cases) {
        if (row.name == GetParam()) {
            SCOPED_TRACE(Describe(row.left) + " against " + Describe(row.right));
            ScopedVariant left(row.left);
            ScopedVariant right(row.right);
            EXPECT_EQ(VarCmp(&left, &right, row.locale, row.flags), row.expected);
            EXPECT_EQ(VarCmp(&right, &left, row.locale, row.flags), TurnedAround(row.expected));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, VariantComparison, testing::ValuesIn(NamesOfCases()),
                         [](const auto& tested) { return tested.param; });

TEST(VariantComparisonOfOtherTypes, VarCmp_ByteArray_HasNoOrder) {
    ScopedVariant array;
    array->vt = VT_ARRAY | VT_UI1;
    array->parray = SafeArrayCreateVector(VT_UI1, 0, 1);
    ScopedVariant number(I4(1));
    EXPECT_EQ(VarCmp(&array, &number, English, 0), DISP_E_BADVARTYPE);
    EXPECT_EQ(VarCmp(&number, &array, English, 0), DISP_E_BADVARTYPE);
}

}  // namespace
}  // namespace quillet::test
