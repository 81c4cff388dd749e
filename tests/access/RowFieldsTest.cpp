#include "Quillet/access/RowFields.h"

#include <gtest/gtest.h>

#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using test::AccessPages;
using test::MadeColumn;
using test::MadeTable;
using test::Number;

ByteView BytesOf(const std::string& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

std::string TextOf(const std::optional<ByteView>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : "none";
}

// Of two fixed columns, 0 and 2, and two variable ones, 1 and 3.
const MadeTable Mixed{
    {MadeColumn::Fixed("a", eColumnType::Long, 0, 0, 4), MadeColumn::Variable("b", eColumnType::Text, 1, 0),
     MadeColumn::Fixed("c", eColumnType::Integer, 2, 4, 2),
     MadeColumn::Variable("d", eColumnType::Text, 3, 1)},
    {}};

class RowFieldsTest : public testing::TestWithParam<const Layout*> {
protected:
    const char* Split(const std::string& row) {
        m_row = row;
        return m_fields.Split(BytesOf(m_row));
    }

    const AccessPages m_pages = test::PagesOf(*GetParam());
    RowFields m_fields{*GetParam(), 1};
    std::string m_row;
};

INSTANTIATE_TEST_SUITE_P(Layouts, RowFieldsTest, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

// Every byte of a row: four columns, 8 bytes of fixed ones, one variable column.
TEST(RowFieldsExample, ARowIsItsFixedPartItsVariablePartAndATrailer) {
    const std::string row(
        "\x04\0\x07\0\0\0\x45\x23\x01\0"
        "AB"
        "\x0C\0\x0A\0\x01\0\x07",
        19);
    RowFields fields(Jet4Layout, 1);
    ASSERT_EQ(fields.Split(BytesOf(row)), nullptr);
    EXPECT_EQ(TextOf(fields.Fixed(0, 4)), Number(7, 4));
    EXPECT_EQ(TextOf(fields.Fixed(4, 4)), Number(0x12345, 4));
    EXPECT_EQ(TextOf(fields.Variable(0)), "AB");
    EXPECT_TRUE(fields.HasBit(0) && fields.HasBit(1) && fields.HasBit(2));
    EXPECT_FALSE(fields.HasBit(3));
}

TEST_P(RowFieldsTest, ColumnsAreFoundByPlaceAndTableOfStarts) {
    ASSERT_EQ(Split(m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"})), nullptr);
    EXPECT_EQ(TextOf(m_fields.Fixed(0, 4)), "aaaa");
    EXPECT_EQ(TextOf(m_fields.Fixed(4, 2)), "cc");
    EXPECT_EQ(TextOf(m_fields.Variable(0)), "first");
    EXPECT_EQ(TextOf(m_fields.Variable(1)), "second");
}

TEST_P(RowFieldsTest, AClearBitIsANullAndFixedColumnsKeepTheirPlaces) {
    ASSERT_EQ(Split(m_pages.Row(Mixed, {std::nullopt, std::nullopt, "cc", "second"})), nullptr);
    EXPECT_FALSE(m_fields.HasBit(0) || m_fields.HasBit(1));
    EXPECT_TRUE(m_fields.HasBit(2) && m_fields.HasBit(3));
    EXPECT_EQ(TextOf(m_fields.Fixed(4, 2)), "cc");
    EXPECT_EQ(TextOf(m_fields.Variable(1)), "second");
}

TEST_P(RowFieldsTest, ColumnsAddedLaterAreNotInTheRow) {
    ASSERT_EQ(Split(m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"}, std::uint16_t{3})), nullptr);
    EXPECT_FALSE(m_fields.HasBit(3));
    EXPECT_EQ(TextOf(m_fields.Variable(1)), "none");
    EXPECT_EQ(TextOf(m_fields.Variable(0)), "first");
}

TEST_P(RowFieldsTest, ARowFromBeforeTheFirstVariableColumnHasNoTableOfStarts) {
    ASSERT_EQ(Split(m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"}, std::uint16_t{1})), nullptr);
    EXPECT_EQ(TextOf(m_fields.Fixed(0, 4)), "aaaa");
    EXPECT_EQ(TextOf(m_fields.Fixed(4, 2)), "none");
    EXPECT_EQ(TextOf(m_fields.Variable(0)), "none");
}

TEST_P(RowFieldsTest, ColumnsDoNotReachBeyondTheFixedPart) {
    ASSERT_EQ(Split(m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"})), nullptr);
    EXPECT_EQ(TextOf(m_fields.Fixed(4, 3)), "none");
}

TEST_P(RowFieldsTest, BytesMayLieUnusedBetweenDataAndTrailer) {
    ASSERT_EQ(Split(m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"}, std::nullopt, 11)), nullptr);
    EXPECT_EQ(TextOf(m_fields.Variable(1)), "second");
}

// In Access 97 starts have one byte, and a table of jumps tells how often 256 is to be added.
TEST_P(RowFieldsTest, LongRowsAreSplitInEveryVersion) {
    for (std::size_t first = 0; first < 600; ++first) {
        for (const std::size_t second : {0U, 1U, 250U, 255U, 256U, 700U, 1200U}) {
            const std::string one(first, 'x');
            const std::string two(second, 'y');
            ASSERT_EQ(Split(m_pages.Row(Mixed, {"aaaa", one, "cc", two})), nullptr) << first << ' ' << second;
            ASSERT_EQ(TextOf(m_fields.Variable(0)), one) << first << ' ' << second;
            ASSERT_EQ(TextOf(m_fields.Variable(1)), two) << first << ' ' << second;
        }
    }
}

TEST_P(RowFieldsTest, ManyColumnsFitARow) {
    MadeTable table;
    test::MadeValues values;
    for (std::uint16_t i = 0; i < 255; ++i) {
        table.m_columns.push_back(MadeColumn::Variable("c", eColumnType::Text, i, i));
        values.emplace_back(i % 3 == 0 ? std::optional<std::string>() : std::string(i % 7, 'v'));
    }
    RowFields fields(*GetParam(), 0);
    const std::string row = m_pages.Row(table, values);
    ASSERT_EQ(fields.Split(BytesOf(row)), nullptr);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(fields.HasBit(i), values[i].has_value()) << i;
        EXPECT_EQ(TextOf(fields.Variable(i)), values[i].value_or("")) << i;
    }
}

TEST_P(RowFieldsTest, RowsTooShortForTheirColumnsAreRefused) {
    const std::string row = m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"});
    for (std::size_t size = 0; size < 10; ++size) {
        EXPECT_NE(Split(row.substr(0, size)), nullptr) << size;
    }
    EXPECT_STREQ(Split(Number(0xFFFF, 2) + row.substr(2)), "the row is too short for its columns");
}

TEST_P(RowFieldsTest, RowsWithoutColumnsAreRefused) {
    EXPECT_STREQ(Split(std::string(20, '\0')), "the row has no columns");
}

TEST_P(RowFieldsTest, ATableOfStartsTooLongIsRefused) {
    std::string row = m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"});
    const std::size_t size = GetParam()->m_rowNumberSize;
    row.replace(row.size() - 1 - size, size, Number(0xFFFF, size));
    EXPECT_STREQ(Split(row), "the row is too short for its columns");
}

TEST_P(RowFieldsTest, StartsOutOfOrderAreRefused) {
    const std::string row = m_pages.Row(Mixed, {"aaaa", "first", "cc", "second"});
    const std::size_t size = GetParam()->m_rowNumberSize;
    for (std::size_t entry = 2; entry <= 4; ++entry) {
        std::string damaged = row;
        damaged.replace(row.size() - 1 - entry * size, size, Number(0xF0, size));
        EXPECT_STREQ(Split(damaged), "the row's columns overlap") << entry;
    }
}

}  // namespace
}  // namespace quillet::access
