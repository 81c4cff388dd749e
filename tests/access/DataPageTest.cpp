#include "Quillet/access/DataPage.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using test::AccessErrorOf;
using test::AccessPages;
using test::MadeRow;

class DataPageTest : public testing::TestWithParam<const Layout*> {
protected:
    DataPage Open(const std::vector<MadeRow>& rows) {
        m_number = m_pages.AddDataPage(2, rows);
        return Reopen();
    }
    DataPage Reopen() {
        m_pager = std::make_unique<Pager>(std::make_unique<test::MemoryFile>(m_pages.Joined()), HeaderOf());
        return DataPage(m_pager->Get(m_number), *GetParam());
    }
    Header HeaderOf() const {
        Header header;
        header.m_version = GetParam()->m_isJet3 ? Header::Jet3 : Header::Jet4;
        return header;
    }
    static std::string TextOf(const DataPage::Row& row) {
        return std::string(row.m_bytes.begin(), row.m_bytes.end());
    }
    std::size_t EntryOffset(std::size_t row) const { return GetParam()->m_rowStarts + 2 * row; }

    AccessPages m_pages = test::PagesOf(*GetParam());
    std::unique_ptr<Pager> m_pager;
    PageNumber m_number = 0;
};

INSTANTIATE_TEST_SUITE_P(Layouts, DataPageTest, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

TEST_P(DataPageTest, RowsLieFromTheEndOfThePageDownwards) {
    const DataPage page = Open({{"first"}, {""}, {"third row"}});
    EXPECT_EQ(page.Owner(), 2U);
    ASSERT_EQ(page.RowCount(), 3U);
    EXPECT_EQ(TextOf(page.RowAt(0)), "first");
    EXPECT_EQ(TextOf(page.RowAt(1)), "");
    EXPECT_EQ(TextOf(page.RowAt(2)), "third row");
    EXPECT_EQ(page.RowAt(0).m_bytes.data() + 5, page.Base().Bytes().data() + GetParam()->m_pageSize);
}

TEST_P(DataPageTest, FlagsTellMovedAndDeletedRows) {
    const DataPage page = Open({{"a", 0}, {"b", 0x4000}, {"c", 0x8000}, {"d", 0xC000}});
    const auto flags = [&](std::size_t row) {
        const DataPage::Row found = page.RowAt(row);
        return std::array{found.m_isMoved, found.m_isMovedHere, found.m_isDeleted};
    };
    EXPECT_EQ(flags(0), (std::array{false, false, false}));
    EXPECT_EQ(flags(1), (std::array{true, false, false}));
    EXPECT_EQ(flags(2), (std::array{false, true, false}));
    EXPECT_EQ(flags(3), (std::array{false, false, true}));
    EXPECT_EQ(TextOf(page.RowAt(3)), "d");
}

TEST_P(DataPageTest, RowsThatAreNoneAreRefused) {
    const DataPage page = Open({{"a"}, {"b"}});
    EXPECT_EQ(AccessErrorOf([&] { page.RowAt(2); }),
              "page " + std::to_string(m_number) + ": the page has no row 2");
}

TEST_P(DataPageTest, ARowAndTheNextAreLostWithTheStartOfTheFirst) {
    Open({{"aaaa"}, {"bbbb"}, {"cccc"}, {"dddd"}});
    for (const std::size_t start : {std::size_t{0x1FFF}, std::size_t{4}, EntryOffset(3)}) {
        m_pages.Page(m_number).Put(EntryOffset(1), start, 2);
        const DataPage page = Reopen();
        EXPECT_EQ(AccessErrorOf([&] { page.RowAt(1); }), "page " + std::to_string(m_number) + ", offset " +
                                                             std::to_string(EntryOffset(1)) +
                                                             ": row 1 lies outside of the page's rows");
        EXPECT_NE(AccessErrorOf([&] { page.RowAt(2); }), "none");
        EXPECT_EQ(TextOf(page.RowAt(0)), "aaaa");
        EXPECT_EQ(TextOf(page.RowAt(3)), "dddd");
    }
}

TEST_P(DataPageTest, RowsAreFoundAlthoughTheirNumberIsWrong) {
    Open({{"aaaa"}, {"bbbb"}, {"cccc"}});
    m_pages.Page(m_number).Put(GetParam()->m_rowCount, 65535, 2);
    const DataPage page = Reopen();
    EXPECT_TRUE(page.IsCountWrong());
    ASSERT_EQ(page.RowCount(), 3U);
    EXPECT_EQ(TextOf(page.RowAt(2)), "cccc");
}

TEST_P(DataPageTest, ANumberOfRowsThatNoPointerCouldNameIsWrong) {
    Open({{"aaaa"}, {"bbbb"}, {"cccc"}});
    m_pages.Page(m_number).Put(GetParam()->m_rowCount, 257, 2);
    EXPECT_TRUE(Reopen().IsCountWrong());
    EXPECT_EQ(Reopen().RowCount(), 3U);
}

TEST_P(DataPageTest, TheThirdBitOfAnEntryHasNoMeaning) {
    const DataPage page = Open({{"first", 0x2000}, {"second", 0x6000}});
    EXPECT_EQ(TextOf(page.RowAt(0)), "first");
    EXPECT_TRUE(page.RowAt(1).m_isMoved);
}

TEST_P(DataPageTest, AFullPageIsWhole) {
    const std::vector<MadeRow> rows(255, {"1234"});
    const DataPage page = Open(rows);
    EXPECT_FALSE(page.IsCountWrong());
    ASSERT_EQ(page.RowCount(), rows.size());
    EXPECT_EQ(TextOf(page.RowAt(254)), "1234");
}

TEST_P(DataPageTest, OtherPagesAreRefused) {
    Open({});
    m_pages.Page(m_number).Put(0, 9, 1);
    EXPECT_NE(AccessErrorOf([&] { Reopen(); }), "none");
}

}  // namespace
}  // namespace quillet::access
