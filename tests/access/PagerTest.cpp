#include "Quillet/access/Pager.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "Quillet/access/Error.h"
#include "support/AccessPages.h"

namespace quillet::access {
namespace {

using test::AccessPages;
using test::ByteWriter;
using test::MemoryFile;

Header PlainHeader(std::uint32_t key = 0) {
    Header header;
    header.m_pageKey = key;
    return header;
}

// As many pages, each of type 1 and with its number in the next bytes.
std::string NumberedPages(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes += ByteWriter().Number(1, 1).Number(i, 4).Zeros(Jet4Layout.m_pageSize).Bytes();
    }
    return bytes;
}

std::string MessageOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "none";
}

class PagerTest : public testing::Test {
protected:
    Pager Open(const std::string& bytes, std::uint32_t key = 0) {
        return Pager(std::make_unique<MemoryFile>(bytes, m_plan), PlainHeader(key));
    }

    const std::shared_ptr<MemoryFile::Plan> m_plan = std::make_shared<MemoryFile::Plan>();
};

TEST_F(PagerTest, PagesAreFoundByTheirNumbers) {
    Pager pager = Open(NumberedPages(5));
    EXPECT_EQ(pager.PageCount(), 5U);
    EXPECT_EQ(pager.Get(3).U32(1), 3U);
    EXPECT_EQ(pager.Get(0).U32(1), 0U);
}

TEST_F(PagerTest, AnIncompletePageAtTheEndIsNone) {
    Pager pager = Open(NumberedPages(2) + std::string(4095, 'x'));
    EXPECT_EQ(pager.PageCount(), 2U);
    EXPECT_EQ(MessageOf([&] { pager.Get(2); }), "page 2: the file has no such page");
}

TEST_F(PagerTest, EncodedPagesAreDecodedWithTheirOwnKeys) {
    constexpr std::uint32_t Key = 0xDEADBEEF;
    std::string bytes = NumberedPages(3);
    for (const PageNumber page : {1U, 2U}) {
        ApplyCipher(KeyOfPage(Key, page),
                    {reinterpret_cast<std::uint8_t*>(bytes.data()) + page * std::size_t{4096}, 4096});
    }
    Pager pager = Open(bytes, Key);
    for (const PageNumber page : {0U, 1U, 2U}) {
        EXPECT_EQ(pager.Get(page).U32(1), page);
    }
}

// The stream of a key is known from the constant that masks every header.
TEST_F(PagerTest, TheCipherIsTheOneOfTheHeadersMask) {
    std::array<std::uint8_t, 4> bytes{};
    ApplyCipher({0xC7, 0xDA, 0x39, 0x6B}, bytes);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{0xB5, 0x6F, 0x03, 0x62}));
}

TEST_F(PagerTest, TheKeyOfAPageIsTheFilesKeyWithThePagesBitsTurned) {
    EXPECT_EQ(KeyOfPage(0x01020304, 0x0105), (CipherKey{0x01, 0x02, 0x02, 0x01}));
}

TEST_F(PagerTest, APageIsReadOnceWhileItIsKept) {
    Pager pager = Open(NumberedPages(3));
    pager.Get(1);
    pager.Get(2);
    pager.Get(1);
    EXPECT_EQ(m_plan->m_reads, 2);
}

TEST_F(PagerTest, ThePagesUsedLastAreKept) {
    constexpr PageNumber Count = Pager::PagesKept + 2;
    Pager pager = Open(NumberedPages(Count));
    for (PageNumber page = 0; page < Count; ++page) {
        pager.Get(0);
        pager.Get(page);
    }
    EXPECT_EQ(m_plan->m_reads, static_cast<int>(Count));
    pager.Get(0);
    pager.Get(Count - 1);
    EXPECT_EQ(m_plan->m_reads, static_cast<int>(Count));
    pager.Get(1);
    EXPECT_EQ(m_plan->m_reads, static_cast<int>(Count) + 1);
}

TEST_F(PagerTest, APageInUseStaysAsItIs) {
    constexpr PageNumber Count = 3 * Pager::PagesKept;
    Pager pager = Open(NumberedPages(Count));
    const Page held = pager.Get(7);
    for (PageNumber page = 0; page < Count; ++page) {
        EXPECT_EQ(pager.Get(page).U32(1), page);
    }
    EXPECT_EQ(held.U32(1), 7U);
}

TEST_F(PagerTest, TheTypeOfAPageIsChecked) {
    Pager pager = Open(NumberedPages(2));
    EXPECT_EQ(pager.Get(1, ePageType::Data).Number(), 1U);
    EXPECT_EQ(MessageOf([&] { pager.Get(1, ePageType::Definition); }),
              "page 1, offset 0: the page is of type 1 instead of 2");
}

TEST_F(PagerTest, NothingIsReadBeyondAPage) {
    Pager pager = Open(NumberedPages(2));
    const Page page = pager.Get(1);
    EXPECT_EQ(page.U32(4092), 0U);
    EXPECT_EQ(MessageOf([&] { page.U32(4093); }),
              "page 1, offset 4093: something lies beyond the end of the page");
    EXPECT_NE(MessageOf([&] { page.Slice(std::string::npos, 2); }), "none");
}

TEST_F(PagerTest, AFailedReadLeavesNothingBehind) {
    Pager pager = Open(NumberedPages(2));
    m_plan->m_failing = 1;
    EXPECT_EQ(MessageOf([&] { pager.Get(1); }), "page 1: the disk is broken");
    EXPECT_EQ(pager.Get(1).U32(1), 1U);
}

}  // namespace
}  // namespace quillet::access
