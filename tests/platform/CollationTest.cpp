// Collation keys against the comparison that they replace.
#include "Quillet/platform/Collation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/CollationCheck.h"

namespace quillet::test {
namespace {

using platform::AppendCollationKey;
using platform::CollationKey;

CollationKey KindOf(WideView text) {
    std::string key;
    return AppendCollationKey(text, key);
}

TEST(Collation, AppendCollationKey_KeepsWhatStandsBefore) {
    std::string key = "before";
    AppendCollationKey(OLESTR("text"), key);
    EXPECT_EQ(key, "before" + KeyOf(OLESTR("text")).m_bytes);
    EXPECT_GT(key.size(), std::string("before").size());
}

TEST(Collation, AppendCollationKey_LettersDigitsAndSigns_HaveAnOrder) {
    EXPECT_EQ(KindOf(WideView()), CollationKey::Order);
    EXPECT_EQ(KindOf(OLESTR("IPE 300-A, \"x\" ~")), CollationKey::Order);
    EXPECT_EQ(KindOf(OLESTR("Tr\u00E4ger \u2264 5\u00B5m \u0416\u03B1")), CollationKey::Order);
    EXPECT_EQ(KindOf(OLESTR("\u9F8D\u30AB\uAC00")), CollationKey::Order);
}

TEST(Collation, AppendCollationKey_OtherTexts_AreEqualByTheirKeys) {
    EXPECT_EQ(KindOf(OLESTR("a\u00ADb")), CollationKey::Equality);
    EXPECT_EQ(KindOf(OLESTR("x\u0301")), CollationKey::Equality);
    EXPECT_EQ(KindOf(OLESTR("\u0627\u0628")), CollationKey::Equality);
    EXPECT_EQ(KindOf(OLESTR("tab\there")), CollationKey::Equality);
}

TEST(Collation, AppendCollationKey_CharactersWithoutWeight_AreNotInTheKey) {
    EXPECT_EQ(Compared(OLESTR("a\u00ADb"), OLESTR("ab")), HRESULT{VARCMP_EQ});
    EXPECT_EQ(KeyOf(OLESTR("a\u00ADb")).m_bytes, KeyOf(OLESTR("ab")).m_bytes);
}

TEST(Collation, AppendCollationKey_LetterWithItsMarkApart_HasTheLettersKey) {
    EXPECT_EQ(Compared(OLESTR("e\u0301"), OLESTR("\u00E9")), HRESULT{VARCMP_EQ});
    EXPECT_EQ(KeyOf(OLESTR("e\u0301")).m_bytes, KeyOf(OLESTR("\u00E9")).m_bytes);
}

TEST(Collation, AppendCollationKey_MarksInAnyOrder_HaveAKey) {
    EXPECT_EQ(KindOf(OLESTR("x\u0301\u0323")), CollationKey::Equality);
    EXPECT_EQ(KindOf(OLESTR("x\u0323\u0301")), CollationKey::Equality);
}

TEST(Collation, AppendCollationKey_LongText_HasAKey) {
    const WideString text(100000, WCHAR(0x4E8C));
    EXPECT_EQ(KindOf(text), CollationKey::Order);
    EXPECT_LT(KeyOf(text).m_bytes, KeyOf(text + OLESTR("a")).m_bytes);
}

TEST(Collation, AppendCollationKey_PlainTexts_HaveTheOrderOfTheComparison) {
    EXPECT_EQ(WrongKeys(PlainAlphabets(), 20000, 1), "");
}

TEST(Collation, AppendCollationKey_EqualTexts_HaveEqualKeys) {
    EXPECT_EQ(WrongKeys(OtherAlphabets(), 20000, 2), "");
}

}  // namespace
}  // namespace quillet::test
