#include "Quillet/access/UsageMap.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using test::AccessErrorOf;
using test::AccessPages;
using test::Number;
using Pages = std::vector<PageNumber>;

class UsageMapTest : public testing::TestWithParam<const Layout*> {
protected:
    // The members of a map that is the row of a page after some more pages.
    UsageMap::Members Read(const std::string& row) {
        const PageNumber page = m_pages.AddDataPage(0, {{"other"}, {row}});
        Header header;
        header.m_version = GetParam()->m_isJet3 ? Header::Jet3 : Header::Jet4;
        Pager pager(std::make_unique<test::MemoryFile>(m_pages.Joined()), header);
        return UsageMap(pager, {page, 1}).Pages(pager);
    }
    void AddPages(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_pages.AddPage("");
        }
    }
    PageNumber AddBits(const std::string& bits) { return m_pages.AddPage(Number(0x0105, 4) + bits); }
    std::size_t BitsOfPage() const { return (GetParam()->m_pageSize - 4) * 8; }

    AccessPages m_pages = test::PagesOf(*GetParam());
};

INSTANTIATE_TEST_SUITE_P(Layouts, UsageMapTest, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

TEST_P(UsageMapTest, ASmallMapHasABitForEachPageFromItsFirst) {
    AddPages(40);
    EXPECT_EQ(Read(m_pages.MapOf({16, 17, 23, 24, 39}, 16)).m_pages, (Pages{16, 17, 23, 24, 39}));
    EXPECT_EQ(Read(m_pages.MapOf({})).m_pages, Pages());
}

TEST_P(UsageMapTest, TheLengthOfASmallMapIsThatOfItsRow) {
    AddPages(60);
    EXPECT_EQ(Read(Number(0, 1) + Number(8, 4) + "\x01\x80").m_pages, (Pages{8, 23}));
    EXPECT_EQ(Read(Number(0, 1) + Number(8, 4)).m_pages, Pages());
}

TEST_P(UsageMapTest, ALargeMapHasItsBitsInPages) {
    AddPages(BitsOfPage() + 10);
    const PageNumber low = AddBits("\x02");
    const PageNumber high = AddBits("\x81");
    const auto second = static_cast<PageNumber>(BitsOfPage());
    EXPECT_EQ(Read(Number(1, 1) + Number(low, 4) + Number(high, 4)).m_pages, (Pages{1, second, second + 7}));
}

TEST_P(UsageMapTest, PagesOfBitsThatAreNotThereHaveNoPages) {
    AddPages(BitsOfPage() + 10);
    const PageNumber high = AddBits("\x01");
    EXPECT_EQ(Read(Number(1, 1) + Number(0, 4) + Number(high, 4) + Number(0, 4)).m_pages,
              Pages{static_cast<PageNumber>(BitsOfPage())});
}

TEST_P(UsageMapTest, PagesBeyondTheFileAreCountedOnly) {
    const UsageMap::Members members = Read(m_pages.MapOf({2, 100, 101}));
    EXPECT_EQ(members.m_pages, Pages{2});
    EXPECT_EQ(members.m_beyond, 2U);
    EXPECT_EQ(Read(m_pages.MapOf({0xFFFFFFF8, 0xFFFFFFFF}, 0xFFFFFFF8)).m_beyond, 2U);
}

TEST_P(UsageMapTest, OtherRowsAreNoMaps) {
    for (const std::string& row : {std::string(), Number(2, 69), Number(0, 4)}) {
        EXPECT_NE(AccessErrorOf([&] { Read(row); }).find("row 1 is no usage map"), std::string::npos);
    }
}

TEST_P(UsageMapTest, APageOfBitsMustBeOne) {
    EXPECT_NE(AccessErrorOf([&] { Read(Number(1, 1) + Number(1, 4)); }).find("of type 1 instead of 5"),
              std::string::npos);
    EXPECT_NE(AccessErrorOf([&] { Read(Number(1, 1) + Number(0xFFFFFF, 4)); }).find("no such page"),
              std::string::npos);
}

}  // namespace
}  // namespace quillet::access
