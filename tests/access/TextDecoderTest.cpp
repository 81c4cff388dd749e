#include "Quillet/access/TextDecoder.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using namespace std::string_literals;

Header HeaderOf(Header::eVersion version, std::uint16_t codePage = 0) {
    Header header;
    header.m_version = version;
    header.m_codePage = codePage;
    return header;
}

ByteView BytesOf(const std::string& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

std::string ValueText(const Header& header, const std::string& bytes) {
    WideString text;
    TextDecoder(header).AppendValue(BytesOf(bytes), text);
    return test::Utf8Of(text);
}

std::string NameText(const Header& header, const std::string& bytes) {
    WideString text;
    TextDecoder(header).AppendName(BytesOf(bytes), text);
    return test::Utf8Of(text);
}

TEST(TextDecoderTest, TextsAreUtf16) {
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4), "A\0\x1C\x04\x3D\xD8\x00\xDE"s), "A\u041C\U0001F600");
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4), ""), "");
}

TEST(TextDecoderTest, HalfACharacterAtTheEndIsLeftOut) {
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4), "A\0B"s), "A");
}

TEST(TextDecoderTest, CompressedTextsHaveAByteForACharacter) {
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4),
                        "\xFF\xFE"
                        "a\xE4\xFF"),
              "a\u00E4\u00FF");
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4), "\xFF\xFE"), "");
}

TEST(TextDecoderTest, AZeroByteSwitchesCompressionOffAndOn) {
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4),
                        "\xFF\xFE"
                        "ab\0\x1C\x04\x38\x04\0cd"s),
              "ab\u041C\u0438cd");
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4), "\xFF\xFE\0\x1C\x04"s), "\u041C");
}

TEST(TextDecoderTest, NamesAreNeverCompressed) {
    EXPECT_EQ(NameText(HeaderOf(Header::Jet4),
                       "\xFF\xFE"
                       "a\0"s),
              "\uFEFFa");
}

TEST(TextDecoderTest, Access97KeepsTextsAndNamesInItsCodePage) {
    const Header cyrillic = HeaderOf(Header::Jet3, 1251);
    EXPECT_EQ(ValueText(cyrillic, "\xCC\xE8\xF0"), "\u041C\u0438\u0440");
    EXPECT_EQ(NameText(cyrillic, "\xCC\xE8\xF0"), "\u041C\u0438\u0440");
    EXPECT_EQ(ValueText(cyrillic, "\xFF\xFE"), "\u044F\u044E");
}

TEST(TextDecoderTest, WithoutACodePageAccess97IsWestern) {
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet3), "\xE4"), "\u00E4");
}

TEST(TextDecoderTest, UnknownCodePagesAreRefused) {
    EXPECT_EQ(test::AccessErrorOf([] { TextDecoder(HeaderOf(Header::Jet3, 64999)); }),
              "The file's texts are in the unknown code page 64999.");
    EXPECT_EQ(ValueText(HeaderOf(Header::Jet4, 64999), "A\0"s), "A");
}

}  // namespace
}  // namespace quillet::access
