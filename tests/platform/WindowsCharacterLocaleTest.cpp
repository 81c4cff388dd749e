#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "Quillet/platform/CharacterLocale.h"

namespace quillet::platform {
namespace {

TEST(WindowsCharacterLocale, WhileItLives_TheLocaleIsTheLanguages) {
    for (const auto& [language, name] : {std::pair(OLESTR("english"), "English"),
                                         {OLESTR("french"), "French"},
                                         {OLESTR("spanish"), "Spanish"},
                                         {OLESTR("portuguese"), "Portuguese"},
                                         {OLESTR("italian"), "Italian"},
                                         {OLESTR("romanian"), "Romanian"},
                                         {OLESTR("polish"), "Polish"},
                                         {OLESTR("russian"), "Russian"}}) {
        {
            const CharacterLocale locale(language);
            EXPECT_THAT(std::setlocale(LC_CTYPE, nullptr), testing::StartsWith(name));
        }
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    }
}

}  // namespace
}  // namespace quillet::platform
