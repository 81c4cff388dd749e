#include "Quillet/dbaccess/LangMappings.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/OtherLocale.h"
#include "support/RecordHelpers.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

// The current locale after the names were selected in turn; empty if none was set.
std::string Selected(const std::vector<const char*>& names) {
    LangMappings mappings;
    for (const char* name : names) {
        mappings.Select(name);
    }
    return mappings.Current() == nullptr ? "" : CString(mappings.Current()->m_locale).ToUtf8();
}

TEST(LangMappings, AtFirst_NothingIsCurrent) {
    EXPECT_EQ(LangMappings().Current(), nullptr);
    EXPECT_EQ(Selected({}), "");
}

TEST(LangMappings, Select_LowersTheName) {
    EXPECT_EQ(Selected({"DESC_33"}), "french");
    EXPECT_EQ(Selected({"Desc034"}), "spanish");
}

TEST(LangMappings, Select_EveryMarkerThatTakesEffect) {
    const std::vector<std::pair<const char*, std::vector<const char*>>> markers = {
        {"english", {"001", "desc_01", "desc001"}},
        {"french", {"033", "desc033", "desc_33", "charge33"}},
        {"spanish", {"034", "desc034", "desc_34"}},
        {"portuguese", {"035", "desc_35", "desc035"}},
        {"italian", {"039", "desc039"}},
        {"romanian", {"040", "desc040"}},
        {"polish", {"048", "desc_48", "vqmskit", "vqtakit"}},
        {"russian", {"070", "desc_70", "desc070"}},
    };
    for (const auto& [locale, texts] : markers) {
        for (const char* const marker : texts) {
            EXPECT_EQ(Selected({marker}), locale) << marker;
            EXPECT_EQ(Selected({("in front " + std::string(marker) + " and behind").c_str()}), locale)
                << marker;
        }
    }
}

TEST(LangMappings, Select_MarkersWithCapitals_AreNeverFound) {
    for (const char* marker :
         {"Cfr0", "Cfr099", "CMA0", "002F", "ZQEXkit", "WODAKkit", "Desc_39", "TIBEHkit", "Desc_40", "Q_DWF",
          "K_DW4417", "Q_ZARO", "HEMYkit", "HEMYXkit", "NUAkit", "BIkit", "rod_ZARO", "XFEL079"}) {
        EXPECT_EQ(Selected({marker}), "C") << marker;
    }
    EXPECT_EQ(Selected({"XFEL070A"}), "russian") << "by 070";
}

TEST(LangMappings, Select_DigitsAnywhereInAName_Count) {
    EXPECT_EQ(Selected({"item1033"}), "french");
}

TEST(LangMappings, Select_TheFirstLanguageInOrderWins) {
    EXPECT_EQ(Selected({"desc_011033"}), "english");
    EXPECT_EQ(Selected({"070 048"}), "polish");
}

TEST(LangMappings, Select_WithoutAMarker_TakesTheDefaultWhereNothingIsCurrent) {
    LangMappings mappings;
    mappings.Select("item");
    ASSERT_NE(mappings.Current(), nullptr);
    EXPECT_TRUE(mappings.IsDefault(mappings.Current()));
    EXPECT_EQ(mappings.Current()->m_code, 1U);
    EXPECT_EQ(CString(mappings.Current()->m_locale), CString("C"));
    EXPECT_TRUE(mappings.Current()->m_markers.empty());
}

TEST(LangMappings, Select_WithoutAMarker_KeepsWhatIsCurrent) {
    EXPECT_EQ(Selected({"desc_70", "item"}), "russian");
    EXPECT_EQ(Selected({"desc_70", "item", "desc_48", "item"}), "polish");
    EXPECT_EQ(Selected({"item", "desc_48"}), "polish");
}

TEST(LangMappings, Reset_LeavesNothingCurrent) {
    LangMappings mappings;
    mappings.Select("desc_70");
    mappings.Reset();
    EXPECT_EQ(mappings.Current(), nullptr);
    mappings.Select("item");
    EXPECT_TRUE(mappings.IsDefault(mappings.Current()));
}

TEST(LangMappings, Codes_AreTheDigitsOfTheDescriptionColumns) {
    const LangMappings mappings;
    const std::vector<std::pair<const char*, std::uint32_t>> codes = {
        {"desc001", 1},  {"desc033", 33}, {"desc034", 34}, {"desc035", 35},
        {"desc039", 39}, {"desc040", 40}, {"desc_48", 48}, {"desc070", 70}};
    for (const auto& [name, code] : codes) {
        ASSERT_NE(mappings.Find(name), nullptr) << name;
        EXPECT_EQ(mappings.Find(name)->m_code, code);
        EXPECT_FALSE(mappings.IsDefault(mappings.Find(name)));
    }
    EXPECT_EQ(mappings.Find("item"), nullptr);
}

TEST(LangMappings, FindAndSelectFound_DoWhatSelectDoes) {
    const char* const names[] = {"item", "desc_48", "price 001", "Desc_40",
                                 "a033", "DESC070", "",          "charge33 048"};
    std::mt19937 random(quillet::test::Seed(20030201));
    LangMappings literal;
    LangMappings halves;
    for (int i = 0; i < 2000; ++i) {
        const CString name = names[random() % std::size(names)];
        literal.Select(name);
        halves.SelectFound(halves.Find(name));
        ASSERT_EQ(CString(literal.Current()->m_locale), CString(halves.Current()->m_locale));
        if (random() % 8 == 0) {
            literal.Reset();
            halves.Reset();
        }
    }
}

CComVariant Converted(const DBACCESS_COLUMN& column) {
    CComVariant value("what stood there before");
    LangMappings().Convert(column, value);
    return value;
}

TEST(LangMappings, Convert_EachCode_HasItsType) {
    EXPECT_EQ(Converted(Column("", true)).boolVal, VARIANT_TRUE);
    EXPECT_EQ(Converted(Column("", true)).vt, VT_BOOL);
    EXPECT_EQ(Converted(IntegerColumn("", -2)).vt, VT_I4);
    EXPECT_EQ(Converted(IntegerColumn("", -2)).lVal, -2);
    EXPECT_EQ(Converted(Column("", -70000L)).vt, VT_I4);
    EXPECT_EQ(Converted(Column("", -70000L)).lVal, -70000);
    EXPECT_EQ(Converted(Column("", 1.5F)).vt, VT_R4);
    EXPECT_EQ(Converted(Column("", 1.5F)).fltVal, 1.5F);
    EXPECT_EQ(Converted(Column("", 2.5)).vt, VT_R8);
    EXPECT_EQ(Converted(Column("", 2.5)).dblVal, 2.5);
    EXPECT_EQ(TextOf(Converted(Column("", "zażółć"))), "zażółć");
    EXPECT_EQ(Converted(DBACCESS_COLUMN()).vt, VT_EMPTY);
}

TEST(LangMappings, Convert_Boolean_IsTrueForExactlyOne) {
    EXPECT_EQ(Converted(Column("", 1)).boolVal, VARIANT_TRUE);
    EXPECT_EQ(Converted(Column("", 0)).boolVal, VARIANT_FALSE);
    EXPECT_EQ(Converted(Column("", 5)).boolVal, VARIANT_FALSE);
    EXPECT_EQ(Converted(Column("", -1)).boolVal, VARIANT_FALSE);
}

TEST(LangMappings, Convert_Binary_CopiesTheBytesFromZero) {
    const std::string bytes("a\0b", 3);
    EXPECT_EQ(ContentOf(Converted(Column("", BytesOfText(bytes)))), (ArrayContent{0, bytes}));
    EXPECT_EQ(ContentOf(Converted(Column("", CByteArray()))), (ArrayContent{0, ""}));
}

TEST(LangMappings, Convert_UnknownCode_IsEmpty) {
    DBACCESS_COLUMN column = Column("", "text");
    column.m_type = 8;
    EXPECT_EQ(Converted(column).vt, VT_EMPTY);
}

// Whether another locale is still set after a text was converted with the names selected.
bool KeepsLocale(const std::vector<const char*>& names, const DBACCESS_COLUMN& column) {
    const OtherLocale locale;
    LangMappings mappings;
    for (const char* name : names) {
        mappings.Select(name);
    }
    CComVariant value;
    mappings.Convert(column, value);
    if (!locale.IsUnchanged()) {
        EXPECT_EQ(OtherLocale::Now(), "C");
    }
    return locale.IsUnchanged();
}

TEST(LangMappings, Convert_TextUnderALanguage_LeavesTheCharacterTypeLocaleAtC) {
    EXPECT_FALSE(KeepsLocale({"desc_48"}, Column("", "text")));
    EXPECT_FALSE(KeepsLocale({"item", "desc_01"}, Column("", "text"))) << "English is not the default";
}

TEST(LangMappings, Convert_EmptyText_DoesNotTouchTheLocale) {
    EXPECT_TRUE(KeepsLocale({"desc_48"}, Column("", "")));
}

TEST(LangMappings, Convert_UnderTheDefaultOrNothing_DoesNotTouchTheLocale) {
    EXPECT_TRUE(KeepsLocale({"item"}, Column("", "text")));
    EXPECT_TRUE(KeepsLocale({}, Column("", "text")));
}

TEST(LangMappings, Convert_OtherCodes_DoNotTouchTheLocale) {
    EXPECT_TRUE(KeepsLocale({"desc_48"}, Column("", 5)));
    EXPECT_TRUE(KeepsLocale({"desc_48"}, Column("", BytesOfText("text"))));
}

TEST(LangMappings, Instance_IsOneForTheProcess) {
    EXPECT_EQ(&LangMappings::Instance(), &LangMappings::Instance());
    EXPECT_EQ(LangMappings::Instance().Current(), nullptr);
}

}  // namespace
