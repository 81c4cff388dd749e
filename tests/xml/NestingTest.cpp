#include "Quillet/xml/Nesting.h"

#include <gtest/gtest.h>

#include <tuple>

#include "Quillet/platform/File.h"
#include "Quillet/xml/Document.h"
#include "support/TemporaryFolder.h"

namespace {

using quillet::test::TemporaryFolder;
using quillet::test::Utf8;
using quillet::test::WriteBytes;
using quillet::xml::Document;
using quillet::xml::MaxDepth;
using quillet::xml::Nesting;

std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

// Whether the text is accepted, as a whole and byte by byte.
bool IsTaken(const std::string& text) {
    Nesting whole;
    const bool isTaken = whole.Follow(text);
    Nesting slow;
    bool isTakenSlowly = true;
    for (std::size_t length = 1; isTakenSlowly && length <= text.size(); ++length) {
        isTakenSlowly = slow.Follow(std::string_view(text).substr(0, length));
    }
    // Long markup is not scanned again for every byte.
    EXPECT_TRUE(isTakenSlowly || !isTaken);
    EXPECT_TRUE(isTaken || !slow.Follow(text + std::string(2 * text.size(), ' ')));
    return isTaken;
}

TEST(NestingTest, DepthOfTheLimit_IsTakenAndOneMoreIsNot) {
    EXPECT_TRUE(IsTaken(Repeated("<a>", MaxDepth)));
    EXPECT_TRUE(IsTaken(Repeated("<a>", MaxDepth) + "text" + Repeated("</a>", MaxDepth)));
    EXPECT_FALSE(IsTaken(Repeated("<a>", MaxDepth + 1)));
    EXPECT_FALSE(IsTaken(Repeated("<a b=\"1\" c='2'>", MaxDepth) + "<a />"));
}

TEST(NestingTest, ElementsBesideEachOther_AreNotNested) {
    EXPECT_TRUE(IsTaken("<r>" + Repeated("<a/>", 1000) + "</r>"));
    EXPECT_TRUE(IsTaken("<r>" + Repeated("<a x=\"/>\" />", 1000) + "</r>"));
    EXPECT_TRUE(IsTaken("<r>" + Repeated("<a></a>", 1000) + "</r>"));
    EXPECT_TRUE(IsTaken("<r>" + Repeated("<a x='<b><c>'>text</a>", 1000) + "</r>"));
}

TEST(NestingTest, MarkupThatIsNoElement_OpensAndClosesNone) {
    for (const char* other : {"<!-- <a> </b> -->", "<![CDATA[<a></b>]]>", "<?p <a> </b>?>",
                              "<!DOCTYPE a [<!ENTITY e \"<b>\"><!ELEMENT a ANY>]>"}) {
        EXPECT_TRUE(IsTaken(Repeated(other, 1000))) << other;
        EXPECT_FALSE(IsTaken(Repeated(std::string("<a>") + other, MaxDepth + 1))) << other;
    }
}

TEST(NestingTest, AnEndTagInAnAttribute_ClosesNothing) {
    EXPECT_FALSE(IsTaken(Repeated("<a b=\"</a>\">", MaxDepth + 1)));
    EXPECT_FALSE(IsTaken(Repeated("<a b='/>'>", MaxDepth + 1)));
}

TEST(NestingTest, MoreElementsThanTheLimit_AreRefused) {
    Nesting nesting(10);
    EXPECT_TRUE(nesting.Follow("<r>" + Repeated("<a/>", 9)));
    EXPECT_FALSE(nesting.Follow("<r>" + Repeated("<a/>", 10)));
    EXPECT_EQ(nesting.Refusal(), "There are more than 10 elements");
}

// The text after the mark, with that many bytes a character, all zero except the one at that place.
std::string Widened(const std::string& text, std::size_t size, std::size_t place, const std::string& mark) {
    std::string wide = mark;
    for (const char unit : text) {
        std::string bytes(size, '\0');
        bytes[place] = unit;
        wide += bytes;
    }
    return wide;
}

TEST(NestingTest, TextOfWideUnits_IsFollowedLikeOthers) {
    const std::string sound = "<r>" + Repeated("<a x=\"/>\" />", 100) + Repeated("<b>", MaxDepth - 1);
    for (const auto& [size, place, mark] :
         {std::tuple(2U, 0U, std::string("\xFF\xFE")), std::tuple(2U, 1U, std::string("\xFE\xFF")),
          std::tuple(4U, 0U, std::string("\xFF\xFE\0\0", 4)),
          std::tuple(4U, 3U, std::string("\0\0\xFE\xFF", 4))}) {
        for (const std::string& start : {mark, std::string()}) {
            SCOPED_TRACE(std::to_string(size) + (place == 0 ? " little" : " big"));
            EXPECT_TRUE(IsTaken(Widened(sound, size, place, start)));
            EXPECT_FALSE(IsTaken(Widened(sound + "<c>", size, place, start)));
        }
    }
}

TEST(NestingTest, CharactersOfWideUnitsThatShareAByteWithMarkup_AreNone) {
    std::string text = Widened("<a>", 2, 0, "\xFF\xFE");
    text += Repeated("<\x04", 2 * MaxDepth);
    text += Widened("</a>", 2, 0, "");
    EXPECT_TRUE(IsTaken(text));
    Document document;
    EXPECT_TRUE(document.LoadText(text));
}

TEST(NestingTest, LoadFile_OfNestedElements_DoesNotReadToTheEnd) {
    const TemporaryFolder folder;
    const std::string path = Utf8(folder / "nested.xml");
    WriteBytes(folder / "nested.xml", Repeated("<a>", 2'000'000) + "\xFF");
    std::size_t blocks = 0;
    Nesting nesting;
    const auto bytes = quillet::platform::ReadWholeFile(path, nullptr, [&](std::string_view text) {
        ++blocks;
        return nesting.Follow(text);
    });
    EXPECT_EQ(bytes, std::nullopt);
    EXPECT_EQ(blocks, 1U);
    Document document;
    EXPECT_FALSE(document.LoadFile(path));
    EXPECT_EQ(document.Error().m_message, "Elements are nested deeper than 256");
    EXPECT_EQ(document.Error().m_line, 0U);
}

}  // namespace
