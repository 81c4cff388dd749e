#include "Quillet/access/File.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"
#include "support/TemporaryFolder.h"

namespace quillet::access {
namespace {

using test::AccessErrorOf;
using test::AccessPages;
using test::MadeColumn;
using test::MadeRow;
using test::MadeTable;
using test::Number;
using test::OpenedFile;
using test::ShownRow;
using test::Utf8Of;
using Rows = std::vector<ShownRow>;
using Texts = std::vector<std::string>;

const MadeTable Numbers{{MadeColumn::Fixed("n", eColumnType::Long, 0, 0, 4)}, {}};

class AccessFileTest : public testing::TestWithParam<const Layout*> {
protected:
    std::string Row(std::uint32_t number) const { return m_pages.Row(Numbers, {Number(number, 4)}); }
    std::string Text(const std::string& text) const { return GetParam()->m_isJet3 ? text : test::Wide(text); }

    AccessPages m_pages = test::PagesOf(*GetParam());
};

INSTANTIATE_TEST_SUITE_P(Layouts, AccessFileTest, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

TEST_P(AccessFileTest, TheCatalogListsTheObjects) {
    const std::uint32_t table = m_pages.AddTable("parts", Numbers);
    m_pages.AddEntry("a query", CatalogEntry::Query, 0, 0x80000001);
    OpenedFile file(m_pages);
    ASSERT_EQ(file.File().Catalog().size(), 2U);
    EXPECT_EQ(file.Entry("parts").m_type, CatalogEntry::Table);
    EXPECT_EQ(file.Entry("parts").DefinitionPage(), table);
    EXPECT_EQ(file.Entry("a query").m_type, CatalogEntry::Query);
    EXPECT_EQ(file.Entry("a query").m_id, static_cast<std::int32_t>(0x80000001));
}

TEST_P(AccessFileTest, FlagsTellTheTablesOfUsers) {
    const auto isUserTable = [&](std::int16_t type, std::uint32_t flags) {
        AccessPages pages = test::PagesOf(*GetParam());
        pages.AddEntry("object", type, flags, 5);
        return OpenedFile(pages).Entry("object").IsUserTable();
    };
    EXPECT_TRUE(isUserTable(CatalogEntry::Table, 0));
    EXPECT_TRUE(isUserTable(CatalogEntry::Table, 0x40008));
    EXPECT_FALSE(isUserTable(CatalogEntry::Table, 0x80000000));
    EXPECT_FALSE(isUserTable(CatalogEntry::Table, 0x800A0000));
    EXPECT_FALSE(isUserTable(CatalogEntry::Table, 2));
    EXPECT_FALSE(isUserTable(CatalogEntry::Query, 0));
}

TEST_P(AccessFileTest, TablesOfOtherFilesAreLinked) {
    m_pages.AddEntry("by ODBC", CatalogEntry::OdbcLink, 0x100000, 0x80000001);
    m_pages.AddEntry("by file", CatalogEntry::Link, 0x200000, 0x80000002);
    m_pages.AddEntry("own", CatalogEntry::Table, 0, 5);
    OpenedFile file(m_pages);
    EXPECT_TRUE(file.Entry("by ODBC").IsLinkedTable() && file.Entry("by file").IsLinkedTable());
    EXPECT_FALSE(file.Entry("own").IsLinkedTable() || file.Entry("by file").IsUserTable());
}

TEST_P(AccessFileTest, RowsComeInTheOrderOfTheirPages) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    m_pages.AddRows(table, {{Row(3)}, {Row(1)}});
    m_pages.AddRows(table, {});
    m_pages.AddRows(table, {{Row(2)}});
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"3"}, {"1"}, {"2"}}));
    EXPECT_EQ(file.Damage(), Texts());
}

TEST_P(AccessFileTest, RowsTellTheirPlaces) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t page = m_pages.AddRows(table, {{Row(3), MadeRow::Deleted}, {Row(1)}});
    OpenedFile file(m_pages);
    const TableDefinition definition = file.Table("numbers");
    EXPECT_EQ(test::RowsWithPlaces(file.File(), definition).at(0).m_place, (RowPointer{page, 1}));
}

TEST_P(AccessFileTest, DeletedRowsArePassedOver) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    m_pages.AddRows(table, {{Row(1), MadeRow::Deleted}, {Row(2)}, {"", MadeRow::Deleted}});
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"), (Rows{{"2"}}));
}

TEST_P(AccessFileTest, MovedRowsAreReadAtTheirOldPlacesOnly) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t there = m_pages.AddRows(table, {{Row(8)}, {Row(2), MadeRow::MovedHere}, {Row(9)}});
    m_pages.AddRows(table, {{Row(1)}, {Number(there << 8 | 1, 4), MadeRow::Moved}, {Row(3)}});
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"8"}, {"9"}, {"1"}, {"2"}, {"3"}}));
    EXPECT_EQ(file.Damage(), Texts());
}

TEST_P(AccessFileTest, ARowMovedToAPlaceThatIsNotForItIsLost) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t other = m_pages.AddDataPage(99, {{Row(5), MadeRow::MovedHere}});
    const std::uint32_t page = m_pages.PageCount();
    ASSERT_EQ(m_pages.AddRows(table, {{Number(page << 8, 4), MadeRow::Moved},
                                      {Number(page << 8 | 4, 4), MadeRow::Moved},
                                      {Number(other << 8, 4), MadeRow::Moved},
                                      {"12", MadeRow::Moved},
                                      {Row(7)}}),
              page);
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"7"}}));
    EXPECT_EQ(file.Damage().size(), 4U);
    EXPECT_EQ(file.Damage().at(0),
              "page " + std::to_string(page) + ": row 0 was moved to a place that is not for it");
}

TEST_P(AccessFileTest, ColumnsAddedLaterAreNullOrFalse) {
    const MadeTable made{{MadeColumn::Fixed("n", eColumnType::Long, 0, 0, 4),
                          MadeColumn::Fixed("b", eColumnType::Boolean, 1, 4, 0),
                          MadeColumn::Fixed("m", eColumnType::Long, 2, 4, 4),
                          MadeColumn::Variable("t", eColumnType::Text, 3, 0)},
                         {}};
    const std::uint32_t table = m_pages.AddTable("grown", made);
    const test::MadeValues values{Number(1, 4), "", Number(2, 4), Text("text")};
    m_pages.AddRows(table, {{m_pages.Row(made, values, std::uint16_t{1})},
                            {m_pages.Row(made, values, std::uint16_t{3})},
                            {m_pages.Row(made, values)}});
    OpenedFile file(m_pages);
    EXPECT_EQ(
        file.Rows("grown"),
        (Rows{{"1", "false", "null", "null"}, {"1", "true", "2", "null"}, {"1", "true", "2", "'text'"}}));
    EXPECT_EQ(file.Damage(), Texts());
}

TEST_P(AccessFileTest, DeletedColumnsLeaveHoles) {
    const MadeTable all{{MadeColumn::Fixed("a", eColumnType::Long, 0, 0, 4),
                         MadeColumn::Variable("b", eColumnType::Text, 1, 0),
                         MadeColumn::Fixed("c", eColumnType::Long, 2, 4, 4),
                         MadeColumn::Variable("d", eColumnType::Text, 3, 1)},
                        {}};
    const MadeTable rest{{all.m_columns[2], all.m_columns[3]}, {}};
    const std::uint32_t table = m_pages.AddTable("rest", rest);
    m_pages.AddRows(table, {{m_pages.Row(all, {Number(1, 4), Text("b"), Number(3, 4), Text("d")})}});
    EXPECT_EQ(OpenedFile(m_pages).Rows("rest"), (Rows{{"3", "'d'"}}));
}

TEST_P(AccessFileTest, ADamagedRowDoesNotHinderTheOthers) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t page = m_pages.AddRows(table, {{Row(1)}, {std::string(3, '\xFF')}, {Row(3)}});
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}, {"3"}}));
    EXPECT_EQ(file.Damage(),
              Texts{"page " + std::to_string(page) + ": row 1: the row is too short for its columns"});
}

// A row ends where the one before it begins, so two rows depend on one entry.
TEST_P(AccessFileTest, RowsBesideADamagedEntryAreFoundAgain) {
    const MadeTable made = {{MadeColumn::Fixed("n", eColumnType::Long, 0, 0, 4),
                             MadeColumn::Variable("a", eColumnType::Text, 1, 0),
                             MadeColumn::Variable("b", eColumnType::Text, 2, 1)},
                            {}};
    const std::uint32_t table = m_pages.AddTable("texts", made);
    std::vector<MadeRow> rows;
    for (std::uint32_t i = 0; i < 4; ++i) {
        rows.push_back({m_pages.Row(made, {Number(i, 4), Text("text " + std::to_string(i)), Text("more")})});
    }
    const std::uint32_t page = m_pages.AddRows(table, rows);
    const Rows whole = OpenedFile(m_pages).Rows("texts");
    ASSERT_EQ(whole.size(), 4U);
    const std::string before = m_pages.Page(page).Bytes();
    for (const std::size_t entry : {0U, 1U, 2U}) {
        for (const std::size_t start : {std::size_t{0x1FFF}, std::size_t{4}}) {
            m_pages.Page(page) = test::ByteWriter(before).Put(GetParam()->m_rowStarts + 2 * entry, start, 2);
            OpenedFile file(m_pages);
            EXPECT_EQ(file.Rows("texts"), whole) << entry << ' ' << start;
            EXPECT_EQ(file.Damage().size(), 2U);
        }
    }
}

TEST_P(AccessFileTest, OnePairOfRowsIsFoundAgainOnEachPage) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    for (const std::uint32_t page : {0U, 1U}) {
        std::vector<MadeRow> rows;
        for (std::uint32_t i = 0; i < 6; ++i) {
            rows.push_back({Row(10 * page + i)});
        }
        const std::uint32_t number = m_pages.AddRows(table, rows);
        m_pages.Page(number).Put(GetParam()->m_rowStarts, 0x1FFF, 2);
        m_pages.Page(number).Put(GetParam()->m_rowStarts + 6, 0x1FFF, 2);
    }
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"),
              (Rows{{"0"}, {"1"}, {"2"}, {"5"}, {"10"}, {"11"}, {"12"}, {"15"}}));
}

TEST_P(AccessFileTest, RowsWithoutVariableColumnsAreFoundAgain) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t page =
        m_pages.AddRows(table, {{Row(0x11111111)}, {Row(0x22222222)}, {Row(0x33333333)}});
    const Rows whole = OpenedFile(m_pages).Rows("numbers");
    m_pages.Page(page).Put(GetParam()->m_rowStarts + 2, 0x1FFF, 2);
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"), whole);
}

TEST_P(AccessFileTest, RowsOfWhichTheBoundaryIsNotSureAreLost) {
    // With a column that was deleted, nothing tells how long a row of fixed columns is.
    const MadeTable all{{MadeColumn::Fixed("n", eColumnType::Long, 0, 0, 4),
                         MadeColumn::Fixed("deleted", eColumnType::Double, 1, 4, 8)},
                        {}};
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::string row = m_pages.Row(all, {Number(7, 4), Number(0, 8)});
    const std::uint32_t page = m_pages.AddRows(table, {{row}, {row}, {row}});
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"), (Rows{{"7"}, {"7"}, {"7"}}));
    m_pages.Page(page).Put(GetParam()->m_rowStarts, 0x1FFF, 2);
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"), (Rows{{"7"}}));
}

TEST_P(AccessFileTest, DeletedRowsBesideADamagedEntryStayDeleted) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t page =
        m_pages.AddRows(table, {{Row(1)}, {Row(2)}, {Row(3), MadeRow::Deleted}, {Row(4)}});
    m_pages.Page(page).Put(GetParam()->m_rowStarts + 2, 0x1FFF, 2);
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"), (Rows{{"1"}, {"4"}}));
}

TEST_P(AccessFileTest, WhatWasFoundAgainOnAPageIsForgottenOnTheNext) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    for (const std::uint16_t flags : {std::uint16_t{0}, MadeRow::Deleted}) {
        const std::uint32_t page = m_pages.AddRows(table, {{Row(1)}, {Row(2), flags}});
        m_pages.Page(page).Put(GetParam()->m_rowStarts, 0x1FFF, 2);
    }
    EXPECT_EQ(OpenedFile(m_pages).Rows("numbers"), (Rows{{"1"}, {"2"}}));
}

TEST_P(AccessFileTest, AWrongNumberOfRowsOnAPageLosesNone) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    const std::uint32_t page = m_pages.AddRows(table, {{Row(1)}, {Row(2)}});
    m_pages.Page(page).Put(GetParam()->m_rowCount, 65535, 2);
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}, {"2"}}));
    EXPECT_EQ(file.Damage(),
              Texts{"page " + std::to_string(page) + ": the page states a wrong number of rows"});
}

TEST_P(AccessFileTest, AnIncompleteLongValueIsReported) {
    const MadeTable memos{{MadeColumn::Variable("m", eColumnType::Memo, 0, 0)}, {}};
    const std::uint32_t table = m_pages.AddTable("memos", memos);
    const std::uint32_t page =
        m_pages.AddRows(table, {{m_pages.Row(memos, {Number(0x80000064, 4) + Number(0, 8) + Text("memo")})}});
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("memos"), (Rows{{"'memo'"}}));
    EXPECT_EQ(file.Damage(),
              Texts{"page " + std::to_string(page) + ": row 0, column 0: a part of the value is missing"});
}

TEST_P(AccessFileTest, RowsAreFoundAlthoughTheirMapIsDamaged) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    m_pages.AddRows(table, {{Row(1)}});
    m_pages.AddDataPage(99, {{Row(5)}});
    m_pages.AddRows(table, {{Row(2)}});
    for (const std::uint32_t map : {0xFFFFFFFFU, 0x000001FFU, table << 8}) {
        m_pages.Page(table).Put(GetParam()->m_ownedMap, map, 4);
        OpenedFile file(m_pages);
        EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}, {"2"}})) << map;
        EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}, {"2"}})) << map;
        EXPECT_EQ(file.Damage().size(), 2U);
    }
}

TEST_P(AccessFileTest, RowsAreFoundAlthoughTheirMapNamesPagesBeyondTheFile) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    m_pages.AddRows(table, {{Row(1)}});
    const std::uint32_t map = m_pages.AddDataPage(0, {{m_pages.MapOf({200})}});
    m_pages.Page(table).Put(GetParam()->m_ownedMap, map << 8, 4);
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}}));
    EXPECT_EQ(file.Damage(),
              Texts{"page " + std::to_string(map) + ": a map names pages beyond the end of the file"});
}

TEST_P(AccessFileTest, PagesThatAreNotTheTablesAreLeftOut) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    m_pages.AddRows(table, {{Row(1)}});
    const std::uint32_t page = m_pages.AddRows(table, {{Row(2)}});
    m_pages.Page(page).Put(4, 99, 4);
    OpenedFile file(m_pages);
    EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}}));
    EXPECT_EQ(file.Damage(), Texts{"page " + std::to_string(page) + ": the page is not the table's"});
}

TEST_P(AccessFileTest, ADamagedDefinitionIsTheFaultOfItsTable) {
    m_pages.AddTable("whole", Numbers);
    const std::uint32_t table = m_pages.AddTable("damaged", Numbers);
    m_pages.Page(table).Put(0, 1, 1);
    OpenedFile file(m_pages);
    EXPECT_EQ(
        AccessErrorOf([&] { file.Table("damaged"); }),
        "table 'damaged', page " + std::to_string(table) + ", offset 0: the page is of type 1 instead of 2");
    EXPECT_EQ(file.Rows("whole"), Rows());
}

TEST_P(AccessFileTest, ADamagedEntryOfTheCatalogDoesNotHinderTheOthers) {
    m_pages.AddTable("lost", Numbers);
    m_pages.AddTable("numbers", Numbers);
    std::string bytes = m_pages.Bytes();
    // The rows of the catalog are on the last page; the first one's start is pushed out of the page.
    const std::size_t page = bytes.size() - GetParam()->m_pageSize;
    bytes[page + GetParam()->m_rowStarts + 1] = '\x3F';
    OpenedFile file(std::make_unique<test::MemoryFile>(bytes));
    EXPECT_GE(file.Damage().size(), 1U);
    EXPECT_THROW(file.Entry("lost"), std::out_of_range);
}

// Whichever read fails, that is said, and no rows are silently missing.
TEST_P(AccessFileTest, FailuresOfTheSystemAreThrown) {
    const std::uint32_t table = m_pages.AddTable("numbers", Numbers);
    m_pages.AddRows(table, {{Row(1)}});
    m_pages.AddRows(table, {{Row(2)}});
    const std::string bytes = m_pages.Bytes();
    int failing = 0;
    for (bool failed = true; failed;) {
        ++failing;
        const auto plan = std::make_shared<test::MemoryFile::Plan>(test::MemoryFile::Plan{0, failing, {}});
        failed = false;
        try {
            OpenedFile file(std::make_unique<test::MemoryFile>(bytes, plan));
            EXPECT_EQ(file.Rows("numbers"), (Rows{{"1"}, {"2"}}));
        } catch (const Error& error) {
            EXPECT_EQ(error.Kind(), Error::Unreadable) << error.what();
            failed = true;
        }
        EXPECT_EQ(failed, plan->m_reads >= failing);
    }
    EXPECT_GT(failing, 7);
}

TEST_P(AccessFileTest, FilesAreOpenedByPath) {
    m_pages.AddTable("numbers", Numbers);
    const test::TemporaryFolder folder;
    test::WriteBytes(folder / "file.mdb", m_pages.Bytes());
    DamageLog log;
    EXPECT_EQ(File::Open(test::Utf8(folder / "file.mdb"), log)->Catalog().size(), 1U);
    EXPECT_NE(AccessErrorOf([&] { File::Open(test::Utf8(folder / "none.mdb"), log); }), "none");
}

TEST_P(AccessFileTest, TheLogKeepsTheFirstReportsAndCountsAll) {
    DamageLog log;
    for (PageNumber page = 0; page < 1000; ++page) {
        log.Add(DamagedPage(page, "fault"));
    }
    EXPECT_EQ(log.Count(), 1000U);
    ASSERT_EQ(log.First().size(), 100U);
    EXPECT_STREQ(log.First()[99].what(), "page 99: fault");
}

}  // namespace
}  // namespace quillet::access
