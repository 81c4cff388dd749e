#include "Quillet/access/Properties.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using namespace std::string_literals;
using test::Number;
using test::Wide;

std::string Name(const std::string& text) {
    return Number(2 * text.size(), 2) + Wide(text);
}

std::string Block(std::uint16_t kind, const std::string& content) {
    return Number(content.size() + 6, 4) + Number(kind, 2) + content;
}

// The head of a block of values: whose they are.
std::string Head(const std::string& owner) {
    return Number(6 + 2 * owner.size(), 4) + Name(owner);
}

std::string PropertyValue(std::uint16_t name, const std::string& bytes) {
    return Number(8 + bytes.size(), 2) + Number(1, 1) + Number(10, 1) + Number(name, 2) +
           Number(bytes.size(), 2) + bytes;
}

const std::string Blob = "MR2\0"s + Block(0x80, Name("Caption") + Name("Format")) +
                         Block(0, Head("table") + PropertyValue(0, "of the table")) +
                         Block(1, Head("a") + PropertyValue(1, "%") + PropertyValue(0, "A")) +
                         Block(1, Head("b") + PropertyValue(0, "B"));

Properties Read(const std::string& bytes) {
    Header header;
    return Properties({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                      TextDecoder(header));
}

std::string Property(const Properties& properties, platform::WideView column, platform::WideView name) {
    const auto* const bytes = properties.OfColumn(column, name);
    return bytes == nullptr ? "none" : std::string(bytes->begin(), bytes->end());
}

TEST(PropertiesTest, ColumnsHaveThemByName) {
    const Properties properties = Read(Blob);
    EXPECT_EQ(Property(properties, OLESTR("a"), OLESTR("Caption")), "A");
    EXPECT_EQ(Property(properties, OLESTR("a"), OLESTR("Format")), "%");
    EXPECT_EQ(Property(properties, OLESTR("b"), OLESTR("Caption")), "B");
    EXPECT_EQ(Property(properties, OLESTR("b"), OLESTR("Format")), "none");
}

TEST(PropertiesTest, ThoseOfTheTableAreNoColumns) {
    EXPECT_EQ(Property(Read(Blob), OLESTR("table"), OLESTR("Caption")), "none");
}

TEST(PropertiesTest, WhatIsWholeIsReadWhereverTheBytesEnd) {
    const std::size_t endOfB = Blob.size();
    const std::size_t endOfA = endOfB - Block(1, Head("b") + PropertyValue(0, "B")).size();
    for (std::size_t size = 0; size <= Blob.size(); ++size) {
        // Its own allocation, so that the sanitizers see a byte too many.
        const Properties properties = Read(std::string(Blob.data(), size));
        EXPECT_EQ(Property(properties, OLESTR("a"), OLESTR("Caption")), size >= endOfA ? "A" : "none")
            << size;
        EXPECT_EQ(Property(properties, OLESTR("b"), OLESTR("Caption")), size >= endOfB ? "B" : "none")
            << size;
    }
}

TEST(PropertiesTest, LengthsThatCantBeTrueEndTheirPart) {
    for (std::size_t i = 4; i < Blob.size(); ++i) {
        for (const char byte : {'\0', '\1', '\5', '\x7F', '\xFF'}) {
            std::string damaged = Blob;
            damaged[i] = byte;
            Read(damaged);
        }
    }
    std::string shortBlock = Blob;
    shortBlock.replace(4, 4, Number(5, 4));
    EXPECT_EQ(Property(Read(shortBlock), OLESTR("a"), OLESTR("Caption")), "none");
}

TEST(PropertiesTest, NamesThatAreNotThereAreLeftOut) {
    const Properties properties = Read("MR2\0"s + Block(0x80, Name("Caption")) +
                                       Block(1, Head("a") + PropertyValue(1, "?") + PropertyValue(0, "A")));
    EXPECT_EQ(Property(properties, OLESTR("a"), OLESTR("Caption")), "A");
}

}  // namespace
}  // namespace quillet::access
