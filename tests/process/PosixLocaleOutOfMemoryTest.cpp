// Locales that are read out of memory: they are read again, and never mistaken for another.
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "support/OutOfMemory.h"
#include "support/TestHelpers.h"

namespace {

using quillet::test::Attempt;
using quillet::test::Failing;
using quillet::test::SweepAllocations;
using quillet::test::SweepAttempts;
using quillet::test::Try;

// The result of a platform function under a locale that no other test uses.
struct LocaleCase {
    const char* m_name;
    // One for the run with single failures, one for the run in which all later allocations fail too.
    LCID m_locales[2];
    std::function<HRESULT(LCID, std::string&)> m_ask;
    const char* m_expected[2];
};

void PrintTo(const LocaleCase& one, std::ostream* out) {
    *out << one.m_name;
}

class LocaleOutOfMemory : public testing::TestWithParam<LocaleCase> {};

HRESULT TextOfNumber(LCID locale, std::string& text) {
    const CComVariant number(1.5);
    CComVariant converted;
    const HRESULT result = VariantChangeTypeEx(&converted, &number, locale, 0, VT_BSTR);
    text = quillet::test::TextOf(converted);
    return result;
}

HRESULT TextOfDate(LCID locale, std::string& text) {
    const CComVariant date = quillet::test::DateVariant(38081);
    CComVariant converted;
    const HRESULT result = VariantChangeTypeEx(&converted, &date, locale, 0, VT_BSTR);
    text = quillet::test::TextOf(converted);
    return result;
}

// A letter that is a separate one at the end of some alphabets and a variant of another in the rest.
HRESULT OrderOfLetters(LCID locale, std::string& text) {
    static CComVariant left("\xC3\xB6");
    static CComVariant right("z");
    const HRESULT result = VarCmp(&left, &right, locale, 0);
    text = std::to_string(result);
    return result;
}

const std::string Greater = std::to_string(VARCMP_GT);

INSTANTIATE_TEST_SUITE_P(
    Locales, LocaleOutOfMemory,
    testing::Values(
        // German and Greek, Danish and Czech.
        LocaleCase{"Numbers", {0x0407, 0x0408}, TextOfNumber, {"1,5", "1,5"}},
        LocaleCase{"Dates", {0x0406, 0x040E}, TextOfDate, {"04.04.2004", "2004. 04. 04."}},
        // Swedish and Finnish.
        LocaleCase{"Letters", {0x041D, 0x040B}, OrderOfLetters, {Greater.c_str(), Greater.c_str()}}));

TEST_P(LocaleOutOfMemory, IsReadWholeOrNotAtAll) {
    std::string text;
    // Initialises the test's own values, with a locale that is used nowhere else: Dutch.
    GetParam().m_ask(0x0413, text);
    for (const Failing which : {Failing::Once, Failing::FromThereOn}) {
        const std::size_t run = which == Failing::Once ? 0 : 1;
        const std::size_t failures = SweepAllocations([&](std::size_t failing) {
            HRESULT result = E_UNEXPECTED;
            const Attempt attempt = Try(
                failing, which, [&] { result = GetParam().m_ask(GetParam().m_locales[run], text); },
                quillet::test::Callers::Ours);
            EXPECT_TRUE(attempt.m_isDone);
            if (attempt.m_ranOut) {
                EXPECT_EQ(result, E_OUTOFMEMORY) << failing;
            } else {
                EXPECT_EQ(text, GetParam().m_expected[run]) << failing;
            }
            return attempt.m_ranOut && !HasFailure();
        });
        EXPECT_GE(failures, 2U);
    }
}

// Comparisons that run out of memory give no result.
TEST(OrderOutOfMemory, IsTheAnswerOrThrown) {
    // Long, not normalised, and equal for the collation, so that every path is taken.
    const std::string syllables(2000, 'a');
    const CComVariant left(CString(syllables + "e\xCC\x81\xCC\xA3"));
    const CComVariant right(CString(syllables + "\xE1\xBA\xB9\xCC\x81"));
    const HRESULT expected = quillet::Order(left, right);
    SweepAttempts([&](std::size_t failing, Failing which) {
        HRESULT order = VARCMP_NULL;
        const Attempt attempt = Try(failing, which, [&] { order = quillet::Order(left, right); });
        EXPECT_EQ(order, attempt.m_isDone ? expected : VARCMP_NULL);
        return attempt;
    });
}

}  // namespace
