#include "Quillet/platform/CodePage.h"

#include <gtest/gtest.h>

#include <string>

namespace quillet::platform {
namespace {

WideString Decoded(unsigned number, std::string_view bytes) {
    WideString text;
    CodePage::Find(number).value().Append(bytes, text);
    return text;
}

TEST(CodePage, WesternBytesAreTheirCharacters) {
    EXPECT_EQ(Decoded(1252, "a\xE4\x80\x9C"), OLESTR("a\u00E4\u20AC\u0153"));
}

TEST(CodePage, BytesThatACodePageLeavesOpenAreTheCharactersOfTheirNumbers) {
    EXPECT_EQ(Decoded(1252, "\x81\x8D\x8F\x90\x9D"), OLESTR("\x81\x8D\x8F\x90\x9D"));
}

TEST(CodePage, EachNumberHasItsOwnCharacters) {
    EXPECT_EQ(Decoded(1250, "\xB9"), OLESTR("\u0105"));
    EXPECT_EQ(Decoded(1251, "\xCC\xE8\xF0"), OLESTR("\u041C\u0438\u0440"));
    EXPECT_EQ(Decoded(437, "\x84"), OLESTR("\u00E4"));
}

TEST(CodePage, CharactersCanHaveTwoBytes) {
    EXPECT_EQ(Decoded(932, "a\x8A\xBF\x8E\x9A"), OLESTR("a\u6F22\u5B57"));
}

TEST(CodePage, TextIsAppended) {
    WideString text = OLESTR("x");
    CodePage::Find(1252).value().Append("y", text);
    CodePage::Find(932).value().Append("z", text);
    CodePage::Find(932).value().Append("", text);
    EXPECT_EQ(text, OLESTR("xyz"));
}

TEST(CodePage, UnknownNumbersAreNotFound) {
    EXPECT_FALSE(CodePage::Find(0));
    EXPECT_FALSE(CodePage::Find(1));
    EXPECT_FALSE(CodePage::Find(64999));
}

}  // namespace
}  // namespace quillet::platform
