// Length-prefixed strings.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Quillet/platform/Automation.h"

namespace quillet::test {
namespace {

using Units = std::basic_string<OLECHAR>;

TEST(BStr, SysAllocString_Text_CopiesItWithItsLength) {
    const OLECHAR text[] = OLESTR("h\u00E9llo");
    BSTR made = SysAllocString(text);
    EXPECT_EQ(SysStringLen(made), 5U);
    EXPECT_EQ(Units(made), Units(text));
    EXPECT_NE(static_cast<const OLECHAR*>(made), text);
    SysFreeString(made);
}

TEST(BStr, SysAllocString_Null_GivesNull) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST(BStr, SysAllocString_EmptyText_GivesAStringOfItsOwn) {
    BSTR made = SysAllocString(OLESTR(""));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(SysStringLen(made), 0U);
    EXPECT_EQ(made[0], OLECHAR{0});
    SysFreeString(made);
}

TEST(BStr, SysAllocStringLen_PartOfAText_TerminatesIt) {
    BSTR made = SysAllocStringLen(OLESTR("abcdef"), 3);
    EXPECT_EQ(Units(made), Units(OLESTR("abc")));
    SysFreeString(made);
}

TEST(BStr, SysAllocStringLen_ZeroUnitsInside_AreKept) {
    const OLECHAR text[] = {'a', 0, 'b'};
    BSTR made = SysAllocStringLen(text, 3);
    EXPECT_EQ(SysStringLen(made), 3U);
    EXPECT_EQ(made[2], OLECHAR{'b'});
    EXPECT_EQ(made[3], OLECHAR{0});
    SysFreeString(made);
}

TEST(BStr, SysAllocStringLen_NullText_GivesRoomToFill) {
    BSTR made = SysAllocStringLen(nullptr, 100);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(SysStringLen(made), 100U);
    EXPECT_EQ(made[100], OLECHAR{0});
    for (UINT at = 0; at < 100; ++at) {
        made[at] = 'x';
    }
    EXPECT_EQ(Units(made), Units(100, OLECHAR{'x'}));
    SysFreeString(made);
}

TEST(BStr, SysAllocStringLen_ImpossibleLength_GivesNull) {
    EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFU), nullptr);
}

TEST(BStr, SysAllocStringByteLen_OddNumberOfBytes_KeepsThemAll) {
    BSTR made = SysAllocStringByteLen("a\0b", 3);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(SysStringByteLen(made), 3U);
    EXPECT_EQ(SysStringLen(made), 1U);
    EXPECT_EQ(std::memcmp(made, "a\0b\0\0", 5), 0);
    SysFreeString(made);
}

TEST(BStr, SysAllocStringByteLen_NullBytes_GivesRoomToFill) {
    BSTR made = SysAllocStringByteLen(nullptr, 10);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(SysStringLen(made), 5U);
    EXPECT_EQ(made[5], OLECHAR{0});
    SysFreeString(made);
}

TEST(BStr, LengthPrefix_StandsInBytesBeforeTheText) {
    BSTR made = SysAllocString(OLESTR("abc"));
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(made) - sizeof bytes, sizeof bytes);
    EXPECT_EQ(bytes, 3 * sizeof(OLECHAR));
    SysFreeString(made);
}

TEST(BStr, NullString_HasLengthZeroAndCanBeFreed) {
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
}

}  // namespace
}  // namespace quillet::test
