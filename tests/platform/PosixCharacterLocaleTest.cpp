#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

#include "Quillet/platform/CharacterLocale.h"
#include "support/TemporaryFolder.h"

namespace quillet::platform {
namespace {

// The C library searches for locales in the test's folder.
class PosixCharacterLocale : public testing::Test {
protected:
    PosixCharacterLocale() {
        // Discards locales that were loaded before.
        { const CharacterLocale other(u"english"); }
        setenv("LOCPATH", m_folder.Path().c_str(), 1);
    }
    ~PosixCharacterLocale() override {
        if (m_hadPath) {
            setenv("LOCPATH", m_pathBefore.c_str(), 1);
        } else {
            unsetenv("LOCPATH");
        }
        { const CharacterLocale other(u"english"); }
    }

    bool Install(const std::string& locale, const std::string& encoding, const std::string& name) {
        const std::string command = "localedef -i " + locale + " -f " + encoding + " '" +
                                    test::Utf8(m_folder / name) + "' >/dev/null 2>&1";
        return std::system(command.c_str()) == 0;
    }

    test::TemporaryFolder m_folder;

private:
    bool m_hadPath = std::getenv("LOCPATH") != nullptr;
    std::string m_pathBefore = m_hadPath ? std::getenv("LOCPATH") : "";
};

TEST_F(PosixCharacterLocale, InstalledLanguage_IsTheLocaleWhileItLives) {
    if (!Install("pl_PL", "UTF-8", "pl_PL.UTF-8")) {
        GTEST_SKIP() << "no localedef here, or no definition of pl_PL";
    }
    for (int round = 0; round < 2; ++round) {
        {
            const CharacterLocale locale(u"polish");
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "pl_PL.UTF-8");
        }
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    }
}

TEST_F(PosixCharacterLocale, LanguageWithoutALocale_LeavesWhatIs) {
    for (int round = 0; round < 2; ++round) {
        const CharacterLocale locale(u"polish");
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    }
}

}  // namespace
}  // namespace quillet::platform
