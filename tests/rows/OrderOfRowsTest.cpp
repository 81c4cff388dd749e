#include "Quillet/rows/OrderOfRows.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "support/RowHelpers.h"

namespace quillet::test {
namespace {

using Order = std::vector<uint64>;
using Fields = std::vector<uint64>;

// The order as it is defined: each row is inserted where the search finds its place.
Order Inserted(const RowSet& rows, const Fields& fields) {
    Order order;
    for (std::size_t row = 0; row < rows.Size(); ++row) {
        int low = 0;
        int high = static_cast<int>(order.size()) - 1;
        while (high - low >= 0) {
            const int middle = (low + high) / 2;
            const DbTableRow& other = *rows.Rows()[order[static_cast<std::size_t>(middle)]];
            const auto result = rows.Rows()[row]->CompareEx(fields, other);
            if (result == DbTableRow::CmpEqual) {
                low = middle;
                high = middle - 1;
                break;
            }
            if (result == DbTableRow::CmpLess) {
                high = middle - 1;
            } else {
                low = middle + 1;
            }
        }
        order.insert(order.begin() + low, row);
    }
    return order;
}

Order OrderOfValues(const std::vector<CComVariant>& values) {
    return OrderOfRows(RowsOfOneField(values).Rows(), {0});
}

TEST(RowOrder, NoRows_IsEmpty) {
    EXPECT_EQ(OrderOfValues({}), Order());
}

TEST(RowOrder, OneRow_StandsAlone) {
    EXPECT_EQ(OrderOfValues({Long(7)}), Order({0}));
}

TEST(RowOrder, Numbers_Ascend) {
    EXPECT_EQ(OrderOfValues({Long(3), Long(-1), Long(2), Long(10)}), Order({1, 2, 0, 3}));
}

TEST(RowOrder, Texts_AscendByTheAlphabetNotByTheirCodes) {
    EXPECT_EQ(OrderOfValues({"b", "C", "a", "\xC3\xA9", "d", "Z", "f"}), Order({2, 0, 1, 4, 3, 6, 5}));
}

TEST(RowOrder, EqualRows_StandWhereTheSearchMeetsThem) {
    EXPECT_EQ(OrderOfValues({Long(5), Long(5), Long(5), Long(5), Long(5)}), Order({2, 4, 3, 1, 0}));
    EXPECT_EQ(OrderOfValues({"x", "X", "x", "X", "x"}), Order({2, 4, 3, 1, 0}));
}

TEST(RowOrder, NoFields_MakesAllRowsEqual) {
    EXPECT_EQ(OrderOfRows(RowsOfOneField({Long(1), Long(2), Long(3), Long(4)}).Rows(), {}),
              Order({2, 3, 1, 0}));
}

TEST(RowOrder, SecondField_DecidesWhereTheFirstIsEqual) {
    RowSet rows;
    rows.Add({"b", Long(2)});
    rows.Add({"a", Long(9)});
    rows.Add({"B", Long(1)});
    rows.Add({"a", Long(3)});
    EXPECT_EQ(OrderOfRows(rows.Rows(), {0, 1}), Order({3, 1, 2, 0}));
    EXPECT_EQ(OrderOfRows(rows.Rows(), {1, 0}), Order({2, 0, 3, 1}));
}

TEST(RowOrder, NullBesideValues_GoesBeforeWhatTheSearchMeets) {
    EXPECT_EQ(OrderOfValues({Long(2), NullVariant(), Long(3)}), Order({2, 1, 0}));
    EXPECT_EQ(OrderOfValues({"b", NullVariant(), "c"}), Order({2, 1, 0}));
}

TEST(RowOrder, EmptyBesideZero_GoesBeforeIt) {
    EXPECT_EQ(OrderOfValues({Long(0), CComVariant(), Long(0)}), Order({2, 1, 0}));
    EXPECT_EQ(OrderOfValues({Long(1), CComVariant(), Long(-1)}), Order({2, 1, 0}));
}

TEST(RowOrder, NotANumber_GoesBeforeWhatTheSearchMeets) {
    EXPECT_EQ(OrderOfValues({2.0, std::nan(""), 3.0}), Order({2, 1, 0}));
}

TEST(RowOrder, MissingCells_CountAsEmpty) {
    RowSet rows;
    rows.Add({Long(1), Long(1)});
    rows.Add({Long(1)});
    rows.Add({Long(1), CComVariant()});
    rows.Add({Long(1), Long(-1)});
    EXPECT_EQ(OrderOfRows(rows.Rows(), {0, 1}), Order({3, 2, 1, 0}));
    EXPECT_EQ(OrderOfRows(rows.Rows(), {77}), Order({2, 3, 1, 0}));
}

class RowOrderOf : public testing::TestWithParam<Filling> {
protected:
    void ExpectInserted(const RowSet& rows, const Fields& fields) {
        ASSERT_EQ(OrderOfRows(rows.Rows(), fields), Inserted(rows, fields)) << rows.Size() << " rows";
    }
};

TEST_P(RowOrderOf, OneField_IsTheOrderOfInsertions) {
    constexpr int Rounds = 40;
    constexpr std::size_t MostRows = 300;
    Chance chance(1);
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        ExpectInserted(RandomRows(chance, chance.Below(MostRows + 1), {GetParam()}), {0});
    }
}

TEST_P(RowOrderOf, SeveralFields_IsTheOrderOfInsertions) {
    constexpr int Rounds = 40;
    constexpr std::size_t MostRows = 200;
    const std::vector<Filling> all = AllFillings();
    Chance chance(2);
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        const std::vector<Filling> fillings = {GetParam(), chance.Of(all), chance.Of(all)};
        const Fields fields = chance.Of(std::vector<Fields>{{0, 1}, {1, 0}, {0, 1, 2}, {2, 0}, {0, 0, 3, 1}});
        ExpectInserted(RandomRows(chance, chance.Below(MostRows + 1), fillings), fields);
    }
}

TEST_P(RowOrderOf, SomeThousandRows_IsTheOrderOfInsertions) {
    Chance chance(3);
    ExpectInserted(RandomRows(chance, 3000, {GetParam()}), {0});
}

INSTANTIATE_TEST_SUITE_P(Fillings, RowOrderOf, testing::ValuesIn(AllFillings()), FillingName);

class RowOrderCost : public testing::Test {
protected:
    static constexpr std::size_t Rows = 10000;

    // How many cells are read to find the order.
    static std::size_t Reads(const Filling& filling) {
        Chance chance(4);
        const RowSet rows = RandomRows(chance, Rows, {filling});
        CountedCell::s_reads = 0;
        EXPECT_EQ(OrderOfRows(rows.Rows(), {0}).size(), Rows);
        return CountedCell::s_reads;
    }
};

TEST_F(RowOrderCost, CellsOfOneKind_AreReadOnce) {
    EXPECT_EQ(Reads(Numbers("", VT_R8, {1, 2, 3})), Rows);
    EXPECT_EQ(Reads(Numbers("", VT_BOOL, {-1, 0})), Rows);
    EXPECT_EQ(Reads(TextsOf("", {'a', 'b', 'A', 'B', '-', '\''}, 12)), Rows);
    EXPECT_EQ(Reads(TextsOf("", {0x416, 0x436, 0x3B1, 0xE9}, 12)), Rows);
}

TEST_F(RowOrderCost, CellsOfOneKindAndNulls_AreReadOnce) {
    EXPECT_EQ(Reads(WithSome("", Numbers("", VT_I4, {0, 1, 2}), NullVariant(), 4)), Rows);
    EXPECT_EQ(Reads(WithSome("", Numbers("", VT_I4, {0, 1, 2}), CComVariant(), 4)), Rows);
    EXPECT_EQ(Reads(WithSome("", TextsOf("", {'a', 'b'}, 12), NullVariant(), 4)), Rows);
}

TEST_F(RowOrderCost, FewOtherCells_AreComparedAlone) {
    const Filling doubles = {"", [](Chance& chance) { return CComVariant(chance.Below(100000) / 8.0); }};
    const Filling words = TextsOf("", {'a', 'b', 'c', 'A', '-'}, 12);
    EXPECT_LE(Reads(WithSome("", doubles, "x", 200)), 3 * Rows);
    EXPECT_LE(Reads(WithSome("", doubles, std::nan(""), 200)), 3 * Rows);
    EXPECT_LE(Reads(WithSome("", words, Units({'a', 0xAD}), 200)), 3 * Rows);
    EXPECT_LE(Reads(WithSome("", words, Long(5), 200)), 3 * Rows);
}

TEST_F(RowOrderCost, OtherCells_AreComparedNLogNTimes) {
    constexpr std::size_t ReadsPerComparison = 2;
    // A kind is found out by reading, at most once for numbers and texts.
    const std::size_t most = Rows * (1 + ReadsPerComparison * std::bit_width(Rows));
    for (const Filling& filling : AllFillings()) {
        EXPECT_LE(Reads(filling), most) << filling.m_name;
    }
}

}  // namespace
}  // namespace quillet::test
