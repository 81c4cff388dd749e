// Case mapping and comparison without case.
#include "Quillet/platform/Text.h"

#include <gtest/gtest.h>

namespace quillet::test {
namespace {

using platform::CompareNoCase;
using platform::WideString;
using platform::WideView;

WideString Lowered(WideString text) {
    platform::MakeLower(text);
    return text;
}

WideString Raised(WideString text) {
    platform::MakeUpper(text);
    return text;
}

TEST(Text, MakeLower_Letters_AreLoweredAndOthersKept) {
    EXPECT_EQ(Lowered(OLESTR("ABC xyz 123 [\\]^_`{|}~@")), OLESTR("abc xyz 123 [\\]^_`{|}~@"));
    EXPECT_EQ(Lowered(OLESTR("\u00C0\u00C9\u00DE\u00D7\u00DF")), OLESTR("\u00E0\u00E9\u00FE\u00D7\u00DF"));
    EXPECT_EQ(Lowered(OLESTR("\u0141\u0391\u0416")), OLESTR("\u0142\u03B1\u0436"));
    EXPECT_EQ(Lowered(OLESTR("")), OLESTR(""));
}

TEST(Text, MakeUpper_Letters_AreRaisedAndOthersKept) {
    EXPECT_EQ(Raised(OLESTR("abc XYZ 123 [\\]^_`{|}~@")), OLESTR("ABC XYZ 123 [\\]^_`{|}~@"));
    EXPECT_EQ(Raised(OLESTR("\u00E0\u00E9\u00FE\u00F7\u00FF")), OLESTR("\u00C0\u00C9\u00DE\u00F7\u0178"));
    EXPECT_EQ(Raised(OLESTR("\u0142\u03B1\u0436")), OLESTR("\u0141\u0391\u0416"));
}

TEST(Text, MakeUpper_LetterWithoutASimpleCapital_IsKept) {
    EXPECT_EQ(Raised(OLESTR("\u00DF")), OLESTR("\u00DF"));
}

TEST(Text, MakeLower_LetterOfTwoUnits_IsLowered) {
    EXPECT_EQ(Lowered(OLESTR("x\U00010400y")), OLESTR("x\U00010428y"));
    EXPECT_EQ(Raised(OLESTR("x\U00010428y")), OLESTR("X\U00010400Y"));
}

TEST(Text, MakeLower_LoneSurrogates_AreKept) {
    const WideString lone = {static_cast<WCHAR>(0xDC28), 'A', static_cast<WCHAR>(0xD801)};
    const WideString lowered = {static_cast<WCHAR>(0xDC28), 'a', static_cast<WCHAR>(0xD801)};
    EXPECT_EQ(Lowered(lone), lowered);
}

TEST(Text, FoldCase_TextsEqualWithoutCase_BecomeTheSame) {
    const WideString texts[] = {
        OLESTR("Hello"),  OLESTR("hELLO"),  OLESTR("\u00C9"),     OLESTR("\u00E9"),
        OLESTR("\u017F"), OLESTR("s"),      OLESTR("\u03C2"),     OLESTR("\u03A3"),
        OLESTR("\u00B5"), OLESTR("\u03BC"), OLESTR("\U00010400"), OLESTR("\U00010428"),
        OLESTR("\u00DF"), OLESTR("ss"),     OLESTR("\u1E9E"),     OLESTR("")};
    for (const WideString& left : texts) {
        for (const WideString& right : texts) {
            WideString foldedLeft = left;
            WideString foldedRight = right;
            platform::FoldCase(foldedLeft);
            platform::FoldCase(foldedRight);
            EXPECT_EQ(foldedLeft == foldedRight, CompareNoCase(left, right) == 0);
        }
    }
}

TEST(Text, CompareNoCase_SameLettersInOtherCase_IsZero) {
    EXPECT_EQ(CompareNoCase(OLESTR("Hello World"), OLESTR("hELLO wORLD")), 0);
    EXPECT_EQ(CompareNoCase(OLESTR("\u00C9t\u00E9"), OLESTR("\u00E9T\u00C9")), 0);
    EXPECT_EQ(CompareNoCase(OLESTR("\u0416"), OLESTR("\u0436")), 0);
    EXPECT_EQ(CompareNoCase(OLESTR("\U00010400"), OLESTR("\U00010428")), 0);
    EXPECT_EQ(CompareNoCase(OLESTR(""), OLESTR("")), 0);
}

TEST(Text, CompareNoCase_OtherLetters_HaveASign) {
    EXPECT_LT(CompareNoCase(OLESTR("abc"), OLESTR("ABD")), 0);
    EXPECT_GT(CompareNoCase(OLESTR("ABD"), OLESTR("abc")), 0);
    EXPECT_LT(CompareNoCase(OLESTR("Z"), OLESTR("\u00E0")), 0);
}

TEST(Text, CompareNoCase_ShorterText_ComesFirst) {
    EXPECT_LT(CompareNoCase(OLESTR("ab"), OLESTR("ABC")), 0);
    EXPECT_GT(CompareNoCase(OLESTR("abc"), OLESTR("AB")), 0);
    EXPECT_LT(CompareNoCase(OLESTR(""), OLESTR("a")), 0);
}

TEST(Text, CompareNoCase_LettersBeyondSixteenBits_FollowTheirCodePoints) {
    EXPECT_LT(CompareNoCase(OLESTR("\uFF5E"), OLESTR("\U00010000")), 0);
}

TEST(Text, CompareNoCase_ZeroUnits_AreUnitsLikeOthers) {
    const WideString left = {'a', 0, 'B'};
    const WideString right = {'A', 0, 'b'};
    EXPECT_EQ(CompareNoCase(left, right), 0);
    EXPECT_GT(CompareNoCase(left, WideView(right).substr(0, 2)), 0);
}

}  // namespace
}  // namespace quillet::test
