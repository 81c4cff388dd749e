// The case mapping table of the Windows port, compared with ICU's mappings. The tests of this port link the
// table itself; the library uses ICU.
#include "Quillet/platform/CaseMapping.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace quillet::test {
namespace {

// The version of the Unicode Character Database that the table was generated from.
constexpr int TableVersion = 15;

bool IsInTheTablesVersion(char32_t c) {
    UVersionInfo age;
    u_charAge(static_cast<UChar32>(c), age);
    return age[0] <= TableVersion;
}

TEST(CaseMapping, EveryCodePoint_HasTheMappingsOfTheReference) {
    int letters = 0;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (!IsInTheTablesVersion(c)) {
            continue;
        }
        const auto code = static_cast<UChar32>(c);
        ASSERT_EQ(platform::LowerOf(c), static_cast<char32_t>(u_tolower(code))) << std::hex << code;
        ASSERT_EQ(platform::UpperOf(c), static_cast<char32_t>(u_toupper(code))) << std::hex << code;
        ASSERT_EQ(platform::FoldOf(c), static_cast<char32_t>(u_foldCase(code, U_FOLD_CASE_DEFAULT)))
            << std::hex << code;
        letters += platform::LowerOf(c) != c ? 1 : 0;
    }
    EXPECT_GT(letters, 1000);
}

}  // namespace
}  // namespace quillet::test
