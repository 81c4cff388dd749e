#include "Quillet/access/TableDefinition.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using test::AccessErrorOf;
using test::AccessPages;
using test::MadeColumn;
using test::MadeTable;
using test::Number;
using test::Utf8Of;

MadeTable WideTable(std::uint16_t columns) {
    MadeTable table;
    for (std::uint16_t i = 0; i < columns; ++i) {
        table.m_columns.push_back(MadeColumn::Variable("a rather long name of column " + std::to_string(i),
                                                       eColumnType::Text, i, i));
    }
    table.m_indexes.push_back({"by the first", {{0, true}}});
    return table;
}

class TableDefinitionTest : public testing::TestWithParam<const Layout*> {
protected:
    TableDefinition Read(PageNumber page) {
        Header header;
        header.m_version = GetParam()->m_isJet3 ? Header::Jet3 : Header::Jet4;
        Pager pager(std::make_unique<test::MemoryFile>(m_pages.Joined()), header);
        return TableDefinition::Read(pager, TextDecoder(header), page, m_log);
    }
    TableDefinition Read(const MadeTable& table) { return Read(m_pages.AddDefinition(table, 7, 3)); }
    bool IsJet3() const { return GetParam()->m_isJet3; }

    AccessPages m_pages = test::PagesOf(*GetParam());
    DamageLog m_log;
};

INSTANTIATE_TEST_SUITE_P(Layouts, TableDefinitionTest, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

TEST_P(TableDefinitionTest, TheHeadTellsMapsAndNumbers) {
    const PageNumber page = m_pages.AddDefinition({{MadeColumn::Fixed("id", eColumnType::Long, 4, 0, 4),
                                                    MadeColumn::Variable("text", eColumnType::Text, 2, 1)},
                                                   {}},
                                                  7, 3);
    m_pages.Page(page).Put(GetParam()->m_statedRows, 1234, 4).Put(GetParam()->m_lastAutonumber, 99, 4);
    TableDefinition table = Read(page);
    EXPECT_EQ(table.m_page, page);
    EXPECT_EQ(table.m_ownedMap, (RowPointer{7, 3}));
    EXPECT_EQ(table.m_roomMap, (RowPointer{7, 4}));
    EXPECT_EQ(table.m_columnsEver, 5);
    EXPECT_EQ(table.m_variableColumns, 2);
    EXPECT_EQ(table.m_statedRows, 1234U);
    EXPECT_EQ(table.m_lastAutonumber, 99U);
    EXPECT_FALSE(table.m_isSystem);
    m_pages.Page(page).Put(GetParam()->m_tableKind, 0x53, 1);
    EXPECT_TRUE(Read(page).m_isSystem);
}

TEST_P(TableDefinitionTest, ColumnsHaveNamesNumbersAndPlaces) {
    MadeColumn id = MadeColumn::Fixed("id", eColumnType::Long, 4, 6, 4);
    id.m_flags = 0x06;
    const TableDefinition table = Read({{id, MadeColumn::Variable("a text", eColumnType::Text, 2, 1)}, {}});
    ASSERT_EQ(table.m_columns.size(), 2U);
    EXPECT_EQ(Utf8Of(table.m_columns[0].m_name), "id");
    EXPECT_EQ(table.m_columns[0].m_type, eColumnType::Long);
    EXPECT_EQ(table.m_columns[0].m_number, 4);
    EXPECT_TRUE(table.m_columns[0].IsFixed());
    EXPECT_TRUE(table.m_columns[0].IsAutonumber());
    EXPECT_EQ(table.m_columns[0].m_fixedOffset, 6);
    EXPECT_EQ(table.m_columns[0].m_length, 4);
    EXPECT_EQ(Utf8Of(table.m_columns[1].m_name), "a text");
    EXPECT_FALSE(table.m_columns[1].IsFixed());
    EXPECT_FALSE(table.m_columns[1].IsAutonumber());
    EXPECT_EQ(table.m_columns[1].m_variableIndex, 1);
    EXPECT_EQ(table.m_columns[1].m_length, 255);
}

TEST_P(TableDefinitionTest, ColumnsAreFoundByNameInAnyCase) {
    const TableDefinition table = Read({{MadeColumn::Fixed("Id", eColumnType::Long, 0, 0, 4),
                                         MadeColumn::Variable("Name", eColumnType::Text, 1, 0)},
                                        {}});
    EXPECT_EQ(table.FindColumn(OLESTR("NAME")), 1U);
    EXPECT_EQ(table.FindColumn(OLESTR("Names")), std::nullopt);
}

TEST_P(TableDefinitionTest, NumericsTellDigitsAndScale) {
    MadeColumn numeric = MadeColumn::Fixed("n", eColumnType::Numeric, 0, 0, 17);
    // Both layouts have them at 11, which is not where both have the order of texts.
    numeric.m_details = IsJet3() ? 0x0A120000 : 0x0A12;
    const Column column = Read({{numeric}, {}}).m_columns.at(0);
    EXPECT_EQ(column.m_precision, 0x12);
    EXPECT_EQ(column.m_scale, 0x0A);
}

TEST_P(TableDefinitionTest, TextsTellTheirOrder) {
    MadeColumn text = MadeColumn::Variable("t", eColumnType::Text, 0, 0);
    text.m_details = 0x01000409;
    const Column column = Read({{text}, {}}).m_columns.at(0);
    EXPECT_EQ(column.m_sortLanguage, 0x0409);
    EXPECT_EQ(column.m_sortVersion, IsJet3() ? 0 : 1);
}

TEST_P(TableDefinitionTest, ComplexColumnsTellTheirNumber) {
    // They came long after Access 97, whose layout has no room for the number.
    MadeColumn complex = MadeColumn::Fixed("c", eColumnType::Complex, 0, 0, 4);
    complex.m_details = 0x12345;
    EXPECT_EQ(Read({{complex}, {}}).m_columns.at(0).m_complexId == 0x12345U, !IsJet3());
}

TEST_P(TableDefinitionTest, TheExtraFlagsTellCalculatedColumns) {
    MadeColumn calculated = MadeColumn::Variable("c", eColumnType::Long, 0, 0);
    calculated.m_extraFlags = 0xC0;
    EXPECT_EQ(Read({{calculated}, {}}).m_columns.at(0).IsCalculated(), !IsJet3());
    calculated.m_extraFlags = 0x41;
    EXPECT_FALSE(Read({{calculated}, {}}).m_columns.at(0).IsCalculated());
}

TEST_P(TableDefinitionTest, IndexesTellColumnsFlagsAndRoot) {
    const TableDefinition table = Read({{MadeColumn::Fixed("a", eColumnType::Long, 0, 0, 4),
                                         MadeColumn::Fixed("b", eColumnType::Long, 1, 4, 4)},
                                        {{"PrimaryKey", {{1, true}}, 0x89, LogicalIndex::PrimaryKey, 17},
                                         {"both", {{1, false}, {0, true}}, 0x02, LogicalIndex::Plain, 18}}});
    ASSERT_EQ(table.m_realIndexes.size(), 2U);
    const RealIndex& key = table.m_realIndexes[0];
    EXPECT_TRUE(key.IsUnique() && key.IsRequired() && !key.LeavesOutNulls());
    EXPECT_EQ(key.m_root, 17U);
    ASSERT_EQ(key.m_columns.size(), 1U);
    const RealIndex& both = table.m_realIndexes[1];
    EXPECT_TRUE(!both.IsUnique() && !both.IsRequired() && both.LeavesOutNulls());
    ASSERT_EQ(both.m_columns.size(), 2U);
    EXPECT_EQ(both.m_columns[0].m_number, 1);
    EXPECT_FALSE(both.m_columns[0].m_isAscending);
    EXPECT_TRUE(both.m_columns[1].m_isAscending);
    ASSERT_EQ(table.m_logicalIndexes.size(), 2U);
    EXPECT_EQ(Utf8Of(table.m_logicalIndexes[0].m_name), "PrimaryKey");
    EXPECT_EQ(table.m_logicalIndexes[0].m_kind, LogicalIndex::PrimaryKey);
    EXPECT_EQ(Utf8Of(table.m_logicalIndexes[1].m_name), "both");
    EXPECT_EQ(table.m_logicalIndexes[1].m_real, 1U);
    EXPECT_EQ(table.m_logicalIndexes[1].m_otherIndex, -1);
}

TEST_P(TableDefinitionTest, LongValueColumnsHaveMapsOfTheirOwn) {
    const MadeTable made{{MadeColumn::Variable("m", eColumnType::Memo, 3, 0)}, {}};
    const PageNumber page = m_pages.AddDefinition(made, 7);
    const std::string definition = m_pages.Definition(made, 7);
    m_pages.Page(page).Put(definition.size() - 2,
                           Number(3, 2) + Number(0x905, 4) + Number(0x906, 4) + Number(0xFFFF, 2));
    const Column column = Read(page).m_columns.at(0);
    EXPECT_EQ(column.m_ownedMap, (RowPointer{9, 5}));
    EXPECT_EQ(column.m_roomMap, (RowPointer{9, 6}));
    EXPECT_EQ(m_log.Count(), 0U);
}

TEST_P(TableDefinitionTest, ADefinitionContinuesOnFurtherPages) {
    const TableDefinition table = Read(WideTable(200));
    EXPECT_GT(table.m_pages.size(), 2U);
    ASSERT_EQ(table.m_columns.size(), 200U);
    EXPECT_EQ(Utf8Of(table.m_columns[199].m_name), "a rather long name of column 199");
    ASSERT_EQ(table.m_logicalIndexes.size(), 1U);
    EXPECT_EQ(Utf8Of(table.m_logicalIndexes[0].m_name), "by the first");
    EXPECT_EQ(m_log.Count(), 0U);
}

TEST_P(TableDefinitionTest, PagesThatFormALoopAreRefused) {
    const PageNumber page = m_pages.AddDefinition(WideTable(200), 7);
    m_pages.Page(m_pages.PageCount() - 1).Put(4, page, 4);
    m_pages.Page(page).Put(4, page, 4);
    EXPECT_EQ(AccessErrorOf([&] { Read(page); }),
              "page " + std::to_string(page) + ", offset 4: the pages of the table's definition form a loop");
}

TEST_P(TableDefinitionTest, PagesThatAreNotNeededAreNotRead) {
    const PageNumber page = m_pages.AddDefinition(WideTable(3), 7);
    for (const PageNumber next : {page, PageNumber{0xFFFFFF}, PageNumber{1}}) {
        m_pages.Page(page).Put(4, next, 4);
        EXPECT_EQ(Read(page).m_columns.size(), 3U);
        EXPECT_EQ(m_log.Count(), 0U);
    }
}

TEST_P(TableDefinitionTest, TheStatedLengthIsNotNeeded) {
    const PageNumber page = m_pages.AddDefinition(WideTable(3), 7);
    m_pages.Page(page).Put(8, 0xFFFFFFF0, 4);
    EXPECT_EQ(Read(page).m_columns.size(), 3U);
}

TEST_P(TableDefinitionTest, ColumnsThatAreNotThereAreRefused) {
    const PageNumber page = m_pages.AddDefinition(WideTable(3), 7);
    m_pages.Page(page).Put(GetParam()->m_columns, 60000, 2);
    EXPECT_EQ(AccessErrorOf([&] { Read(page); }),
              "page " + std::to_string(page) + ": the table's definition ends too early");
}

TEST_P(TableDefinitionTest, IndexesWithoutEndAreRefused) {
    const PageNumber page = m_pages.AddDefinition(WideTable(3), 7);
    m_pages.Page(page).Put(GetParam()->m_realIndexes, 0x7FFFFFFF, 4);
    EXPECT_EQ(AccessErrorOf([&] { Read(page); }),
              "page " + std::to_string(page) + ": the table's definition ends too early");
}

TEST_P(TableDefinitionTest, DamageAmongTheIndexesLeavesTheColumns) {
    const PageNumber page = m_pages.AddDefinition(WideTable(3), 7);
    m_pages.Page(page).Put(GetParam()->m_logicalIndexes, 0x7FFFFFFF, 4);
    EXPECT_EQ(Read(page).m_columns.size(), 3U);
    EXPECT_EQ(m_log.Count(), 1U);
}

TEST_P(TableDefinitionTest, OtherPagesAreRefused) {
    EXPECT_EQ(AccessErrorOf([&] { Read(1); }), "page 1, offset 0: the page is of type 1 instead of 2");
    EXPECT_EQ(AccessErrorOf([&] { Read(0xFFFFFF); }), "page 16777215: the file has no such page");
}

}  // namespace
}  // namespace quillet::access
