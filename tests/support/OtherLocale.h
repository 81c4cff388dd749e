// A locale that tests set, to see whether it is changed.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace quillet::test {

// Sets a character type locale other than "C", and resets it to "C" at the end.
class OtherLocale {
public:
    OtherLocale() {
        for (const char* name : {"C.UTF-8", "english"}) {
            if (std::setlocale(LC_CTYPE, name) != nullptr) {
                break;
            }
        }
        m_name = Now();
        EXPECT_NE(m_name, "C") << "this system has no locale to test with";
    }
    OtherLocale(const OtherLocale&) = delete;
    OtherLocale& operator=(const OtherLocale&) = delete;
    ~OtherLocale() { std::setlocale(LC_CTYPE, "C"); }

    static std::string Now() { return std::setlocale(LC_CTYPE, nullptr); }
    // Whether nothing has set the locale since.
    bool IsUnchanged() const { return Now() == m_name; }

private:
    std::string m_name;
};

}  // namespace quillet::test
