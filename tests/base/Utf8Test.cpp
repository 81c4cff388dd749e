#include "Quillet/base/Utf8.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "Quillet/base/CString.h"
#include "support/Seed.h"

namespace {

using quillet::WideString;
using quillet::WideView;

WideString Wide(const std::string& text) {
    WideString target;
    quillet::AppendWide(text, target);
    return target;
}

std::string Narrow(WideView text) {
    std::string target;
    quillet::AppendUtf8(text, target);
    return target;
}

std::string Encoded(char32_t code) {
    std::string target;
    quillet::AppendCodePoint(code, target);
    return target;
}

WideString UnitsOf(std::initializer_list<unsigned> units) {
    WideString text;
    for (const unsigned unit : units) {
        text.push_back(static_cast<WCHAR>(unit));
    }
    return text;
}

const char* const MalformedTexts[] = {
    "\x80",              // a trail alone
    "\xC0\x80",          // overlong
    "\xC1\xBF",          // overlong
    "\xE0\x80\x80",      // overlong
    "\xE0\x9F\xBF",      // overlong
    "\xF0\x80\x80\x80",  // overlong
    "\xF0\x8F\xBF\xBF",  // overlong
    "\xED\xA0\x80",      // a surrogate
    "\xED\xBF\xBF",      // a surrogate
    "\xF4\x90\x80\x80",  // beyond the last code point
    "\xF5\x80\x80\x80",
    "\xFE",
    "\xFF",
    "\xC3",          // cut off
    "\xE2\x82",      // cut off
    "\xF0\x9F\x98",  // cut off
    "\xC3\x28",
    "\xE2\x28\xA1",
    "\xE2\x82\x28",
    "\xF0\x9F\x98\x28",
};

TEST(Utf8, IsValid_EdgesOfEveryLength_AreWellFormed) {
    for (const char* text : {"", "a", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                             "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(quillet::IsValidUtf8(text)) << testing::PrintToString(text);
    }
}

TEST(Utf8, IsValid_EveryKindOfMalformedSequence_IsRefused) {
    for (const char* text : MalformedTexts) {
        EXPECT_FALSE(quillet::IsValidUtf8(text)) << testing::PrintToString(text);
        EXPECT_FALSE(quillet::IsValidUtf8("0123456789abcdef" + std::string(text) + "tail"))
            << testing::PrintToString(text);
    }
}

TEST(Utf8, IsValid_ZeroBytes_AreCharacters) {
    EXPECT_TRUE(quillet::IsValidUtf8(std::string_view("a\0b", 3)));
    EXPECT_EQ(Wide(std::string("a\0b", 3)).size(), 3U);
}

TEST(Utf8, ValidLength_EndsBeforeTheMalformedSequence) {
    for (std::size_t plain = 0; plain < 20; ++plain) {
        for (const char* text : MalformedTexts) {
            EXPECT_EQ(quillet::ValidUtf8Length(std::string(plain, 'x') + text), plain);
        }
    }
    EXPECT_EQ(quillet::ValidUtf8Length("\xC5\xBC\xFF"), 2U);
    EXPECT_EQ(quillet::ValidUtf8Length("\xC5\xBC"), 2U);
}

TEST(Utf8, AppendWide_MalformedBytes_BecomeOneReplacementEach) {
    for (const char* text : MalformedTexts) {
        const WideString wide = Wide(text);
        EXPECT_NE(wide.find(static_cast<WCHAR>(0xFFFD)), WideString::npos) << testing::PrintToString(text);
    }
    EXPECT_EQ(Wide("\xED\xA0\x80"), UnitsOf({0xFFFD, 0xFFFD, 0xFFFD}));
    EXPECT_EQ(Wide("a\xFF\xC5\xBC"), UnitsOf({'a', 0xFFFD, 0x17C}));
    EXPECT_EQ(Wide("\xE2\x82z"), UnitsOf({0xFFFD, 0xFFFD, 'z'}));
}

TEST(Utf8, AppendWide_AppendsToWhatStands) {
    WideString target = UnitsOf({'x'});
    quillet::AppendWide("\xC5\xBC", target);
    quillet::AppendWide("", target);
    EXPECT_EQ(target, UnitsOf({'x', 0x17C}));
}

TEST(Utf8, AppendUtf8_LoneSurrogates_BecomeReplacements) {
    EXPECT_EQ(Narrow(UnitsOf({0xD800})), "\xEF\xBF\xBD");
    EXPECT_EQ(Narrow(UnitsOf({0xDC00, 'a'})),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(Narrow(UnitsOf({0xD800, 0xD800, 0xDC00})), "\xEF\xBF\xBD\xF0\x90\x80\x80");
    EXPECT_EQ(Narrow(UnitsOf({0xDC00, 0xD800})), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8, AppendCodePoint_EdgesOfEveryLength) {
    EXPECT_EQ(Encoded(0), std::string(1, '\0'));
    EXPECT_EQ(Encoded(0x7F), "\x7F");
    EXPECT_EQ(Encoded(0x80), "\xC2\x80");
    EXPECT_EQ(Encoded(0x7FF), "\xDF\xBF");
    EXPECT_EQ(Encoded(0x800), "\xE0\xA0\x80");
    EXPECT_EQ(Encoded(0xFFFF), "\xEF\xBF\xBF");
    EXPECT_EQ(Encoded(0x10000), "\xF0\x90\x80\x80");
    EXPECT_EQ(Encoded(0x10FFFF), "\xF4\x8F\xBF\xBF");
}

TEST(Utf8, NextCodePoint_PairsAndLoneSurrogates) {
    const WideString text = UnitsOf({'a', 0xD83D, 0xDE00, 0xD800, 'b', 0xDC00, 0xD800});
    std::size_t position = 0;
    std::vector<unsigned> codes;
    while (position < text.size()) {
        codes.push_back(static_cast<unsigned>(quillet::NextCodePoint(text, position)));
    }
    EXPECT_EQ(codes, (std::vector<unsigned>{'a', 0x1F600, 0xD800, 'b', 0xDC00, 0xD800}));
}

TEST(Utf8, IsSurrogate_HalvesAndNeighbours) {
    EXPECT_FALSE(quillet::IsSurrogate(0xD7FF));
    EXPECT_TRUE(quillet::IsSurrogate(0xD800));
    EXPECT_TRUE(quillet::IsSurrogate(0xDFFF));
    EXPECT_FALSE(quillet::IsSurrogate(0xE000));
}

TEST(Utf8, EveryCodePoint_ComesBack) {
    std::string text;
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        if (!quillet::IsSurrogate(code)) {
            quillet::AppendCodePoint(code, text);
        }
    }
    ASSERT_TRUE(quillet::IsValidUtf8(text));
    EXPECT_TRUE(Narrow(Wide(text)) == text);
}

TEST(Utf8, RandomUnits_AsUtf8_AreAlwaysWellFormed) {
    std::mt19937 random(quillet::test::Seed(20250401));
    for (int round = 0; round < 2000; ++round) {
        WideString units;
        for (std::size_t left = random() % 20; left > 0; --left) {
            units.push_back(
                static_cast<WCHAR>(random() % 3 == 0 ? 0xD800 + random() % 0x800 : random() % 0x10000));
        }
        ASSERT_TRUE(quillet::IsValidUtf8(Narrow(units)));
    }
}

TEST(Utf8, RandomBytes_ConvertAsFarAsTheyAreWellFormed) {
    std::mt19937 random(quillet::test::Seed(20250402));
    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        for (std::size_t left = random() % 24; left > 0; --left) {
            bytes += static_cast<char>(random() % 4 == 0 ? 0x80 + random() % 0x80 : 'a' + random() % 3);
        }
        const std::size_t valid = quillet::ValidUtf8Length(bytes);
        const std::string start = bytes.substr(0, valid);
        ASSERT_TRUE(quillet::IsValidUtf8(start));
        ASSERT_EQ(quillet::IsValidUtf8(bytes), valid == bytes.size());
        ASSERT_EQ(Narrow(Wide(bytes)).substr(0, valid), start);
        if (valid < bytes.size()) {
            ASSERT_EQ(Narrow(Wide(bytes)).substr(valid, 3), "\xEF\xBF\xBD");
        }
    }
}

}  // namespace
