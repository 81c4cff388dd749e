// The user's default locale is that of the environment. It is read once per process, so each case runs in a
// separate process.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/platform/Automation.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

using Variables = std::map<std::string, std::string>;

// Sets the locale variables of the environment and restores them at the end.
class Environment {
public:
    explicit Environment(const Variables& variables) {
        for (const char* name : {"LC_ALL", "LC_NUMERIC", "LC_COLLATE", "LC_TIME", "LANG"}) {
            const char* value = std::getenv(name);
            m_before.emplace_back(name, value == nullptr ? std::nullopt : std::optional<std::string>(value));
            const auto set = variables.find(name);
            Set(name, set == variables.end() ? std::nullopt : std::optional<std::string>(set->second));
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() {
        for (const auto& [name, value] : m_before) {
            Set(name, value);
        }
    }

private:
    static void Set(const std::string& name, const std::optional<std::string>& value) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }

    std::vector<std::pair<std::string, std::optional<std::string>>> m_before;
};

[[noreturn]] void PrintAndExit() {
    std::string line;
    for (const Value& source : {R8(1.5), Date(37623.75)}) {
        ScopedVariant value(source);
        VariantChangeTypeEx(&value, &value, LOCALE_USER_DEFAULT, 0, VT_BSTR);
        line += Describe(*value) + " ";
    }
    ScopedVariant ring(Text(u"\u00E5"));
    ScopedVariant z(Text(u"z"));
    line += VarCmp(&ring, &z, LOCALE_USER_DEFAULT, 0) == VARCMP_GT ? "last" : "first";
    std::fprintf(stderr, "%s\n", line.c_str());
    std::exit(0);
}

class PosixLocale : public testing::Test {
protected:
    PosixLocale() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

#define EXPECT_DEFAULTS(expected) EXPECT_EXIT(PrintAndExit(), testing::ExitedWithCode(0), expected)

TEST_F(PosixLocale, UserDefault_EmptyEnvironment_HasAPointAndMonthFirst) {
    const Environment environment(Variables{});
    EXPECT_DEFAULTS("\"1\\.5\".*\"1/2/2003 6:00:00 PM\" first");
}

TEST_F(PosixLocale, UserDefault_NamesOfTheCLocale_AreTheSame) {
    for (const char* name : {"C", "POSIX", "C.UTF-8", "C.utf8"}) {
        const Environment environment(Variables{{"LC_ALL", name}, {"LANG", "de_DE.UTF-8"}});
        EXPECT_DEFAULTS("\"1\\.5\".*\"1/2/2003 6:00:00 PM\" first");
    }
}

TEST_F(PosixLocale, UserDefault_AmericanEnglish_LooksLikeTheCLocale) {
    const Environment environment(Variables{{"LANG", "en_US.UTF-8"}});
    EXPECT_DEFAULTS("\"1\\.5\".*\"1/2/2003 6:00:00 PM\" first");
}

TEST_F(PosixLocale, UserDefault_Lang_IsForAll) {
    const Environment environment(Variables{{"LANG", "sv_SE.UTF-8"}});
    EXPECT_DEFAULTS("\"1,5\".*\"2003-01-02 18:00:00\" last");
}

TEST_F(PosixLocale, UserDefault_EachCategory_IsAboveLang) {
    const Environment environment(Variables{{"LC_NUMERIC", "de_DE.UTF-8@euro"}, {"LANG", "C"}});
    EXPECT_DEFAULTS("\"1,5\".*\"1/2/2003 6:00:00 PM\" first");
}

TEST_F(PosixLocale, UserDefault_CollationAndTime_HaveTheirOwnVariables) {
    const Environment environment(
        Variables{{"LC_COLLATE", "sv_SE"}, {"LC_TIME", "de_DE"}, {"LANG", "en_US"}});
    EXPECT_DEFAULTS("\"1\\.5\".*\"02\\.01\\.2003 18:00:00\" last");
}

TEST_F(PosixLocale, UserDefault_LcAll_IsAboveTheCategories) {
    const Environment environment(Variables{{"LC_ALL", "fr_FR"}, {"LC_NUMERIC", "en_US"}, {"LANG", "en_US"}});
    EXPECT_DEFAULTS("\"1,5\".*\"02/01/2003 18:00:00\" first");
}

TEST_F(PosixLocale, UserDefault_EmptyVariable_CountsAsUnset) {
    const Environment environment(Variables{{"LC_ALL", ""}, {"LC_NUMERIC", "de_DE"}});
    EXPECT_DEFAULTS("\"1,5\"");
}

}  // namespace
}  // namespace quillet::test
