#include "Quillet/platform/CharacterLocale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace quillet::platform {
namespace {

std::string Now() {
    return std::setlocale(LC_CTYPE, nullptr);
}

// Another locale than "C", and "C" at the end.
class CharacterLocaleTest : public testing::Test {
protected:
    CharacterLocaleTest() {
        for (const char* name : {"C.UTF-8", "english"}) {
            if (std::setlocale(LC_CTYPE, name) != nullptr) {
                break;
            }
        }
        m_before = Now();
        EXPECT_NE(m_before, "C");
    }
    ~CharacterLocaleTest() override { std::setlocale(LC_CTYPE, "C"); }

    std::string m_before;
};

TEST_F(CharacterLocaleTest, Destroy_SetsTheLocaleToC_WhateverItWas) {
    { const CharacterLocale locale(OLESTR("polish")); }
    EXPECT_EQ(Now(), "C");
}

TEST_F(CharacterLocaleTest, UnknownLanguage_LeavesTheLocaleUntilTheEnd) {
    {
        const CharacterLocale locale(OLESTR("no language"));
        EXPECT_EQ(Now(), m_before);
    }
    EXPECT_EQ(Now(), "C");
}

TEST_F(CharacterLocaleTest, OtherCategories_StayAsTheyWere) {
    const std::string numbers = std::setlocale(LC_NUMERIC, nullptr);
    const CharacterLocale locale(OLESTR("russian"));
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), numbers);
}

}  // namespace
}  // namespace quillet::platform
