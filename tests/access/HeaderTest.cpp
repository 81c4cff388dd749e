#include "Quillet/access/Header.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "Quillet/access/Error.h"
#include "support/AccessPages.h"

namespace quillet::access {
namespace {

using test::AccessPages;
using test::ByteWriter;
using test::MemoryFile;
using test::Number;

Header ReadHeader(const std::string& bytes) {
    MemoryFile file(bytes);
    return Header::Read(file);
}

// The kind of the refusal and its line.
std::pair<Error::eKind, std::string> RefusalOf(const std::string& bytes) {
    try {
        ReadHeader(bytes);
    } catch (const Error& error) {
        return {error.Kind(), error.what()};
    }
    return {Error::Unreadable, "none"};
}

std::string EightBytes(double number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

TEST(HeaderTest, TheVersionIsAByte) {
    for (std::uint8_t version = 0; version <= 6; ++version) {
        const auto pages = version == 0 ? AccessPages::Jet3() : AccessPages::Jet4(version);
        EXPECT_EQ(ReadHeader(pages.Header()).m_version, version);
    }
}

TEST(HeaderTest, TheByteAfterTheVersionHasNoMeaning) {
    EXPECT_EQ(ReadHeader(ByteWriter(AccessPages::Jet4(3).Header()).Put(0x15, 1, 1).Bytes()).m_version,
              Header::Ace14);
}

TEST(HeaderTest, PagesOfAccess97AreHalfAsLarge) {
    EXPECT_EQ(ReadHeader(AccessPages::Jet3().Header()).PageLayout().m_pageSize, 2048U);
    EXPECT_EQ(ReadHeader(AccessPages::Jet4().Header()).PageLayout().m_pageSize, 4096U);
}

TEST(HeaderTest, FieldsAreUnmasked) {
    const Header header = ReadHeader(AccessPages::Jet4().Header(
        {{0x3E, Number(0x12345678, 4)}, {0x6E, Number(0x01000409, 4)}, {0x72, EightBytes(38881.5)}}));
    EXPECT_EQ(header.m_pageKey, 0x12345678U);
    EXPECT_EQ(header.m_sortLanguage, 0x0409);
    EXPECT_EQ(header.m_sortVersion, 1);
    EXPECT_EQ(header.m_created, 38881.5);
}

TEST(HeaderTest, Access97HasItsCodePageAndOrderElsewhere) {
    const Header header =
        ReadHeader(AccessPages::Jet3().Header({{0x3A, Number(0x0411, 2)}, {0x3C, Number(932, 2)}}));
    EXPECT_EQ(header.m_sortLanguage, 0x0411);
    EXPECT_EQ(header.m_codePage, 932);
}

TEST(HeaderTest, AnOldPasswordIsToldAndDoesNotHinder) {
    EXPECT_FALSE(ReadHeader(AccessPages::Jet3().Header()).m_hasPassword);
    EXPECT_TRUE(ReadHeader(AccessPages::Jet3().Header({{0x42, "secret"}})).m_hasPassword);
}

TEST(HeaderTest, WithoutAPasswordItsFieldRepeatsTheDayOfCreation) {
    std::string field;
    for (int i = 0; i < 10; ++i) {
        field += Number(38881, 4);
    }
    const std::pair<std::size_t, std::string> created{0x72, EightBytes(38881.5)};
    EXPECT_FALSE(ReadHeader(AccessPages::Jet4().Header({created, {0x42, field}})).m_hasPassword);
    field[20] ^= 'x';
    EXPECT_TRUE(ReadHeader(AccessPages::Jet4().Header({created, {0x42, field}})).m_hasPassword);
}

TEST(HeaderTest, APasswordOfTheNewerKindIsRefused) {
    const std::pair<std::size_t, std::string> key{0x3E, Number(1, 4)};
    EXPECT_EQ(ReadHeader(AccessPages::Jet4(1).Header({key})).m_pageKey, 1U);
    EXPECT_EQ(RefusalOf(AccessPages::Jet4(2).Header({key})),
              std::pair(Error::Refused,
                        std::string("The file is encrypted with a password and can't be read without it.")));
}

TEST(HeaderTest, MoneyFilesAreRefused) {
    const std::string header = AccessPages::Jet4().Header();
    EXPECT_EQ(RefusalOf(ByteWriter(header).Put(4, "MSISAM Database").Bytes()),
              std::pair(Error::Refused, std::string("This is a Money file, which can't be read.")));
}

TEST(HeaderTest, UnknownVersionsAreRefused) {
    EXPECT_EQ(
        RefusalOf(AccessPages::Jet4(7).Header()),
        std::pair(Error::Refused, std::string("The file has an unknown version of the Access format: 7.")));
}

TEST(HeaderTest, OtherFilesAreNoAccessFiles) {
    const std::pair refusal(Error::NotAccess, std::string("This is not an Access file."));
    EXPECT_EQ(RefusalOf(""), refusal);
    EXPECT_EQ(RefusalOf("Stan"), refusal);
    EXPECT_EQ(RefusalOf(std::string(10000, 'x')), refusal);
}

TEST(HeaderTest, AFileThatEndsWithinItsHeaderIsDamaged) {
    for (const std::size_t size : {20U, 300U, 4095U}) {
        EXPECT_EQ(RefusalOf(AccessPages::Jet4().Header().substr(0, size)),
                  std::pair(Error::Damaged, std::string("The file ends within its header.")));
    }
    EXPECT_EQ(RefusalOf(AccessPages::Jet3().Header().substr(0, 2047)).first, Error::Damaged);
    EXPECT_EQ(ReadHeader(AccessPages::Jet3().Header()).m_version, Header::Jet3);
}

TEST(HeaderTest, FailuresOfTheSystemAreToldApart) {
    const auto plan = std::make_shared<MemoryFile::Plan>(MemoryFile::Plan{0, 1, {}});
    MemoryFile file(AccessPages::Jet4().Header(), plan);
    try {
        Header::Read(file);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Kind(), Error::Unreadable);
        EXPECT_STREQ(error.what(), "the disk is broken");
    }
}

}  // namespace
}  // namespace quillet::access
