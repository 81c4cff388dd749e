#include "input/CellText.h"

#include <gmock/gmock.h>

namespace quillet::tool {
namespace {

DbFieldDescr::eFieldType Guess(const std::vector<std::string>& texts) {
    TypeGuess guess;
    for (const std::string& text : texts) {
        guess.See(text);
    }
    return guess.Type();
}

TEST(CellText, Guess_WholeNumbers_AreLongWithin32Bits) {
    EXPECT_EQ(Guess({"0", "-1", "2147483647", "-2147483648"}), DbFieldDescr::Long);
    EXPECT_EQ(Guess({"1", "2147483648"}), DbFieldDescr::Double);
    EXPECT_EQ(Guess({"999999999999999"}), DbFieldDescr::Double);
    EXPECT_EQ(Guess({"9999999999999999"}), DbFieldDescr::Text) << "it would lose digits";
}

TEST(CellText, Guess_Fractions_AreDouble) {
    EXPECT_EQ(Guess({"1", "0.5"}), DbFieldDescr::Double);
    EXPECT_EQ(Guess({"1e3", "-1.5E-10", ".5", "5."}), DbFieldDescr::Double);
    EXPECT_EQ(Guess({"3.141592653589793"}), DbFieldDescr::Double);
}

TEST(CellText, Guess_WhatOnlyLooksLikeNumbers_IsText) {
    for (const char* text :
         {"007", "-01", "+5", "1,5", "1.5 ", " 1", "0x10", "inf", "nan", "1e", "1e999", "-", ".", "1.2.3"}) {
        EXPECT_EQ(Guess({text}), DbFieldDescr::Text) << text;
    }
    EXPECT_EQ(Guess({"1", "x"}), DbFieldDescr::Text);
}

TEST(CellText, Guess_TrueAndFalse_AreBoolean) {
    EXPECT_EQ(Guess({"true", "FALSE", "True"}), DbFieldDescr::Boolean);
    EXPECT_EQ(Guess({"true", "1"}), DbFieldDescr::Text);
    EXPECT_EQ(Guess({"1", "0"}), DbFieldDescr::Long);
}

TEST(CellText, Guess_EmptyTexts_FitEverything) {
    EXPECT_EQ(Guess({"", "1", ""}), DbFieldDescr::Long);
    EXPECT_EQ(Guess({"", "true"}), DbFieldDescr::Boolean);
    EXPECT_EQ(Guess({"", ""}), DbFieldDescr::Text);
    EXPECT_EQ(Guess({}), DbFieldDescr::Text);
}

TEST(CellText, TypeOfWord_EveryWord_IsItsType) {
    EXPECT_EQ(TypeOfWord("long"), DbFieldDescr::Long);
    EXPECT_EQ(TypeOfWord("Integer"), DbFieldDescr::Integer);
    EXPECT_EQ(TypeOfWord("empty"), DbFieldDescr::Empty);
    EXPECT_EQ(TypeOfWord("number"), std::nullopt);
    EXPECT_EQ(TypeOfWord(""), std::nullopt);
}

// The text of a cell after it was set, or "refused".
std::string Filled(DbFieldDescr::eFieldType type, std::string_view text) {
    DbFieldDescr field;
    field.SetDbType(type);
    CComVariant cell("as it was");
    const bool isFilled = FillCell(field, text, cell);
    std::string filled;
    AppendValueText(cell, filled);
    EXPECT_EQ(isFilled, filled != "as it was");
    return isFilled ? filled : "refused";
}

TEST(CellText, Fill_Numbers_TakesWholeTextsWithinRange) {
    EXPECT_EQ(Filled(DbFieldDescr::Long, "+5"), "5");
    EXPECT_EQ(Filled(DbFieldDescr::Long, "007"), "7");
    EXPECT_EQ(Filled(DbFieldDescr::Integer, "-2147483648"), "-2147483648");
    EXPECT_EQ(Filled(DbFieldDescr::Double, "1e3"), "1000");
    for (const char* text : {"1.5", "2147483648", "x", " 1", "1 ", "+-1", "+"}) {
        EXPECT_EQ(Filled(DbFieldDescr::Long, text), "refused") << text;
    }
    for (const char* text : {"1,5", "inf", "NaN", "1e999", "1.5x", "+-1.5"}) {
        EXPECT_EQ(Filled(DbFieldDescr::Double, text), "refused") << text;
    }
    EXPECT_EQ(Filled(DbFieldDescr::Float, "1e39"), "refused");
}

TEST(CellText, Fill_Booleans_TakesWordsAndDigits) {
    EXPECT_EQ(Filled(DbFieldDescr::Boolean, "TRUE"), "true");
    EXPECT_EQ(Filled(DbFieldDescr::Boolean, "0"), "false");
    EXPECT_EQ(Filled(DbFieldDescr::Boolean, "2"), "refused");
}

TEST(CellText, Fill_Binary_TakesBase64Only) {
    EXPECT_EQ(Filled(DbFieldDescr::Binary, "QUI="), "QUI=");
    for (const char* text : {"QUI", "QU=I", "Q===", "QU I", "QUI=QUI="}) {
        EXPECT_EQ(Filled(DbFieldDescr::Binary, text), "refused") << text;
    }
}

TEST(CellText, Fill_EmptyText_LeavesNoValueButInTexts) {
    DbFieldDescr field;
    CComVariant cell(5);
    field.SetDbType(DbFieldDescr::Double);
    EXPECT_TRUE(FillCell(field, "", cell));
    EXPECT_EQ(cell.vt, VT_EMPTY);
    field.SetDbType(DbFieldDescr::Text);
    EXPECT_TRUE(FillCell(field, "", cell));
    EXPECT_EQ(cell.vt, VT_BSTR);
}

TEST(CellText, UncarriableCharacter_WhatXmlForbids_IsNamed) {
    EXPECT_EQ(UncarriableCharacter("Länge\t\r\n 🏗"), "");
    EXPECT_EQ(UncarriableCharacter("a\x0B"), "U+000B");
    EXPECT_EQ(UncarriableCharacter(std::string_view("\0", 1)), "U+0000");
    EXPECT_EQ(UncarriableCharacter("\uFFFE"), "U+FFFE");
    EXPECT_EQ(UncarriableCharacter("\uFFFF"), "U+FFFF");
    EXPECT_EQ(UncarriableCharacter("\uFFFD"), "");
}

}  // namespace
}  // namespace quillet::tool
