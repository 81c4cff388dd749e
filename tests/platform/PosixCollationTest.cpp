// Collation keys under the collations of languages with special rules for accents, punctuation or letters.
// The user's locale is read once per process, so each case runs in a separate process.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/CollationCheck.h"

namespace quillet::test {
namespace {

[[noreturn]] void CheckKeysAndExit(const char* locale) {
    setenv("LC_ALL", locale, 1);
    const std::string wrong = WrongKeys(PlainAlphabets(), 5000, 3) + WrongKeys(OtherAlphabets(), 5000, 4);
    std::fprintf(stderr, "%s: %s\n", locale, wrong.empty() ? "all kept" : wrong.c_str());
    std::exit(0);
}

class PosixCollation : public testing::TestWithParam<const char*> {
protected:
    PosixCollation() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_P(PosixCollation, AppendCollationKey_KeepsWhatItPromises) {
    EXPECT_EXIT(CheckKeysAndExit(GetParam()), testing::ExitedWithCode(0), "all kept");
}

INSTANTIATE_TEST_SUITE_P(Locales, PosixCollation,
                         testing::Values("da_DK", "fr_CA", "hr_HR", "ja_JP", "lo_LA", "sv_SE", "th_TH",
                                         "vi_VN"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST(PosixCollation, AppendCollationKey_MarksOutOfOrder_HaveTheKeyOfThoseInOrder) {
    EXPECT_EQ(KeyOf(u"x\u0301\u0323").m_kind, CollationKey::Equality);
    EXPECT_EQ(KeyOf(u"x\u0301\u0323").m_bytes, KeyOf(u"x\u0323\u0301").m_bytes);
    EXPECT_EQ(Compared(u"x\u0301\u0323", u"x\u0323\u0301"), HRESULT{VARCMP_EQ});
}

TEST(PosixCollation, AppendCollationKey_AnyText_HasAKey) {
    TextPairs pairs(5);
    for (const WideString& units : OtherAlphabets()) {
        for (int round = 0; round < 2000; ++round) {
            pairs.Draw(units);
            ASSERT_NE(KeyOf(pairs.Left()).m_kind, CollationKey::None) << Describe(*TextVariant(pairs.Left()));
        }
    }
}

}  // namespace
}  // namespace quillet::test
