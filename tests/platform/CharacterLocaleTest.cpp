#include "Quillet/platform/CharacterLocale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "support/OtherLocale.h"

namespace quillet::platform {
namespace {

using test::OtherLocale;

class CharacterLocaleTest : public testing::Test {
protected:
    OtherLocale m_before;
};

TEST_F(CharacterLocaleTest, Destroy_SetsTheLocaleToC_WhateverItWas) {
    { const CharacterLocale locale(OLESTR("polish")); }
    EXPECT_EQ(OtherLocale::Now(), "C");
}

TEST_F(CharacterLocaleTest, UnknownLanguage_LeavesTheLocaleUntilTheEnd) {
    {
        const CharacterLocale locale(OLESTR("no language"));
        EXPECT_TRUE(m_before.IsUnchanged());
    }
    EXPECT_EQ(OtherLocale::Now(), "C");
}

TEST_F(CharacterLocaleTest, OtherCategories_StayAsTheyWere) {
    const std::string numbers = std::setlocale(LC_NUMERIC, nullptr);
    const CharacterLocale locale(OLESTR("russian"));
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), numbers);
}

}  // namespace
}  // namespace quillet::platform
