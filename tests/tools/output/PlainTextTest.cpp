#include "output/PlainText.h"

#include <gtest/gtest.h>

namespace quillet::tool {
namespace {

TEST(PlainText, Visible_ControlCharacters_AreSpelledOut) {
    EXPECT_EQ(Visible("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(Visible("\x1B[31mred\x7F"), "\\u{1b}[31mred\\u{7f}");
    EXPECT_EQ(Visible("\u009B2J"), "\\u{9b}2J");
    EXPECT_EQ(Visible(std::string("nul\0!", 5)), "nul\\u{0}!");
}

TEST(PlainText, Visible_CharactersThatTurnTheLine_AreSpelledOut) {
    EXPECT_EQ(Visible("a\u202Eb\u2069c\u2028d\u200Fe"), "a\\u{202e}b\\u{2069}c\\u{2028}d\\u{200f}e");
}

TEST(PlainText, Visible_OrdinaryText_StaysAsItIs) {
    EXPECT_EQ(Visible("back\\slash, Länge, 鋼, \u00A0, \u2013, \u20AC, 🏗"),
              "back\\slash, Länge, 鋼, \u00A0, \u2013, \u20AC, 🏗");
}

TEST(PlainText, CountCodePoints_TextBeyondAscii_CountsNoBytes) {
    EXPECT_EQ(CountCodePoints(""), 0U);
    EXPECT_EQ(CountCodePoints("Länge"), 5U);
    EXPECT_EQ(CountCodePoints("工字鋼 🏗"), 5U);
}

TEST(PlainText, Shortened_LongText_IsCutBetweenCharacters) {
    EXPECT_EQ(Shortened("Länge", 5), "Länge");
    EXPECT_EQ(Shortened("Länge", 2), "Lä...");
    EXPECT_EQ(Shortened("鋼鋼", 1), "鋼...");
}

TEST(PlainText, Counted_OneAndMany_AgreeInNumber) {
    EXPECT_EQ(Counted(0, "row"), "0 rows");
    EXPECT_EQ(Counted(1, "row"), "1 row");
    EXPECT_EQ(Counted(2, "row"), "2 rows");
}

}  // namespace
}  // namespace quillet::tool
