#include "Quillet/query/SqlText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/PlainQuery.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using quillet::JoinLines;
using quillet::LowerOutsideQuotes;
using quillet::SqlTokens;
using quillet::WideString;
using quillet::WideView;
using quillet::WithBlanksAroundOperators;
using quillet::test::Units;

using Strings = std::vector<std::string>;

std::string Spaced(const CString& sql) {
    return WithBlanksAroundOperators(sql).ToUtf8();
}

std::string LoweredOutside(CString text) {
    LowerOutsideQuotes(text);
    return text.ToUtf8();
}

// The tokens of a text, each dropped after it is read.
Strings Tokens(const CString& sql) {
    Strings list;
    SqlTokens tokens(sql.View());
    while (tokens.Next()) {
        list.push_back(CString(tokens.Token()).ToUtf8());
        tokens.Drop();
    }
    return list;
}

// ---- Names and literals

TEST(DbSqlText, JoinLines_AlsoWithinQuotes) {
    CString text = "a\r\nb\n'c\nd'\r";
    JoinLines(text);
    EXPECT_EQ(text, "a  b 'c d' ");
}

// ---- Lower case

TEST(DbSqlText, LowerOutsideQuotes_EveryKindOfQuoteProtects) {
    EXPECT_EQ(LoweredOutside("SELECT A WHERE B='X Y'"), "select a where b='X Y'");
    EXPECT_EQ(LoweredOutside("A\"B\"C"), "a\"B\"c");
    EXPECT_EQ(LoweredOutside("A\uFF91B\uFF91C"), "a\uFF91B\uFF91c");
}

TEST(DbSqlText, LowerOutsideQuotes_AStretchClosesAtItsOwnMarkOnly) {
    EXPECT_EQ(LoweredOutside("'A\"B'C\"D'E\"F"), "'A\"B'c\"D'E\"f");
    EXPECT_EQ(LoweredOutside("\uFF91A'B\uFF91C'D'E"), "\uFF91A'B\uFF91c'D'e");
}

TEST(DbSqlText, LowerOutsideQuotes_BracketsProtectNothing) {
    EXPECT_EQ(LoweredOutside("[A 'B' C]"), "[a 'B' c]");
}

TEST(DbSqlText, LowerOutsideQuotes_UnclosedQuote_ProtectsTheRest) {
    EXPECT_EQ(LoweredOutside("A 'B C"), "a 'B C");
    EXPECT_EQ(LoweredOutside("A'"), "a'");
    EXPECT_EQ(LoweredOutside("''A''"), "''a''");
}

TEST(DbSqlText, LowerOutsideQuotes_LettersBeyondAscii_AreLowered) {
    EXPECT_EQ(LoweredOutside("\u0104\u0416\u0394 '\u0104'"), "\u0105\u0436\u03B4 '\u0104'");
}

TEST(DbSqlText, LowerOutsideQuotes_EmptyTextAndZeros_StayWhole) {
    EXPECT_EQ(LoweredOutside(""), "");
    CString text = Units({'A', 0, 'B', '\'', 0, 'C'});
    LowerOutsideQuotes(text);
    EXPECT_EQ(text, Units({'a', 0, 'b', '\'', 0, 'C'}));
}

// ---- Blanks around operators

TEST(DbSqlText, Operators_EachOfThem_GetsBlanksOnBothSides) {
    EXPECT_EQ(Spaced("ab*cd"), "ab * cd");
    EXPECT_EQ(Spaced("ab)cd"), "ab ) cd");
    EXPECT_EQ(Spaced("ab(cd"), "ab ( cd");
    EXPECT_EQ(Spaced("ab<cd"), "ab < cd");
    EXPECT_EQ(Spaced("ab>cd"), "ab > cd");
    EXPECT_EQ(Spaced("ab=cd"), "ab = cd");
}

TEST(DbSqlText, Operators_Pairs_StayTogether) {
    EXPECT_EQ(Spaced("ab<=cd"), "ab <= cd");
    EXPECT_EQ(Spaced("ab>=cd"), "ab >= cd");
    EXPECT_EQ(Spaced("ab==cd"), "ab == cd");
    EXPECT_EQ(Spaced("ab<>cd"), "ab <> cd");
}

TEST(DbSqlText, Operators_NotEqual_StaysTogetherBehindABlank) {
    EXPECT_EQ(Spaced("ab !=cd"), "ab != cd");
    EXPECT_EQ(Spaced("ab != cd"), "ab != cd");
    EXPECT_EQ(Spaced("ab!=cd"), "ab!= cd");
}

TEST(DbSqlText, Operators_BlanksThatAreThere_AreNotDoubled) {
    for (const char* text : {"ab * cd", "ab <= cd", "ab <> cd", "ab = cd", "( ab ) cd"}) {
        EXPECT_EQ(Spaced(text), text);
    }
    EXPECT_EQ(Spaced("ab >cd"), "ab > cd");
    EXPECT_EQ(Spaced("ab> cd"), "ab > cd");
    EXPECT_EQ(Spaced("ab  =  cd"), "ab  =  cd");
    EXPECT_EQ(Spaced("ab\t=\tcd"), "ab\t = \tcd");
}

TEST(DbSqlText, Operators_InARow_AreTakenApart) {
    EXPECT_EQ(Spaced("ab((cd"), "ab ( ( cd");
    EXPECT_EQ(Spaced("ab)*(cd"), "ab ) * ( cd");
    EXPECT_EQ(Spaced("ab=(cd"), "ab = ( cd");
    EXPECT_EQ(Spaced("ab)=cd"), "ab ) = cd");
    EXPECT_EQ(Spaced("ab<<cd"), "ab < < cd");
    EXPECT_EQ(Spaced("ab><cd"), "ab > < cd");
    EXPECT_EQ(Spaced("ab<*cd"), "ab < * cd");
}

TEST(DbSqlText, Operators_BehindAPair_StandAlone) {
    EXPECT_EQ(Spaced("ab===cd"), "ab == = cd");
    EXPECT_EQ(Spaced("ab<==cd"), "ab <= = cd");
    EXPECT_EQ(Spaced("ab<>=cd"), "ab <> = cd");
    EXPECT_EQ(Spaced("ab<<=cd"), "ab < <= cd");
    EXPECT_EQ(Spaced("ab====cd"), "ab == == cd");
}

TEST(DbSqlText, Operators_EqualSignBesideOthers_GetsNoBlankThere) {
    EXPECT_EQ(Spaced("ab=!cd"), "ab =!cd");
    EXPECT_EQ(Spaced("ab !==cd"), "ab !== cd");
}

TEST(DbSqlText, Operators_AtTheFirstTwoPositions_AreLeftAlone) {
    EXPECT_EQ(Spaced("*a*b"), "*a * b");
    EXPECT_EQ(Spaced("a*b"), "a*b");
    EXPECT_EQ(Spaced("((a("), "((a (");
    EXPECT_EQ(Spaced("((("), "(( (");
    EXPECT_EQ(Spaced("<=ab"), "<=ab");
    EXPECT_EQ(Spaced("ab=c"), "ab = c");
}

TEST(DbSqlText, Operators_PairAcrossTheSecondPosition_StaysTogether) {
    EXPECT_EQ(Spaced("a<=b"), "a<= b");
    EXPECT_EQ(Spaced("a<>b"), "a<> b");
    EXPECT_EQ(Spaced("a==b"), "a== b");
    EXPECT_EQ(Spaced("a!=b"), "a!= b");
}

TEST(DbSqlText, Operators_AtTheEnd_GetNoBlankBehind) {
    EXPECT_EQ(Spaced("ab*"), "ab *");
    EXPECT_EQ(Spaced("ab<="), "ab <=");
    EXPECT_EQ(Spaced("ab="), "ab =");
    EXPECT_EQ(Spaced("ab= "), "ab = ");
}

TEST(DbSqlText, Operators_InQuotes_AreText) {
    EXPECT_EQ(Spaced("ab='c*d'>e"), "ab = 'c*d' > e");
    EXPECT_EQ(Spaced("ab\"(\"cd"), "ab\"(\"cd");
    EXPECT_EQ(Spaced("ab\uFF91<=\uFF91cd"), "ab\uFF91<=\uFF91cd");
    EXPECT_EQ(Spaced("ab'\"='=\"'=\"=c"), "ab'\"=' = \"'=\" = c");
    EXPECT_EQ(Spaced("'*'*'*'"), "'*' * '*'");
}

TEST(DbSqlText, Operators_BehindAnUnclosedQuote_AreText) {
    EXPECT_EQ(Spaced("ab='c*d"), "ab = 'c*d");
    EXPECT_EQ(Spaced("ab*'"), "ab * '");
}

TEST(DbSqlText, Operators_InBrackets_AreOperators) {
    EXPECT_EQ(Spaced("[a*b]=c"), "[a * b] = c");
}

TEST(DbSqlText, Operators_EmptyTextAndZeros_StayWhole) {
    EXPECT_EQ(Spaced(""), "");
    EXPECT_EQ(WithBlanksAroundOperators(Units({'a', 'b', 0, '=', 0})),
              Units({'a', 'b', 0, ' ', '=', ' ', 0}));
}

TEST(DbSqlText, Operators_RandomTexts_AreThoseOfThePlainRules) {
    std::mt19937 random(quillet::test::Seed(7));
    const WideString alphabet(OLESTR("ab  *)(<>=!'\"\uFF91[]"));
    for (int round = 0; round < 20000; ++round) {
        WideString text;
        for (std::size_t length = random() % 14; length > 0; --length) {
            text += alphabet[random() % alphabet.size()];
        }
        EXPECT_EQ(WithBlanksAroundOperators(CString(WideView(text))),
                  CString(WideView(quillet::test::PlainSpacer(text).Spaced())))
            << "'" << CString(WideView(text)) << "'";
    }
}

// ---- Tokens

TEST(DbSqlText, Tokens_SeparatorsAreBlankCommaAndSemicolon) {
    EXPECT_EQ(Tokens("a b,c;d"), (Strings{"a", "b", "c", "d"}));
    EXPECT_EQ(Tokens("a\tb\nc"), (Strings{"a\tb\nc"}));
}

TEST(DbSqlText, Tokens_BetweenSeparatorsOnly_AreNone) {
    EXPECT_EQ(Tokens(" , ;a;;  ,b, "), (Strings{"a", "b"}));
    EXPECT_TRUE(Tokens("").empty());
    EXPECT_TRUE(Tokens(" ,;").empty());
}

TEST(DbSqlText, Tokens_QuotesOfEveryKind_KeepTheirMarksAndWhatIsInside) {
    EXPECT_EQ(Tokens("'a b','c;d'"), (Strings{"'a b'", "'c;d'"}));
    EXPECT_EQ(Tokens("\"a b\" c"), (Strings{"\"a b\"", "c"}));
    EXPECT_EQ(Tokens("[a, b] c"), (Strings{"[a, b]", "c"}));
    EXPECT_EQ(Tokens("\uFF91a b\uFF91 c"), (Strings{"\uFF91a b\uFF91", "c"}));
}

TEST(DbSqlText, Tokens_AQuoteClosesAtItsOwnMarkOnly) {
    EXPECT_EQ(Tokens("'a\" ]' b"), (Strings{"'a\" ]'", "b"}));
    EXPECT_EQ(Tokens("[a' [ b] c"), (Strings{"[a' [ b]", "c"}));
    EXPECT_EQ(Tokens("a] b"), (Strings{"a]", "b"})) << "a closing bracket opens nothing";
}

TEST(DbSqlText, Tokens_QuotesInTheMiddle_DoNotEndTheToken) {
    EXPECT_EQ(Tokens("a'b c'd e"), (Strings{"a'b c'd", "e"}));
    EXPECT_EQ(Tokens("'a''b' c"), (Strings{"'a''b'", "c"}));
}

TEST(DbSqlText, Tokens_UnclosedQuote_ReachesToTheEnd) {
    EXPECT_EQ(Tokens("a 'b c,d;"), (Strings{"a", "'b c,d;"}));
    EXPECT_EQ(Tokens("a ["), (Strings{"a", "["}));
}

TEST(DbSqlText, Tokens_ThatAreNotDropped_RunOnIntoTheNext) {
    const CString sql("one two 'three four'");
    SqlTokens tokens(sql.View());
    ASSERT_TRUE(tokens.Next());
    ASSERT_TRUE(tokens.Next());
    EXPECT_EQ(CString(tokens.Token()), "onetwo");
    ASSERT_TRUE(tokens.Next());
    EXPECT_EQ(CString(tokens.Token()), "onetwo'three four'");
    EXPECT_FALSE(tokens.Next());
    EXPECT_FALSE(tokens.Next());
}

TEST(DbSqlText, Tokens_ThatAreNotDropped_AreNotGivenTwiceAtTheEnd) {
    const CString sql("one ");
    SqlTokens tokens(sql.View());
    ASSERT_TRUE(tokens.Next());
    EXPECT_TRUE(tokens.Next()) << "the end of the text completes a token, too";
    EXPECT_FALSE(tokens.Next());
}

TEST(DbSqlText, Tokens_Zeros_AreCharactersLikeOthers) {
    const CString sql = Units({'a', 0, 'b', ' ', 0});
    SqlTokens tokens(sql.View());
    ASSERT_TRUE(tokens.Next());
    EXPECT_EQ(CString(tokens.Token()), Units({'a', 0, 'b'}));
    tokens.Drop();
    ASSERT_TRUE(tokens.Next());
    EXPECT_EQ(CString(tokens.Token()), Units({0}));
    tokens.Drop();
    EXPECT_FALSE(tokens.Next());
}

}  // namespace
