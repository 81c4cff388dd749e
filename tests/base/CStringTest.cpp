#include "Quillet/base/CString.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(CString, FromUtf8_TextBeyondAscii_CountsUtf16Units) {
    EXPECT_EQ(CString("a\u00e9\U0001F600").GetLength(), 4);
    EXPECT_EQ(CString("a\u00e9\U0001F600").ToUtf8(), "a\u00e9\U0001F600");
}

TEST(CString, FromUtf8_MalformedBytes_BecomeReplacementCharacters) {
    EXPECT_EQ(CString("a\xFFz").ToUtf8(), "a\uFFFDz");
    EXPECT_EQ(CString("\xED\xA0\x80").ToUtf8(), "\uFFFD\uFFFD\uFFFD");
}

TEST(CString, FromUtf8_Null_IsEmpty) {
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString(static_cast<const WCHAR*>(nullptr)).IsEmpty());
}

TEST(CString, ToUtf8_LoneSurrogate_BecomesReplacementCharacter) {
    const WCHAR lone[] = {'a', WCHAR(0xD800), 'b', 0};
    EXPECT_EQ(CString(lone).ToUtf8(), "a\uFFFDb");
}

TEST(CString, FromValidUtf8_EveryLook_SeesTheSameText) {
    const CString text = CString::FromValidUtf8("St\u00fctze");
    std::string storage;
    EXPECT_EQ(text.ViewUtf8(storage), "St\u00fctze");
    EXPECT_TRUE(storage.empty()) << "no conversion while the text is UTF-8";
    EXPECT_FALSE(text.IsEmpty());
    const CString copy = text;
    EXPECT_EQ(text.GetLength(), 6);
    EXPECT_EQ(copy, text);
    EXPECT_EQ(text.ViewUtf8(storage), "St\u00fctze");
}

TEST(CString, IndexAndParts_OutOfRange_AreCut) {
    const CString text("abc");
    EXPECT_EQ(text[3], WCHAR(0));
    EXPECT_EQ(text[-1], WCHAR(0));
    EXPECT_EQ(text.Left(9), CString("abc"));
    EXPECT_EQ(text.Left(-1), CString());
    EXPECT_EQ(text.Right(2), CString("bc"));
    EXPECT_EQ(text.Right(9), CString("abc"));
    EXPECT_EQ(text.Mid(1, 1), CString("b"));
    EXPECT_EQ(text.Mid(5), CString());
    EXPECT_EQ(text.Mid(-2, 2), CString("ab"));
}

TEST(CString, FindAndReverseFind_AbsentText_GiveMinusOne) {
    const CString text("a\\b\\c");
    EXPECT_EQ(text.Find(WCHAR('\\')), 1);
    EXPECT_EQ(text.Find("\\b"), 1);
    EXPECT_EQ(text.Find("\\", 2), 3);
    EXPECT_EQ(text.ReverseFind('\\'), 3);
    EXPECT_EQ(text.Find("x"), -1);
    EXPECT_EQ(text.ReverseFind('x'), -1);
}

TEST(CString, Replace_SeveralOccurrences_CountsThem) {
    CString text("aaa.a");
    EXPECT_EQ(text.Replace("aa", "b"), 1);
    EXPECT_EQ(text, CString("ba.a"));
    EXPECT_EQ(text.Replace("a", "xx"), 2);
    EXPECT_EQ(text, CString("bxx.xx"));
    EXPECT_EQ(text.Replace("", "y"), 0);
}

TEST(CString, CompareNoCase_LettersBeyondAscii_IgnoresCase) {
    EXPECT_EQ(CString("STÜTZE").CompareNoCase("stütze"), 0);
    EXPECT_NE(CString("STÜTZE").Compare("stütze"), 0);
    EXPECT_LT(CString("a").CompareNoCase("B"), 0);
    EXPECT_EQ(CString("ÄÖ").MakeLower(), CString("äö"));
}

TEST(CString, Trim_BlanksAtBothEnds_Disappear) {
    EXPECT_EQ(CString(" \t a b\r\n").Trim(), CString("a b"));
    EXPECT_EQ(CString("  ").Trim(), CString());
}

TEST(CString, Format_NarrowAndWide_PrintsUtf8) {
    CString text;
    text.Format("%d rows of '%s' in %.4f", 3, "Länge", 0.25);
    EXPECT_EQ(text, CString("3 rows of 'Länge' in 0.2500"));
}

TEST(CString, Stream_AnyText_PrintsUtf8) {
    std::ostringstream stream;
    stream << CString("Länge");
    EXPECT_EQ(stream.str(), "Länge");
}

TEST(CString, SetAt_Positions_OnlyThoseThatExist) {
    CString text("abc");
    text.SetAt(1, 'x');
    text.SetAt(3, 'y');
    EXPECT_EQ(text, CString("axc"));
}

}  // namespace
