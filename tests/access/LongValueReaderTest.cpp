#include "Quillet/access/LongValueReader.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using test::AccessErrorOf;
using test::AccessPages;
using test::MadeRow;
using test::Number;

class LongValueReaderTest : public testing::TestWithParam<const Layout*> {
protected:
    static constexpr std::uint32_t InRow = 0x80000000;
    static constexpr std::uint32_t OnePiece = 0x40000000;
    static constexpr std::uint32_t Chain = 0;

    std::string Read(const std::string& field) {
        Header header;
        header.m_version = GetParam()->m_isJet3 ? Header::Jet3 : Header::Jet4;
        Pager pager(std::make_unique<test::MemoryFile>(m_pages.Joined()), header);
        LongValueReader reader(pager);
        const ByteView value =
            reader.Read({reinterpret_cast<const std::uint8_t*>(field.data()), field.size()});
        m_isShort = reader.IsShort();
        return std::string(value.begin(), value.end());
    }
    static std::string Pointer(PageNumber page, std::uint8_t row) { return Number(page << 8 | row, 4); }
    static std::string Field(std::uint32_t kind, std::size_t length, const std::string& pointer) {
        return Number(kind | length, 4) + pointer + Number(0, 4);
    }

    AccessPages m_pages = test::PagesOf(*GetParam());
    bool m_isShort = false;
};

INSTANTIATE_TEST_SUITE_P(Layouts, LongValueReaderTest, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

TEST_P(LongValueReaderTest, AShortValueIsInTheRow) {
    EXPECT_EQ(Read(Field(InRow, 5, Number(0, 4)) + "value"), "value");
    EXPECT_EQ(Read(Field(InRow, 3, Number(0, 4)) + "value"), "val");
    EXPECT_FALSE(m_isShort);
}

TEST_P(LongValueReaderTest, AValueCanBeARowOfAnotherPage) {
    const PageNumber page = m_pages.AddLongValuePage({{"other"}, {"the value"}});
    EXPECT_EQ(Read(Field(OnePiece, 9, Pointer(page, 1))), "the value");
    EXPECT_EQ(Read(Field(OnePiece, 3, Pointer(page, 1))), "the");
    EXPECT_FALSE(m_isShort);
}

TEST_P(LongValueReaderTest, AValueCanBeAChainOfRows) {
    const PageNumber last = m_pages.AddLongValuePage({{Pointer(0, 0) + "third"}});
    const PageNumber page = m_pages.AddLongValuePage({{Pointer(last, 0) + "second, "}, {"other"}});
    const PageNumber first = m_pages.AddLongValuePage({{Pointer(page, 0) + "first, "}});
    EXPECT_EQ(Read(Field(Chain, 20, Pointer(first, 0))), "first, second, third");
    EXPECT_FALSE(m_isShort);
}

TEST_P(LongValueReaderTest, AnEmptyValueHasNoPlace) {
    for (const std::uint32_t kind : {InRow, OnePiece, Chain}) {
        EXPECT_EQ(Read(Field(kind, 0, Pointer(0xFFFFFF, 9))), "");
        EXPECT_FALSE(m_isShort);
    }
}

TEST_P(LongValueReaderTest, TheSmallerOfStatedAndFoundLengthCounts) {
    const PageNumber page = m_pages.AddLongValuePage({{"value"}, {Pointer(0, 0) + "value"}});
    for (const std::string& field :
         {Field(InRow, 0x3FFFFFFF, Number(0, 4)) + "value", Field(OnePiece, 0x3FFFFFFF, Pointer(page, 0)),
          Field(Chain, 0x3FFFFFFF, Pointer(page, 1))}) {
        EXPECT_EQ(Read(field), "value");
        EXPECT_TRUE(m_isShort);
    }
}

TEST_P(LongValueReaderTest, AChainIsNotReadBeyondTheStatedLength) {
    const PageNumber page = m_pages.AddLongValuePage({{Pointer(0xFFFFFF, 0) + "value"}});
    EXPECT_EQ(Read(Field(Chain, 5, Pointer(page, 0))), "value");
    EXPECT_FALSE(m_isShort);
}

TEST_P(LongValueReaderTest, AChainEndsAtAnEmptyPiece) {
    const PageNumber page = m_pages.AddLongValuePage({{""}});
    m_pages.Page(page)
        .Put(GetParam()->m_pageSize - 4, page << 8, 4)
        .Put(GetParam()->m_rowStarts, GetParam()->m_pageSize - 4, 2);
    EXPECT_EQ(Read(Field(Chain, 5, Pointer(page, 0))), "");
    EXPECT_TRUE(m_isShort);
}

TEST_P(LongValueReaderTest, AChainThatComesBackIsRefused) {
    for (const unsigned back : {0U, 1U, 2U, 5U}) {
        const PageNumber page = m_pages.PageCount();
        std::vector<MadeRow> rows;
        for (const std::uint8_t next : {std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}, std::uint8_t{4},
                                        std::uint8_t{5}, static_cast<std::uint8_t>(back)}) {
            rows.push_back({Pointer(page, next) + "piece"});
        }
        ASSERT_EQ(m_pages.AddLongValuePage(rows), page);
        EXPECT_NE(AccessErrorOf([&] {
                      Read(Field(Chain, 0x3FFFFFFF, Pointer(page, 0)));
                  }).find("the pieces of a long value form a loop"),
                  std::string::npos);
    }
}

TEST_P(LongValueReaderTest, PagesOfOtherOwnersAreRefused) {
    const PageNumber page = m_pages.AddDataPage(2, {{"value"}});
    EXPECT_EQ(AccessErrorOf([&] { Read(Field(OnePiece, 5, Pointer(page, 0))); }),
              "page " + std::to_string(page) + ": the page holds no long values");
}

TEST_P(LongValueReaderTest, DeletedRowsAreRefused) {
    const PageNumber page = m_pages.AddLongValuePage({{"value", MadeRow::Deleted}});
    EXPECT_EQ(AccessErrorOf([&] { Read(Field(OnePiece, 5, Pointer(page, 0))); }),
              "page " + std::to_string(page) + ": the long value was deleted");
}

TEST_P(LongValueReaderTest, PointersToNowhereAreRefused) {
    const PageNumber page = m_pages.AddLongValuePage({{"value"}});
    EXPECT_NE(AccessErrorOf([&] { Read(Field(OnePiece, 5, Pointer(0xFFFFFF, 0))); }), "none");
    EXPECT_NE(AccessErrorOf([&] { Read(Field(Chain, 5, Pointer(page, 200))); }), "none");
}

TEST_P(LongValueReaderTest, OtherFieldsAreRefused) {
    EXPECT_EQ(AccessErrorOf([&] { Read("too short"); }), "the reference to a long value is too short");
    EXPECT_EQ(AccessErrorOf([&] { Read(Field(InRow | OnePiece, 5, Number(0, 4)) + "value"); }),
              "the reference to a long value is of no known kind");
}

}  // namespace
}  // namespace quillet::access
