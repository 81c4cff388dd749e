#include "Quillet/rows/DistinctRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/RowHelpers.h"

namespace quillet::test {
namespace {

using Kept = std::vector<uint64>;
using Fields = std::vector<uint64>;

// The test of each row against those kept before.
Kept PairwiseDistinct(const RowSet& rows, const Fields& fields) {
    Kept kept;
    for (std::size_t row = 0; row < rows.Size(); ++row) {
        const DbTableRow& wanted = *rows.Rows()[row];
        const auto isEqual = [&](uint64 other) {
            const DbTableRow& before = *rows.Rows()[other];
            return std::all_of(fields.begin(), fields.end(), [&](uint64 field) {
                return wanted.GetField(field).GetVariant() == before.GetField(field).GetVariant();
            });
        };
        if (std::none_of(kept.begin(), kept.end(), isEqual)) {
            kept.push_back(row);
        }
    }
    return kept;
}

Kept DistinctValues(const std::vector<CComVariant>& values) {
    return DistinctRows(RowsOfOneField(values).Rows(), {0});
}

TEST(Distinct, NoRows_KeepsNone) {
    EXPECT_EQ(DistinctValues({}), Kept());
}

TEST(Distinct, RepeatedValues_AreKeptWhereTheyFirstCome) {
    EXPECT_EQ(DistinctValues({Long(3), Long(1), Long(3), Long(2), Long(1)}), Kept({0, 1, 3}));
    EXPECT_EQ(DistinctValues({"b", "a", "b", "c", "a"}), Kept({0, 1, 3}));
}

TEST(Distinct, TextsThatDifferInCase_AreBothKept) {
    EXPECT_EQ(DistinctValues({"abc", "ABC", "abc"}), Kept({0, 1}));
}

TEST(Distinct, TextsThatDifferInCharactersWithoutWeight_AreOne) {
    EXPECT_EQ(DistinctValues({"co-op", "a", Units({'a', 0xAD}), Units({0xAD, 'a'})}), Kept({0, 1}));
}

TEST(Distinct, LetterWithItsMarkApart_IsTheSameLetter) {
    EXPECT_EQ(DistinctValues({Units({0xE9}), Units({'e', 0x301}), "e"}), Kept({0, 2}));
}

TEST(Distinct, NumbersOfTwoTypes_AreBothKept) {
    EXPECT_EQ(DistinctValues({Short(5), Long(5), 5.0, 5.0F, DateVariant(5), Short(5)}),
              Kept({0, 1, 2, 3, 4}));
}

TEST(Distinct, NumberAndItsText_AreBothKept) {
    EXPECT_EQ(DistinctValues({"5", Long(5), "5"}), Kept({0, 1}));
}

TEST(Distinct, MinusZero_IsZero) {
    EXPECT_EQ(DistinctValues({0.0, -0.0}), Kept({0}));
    EXPECT_EQ(DistinctValues({-0.0F, 0.0F}), Kept({0}));
}

TEST(Distinct, HugeIntegersThatDifferByOne_AreBothKept) {
    EXPECT_EQ(DistinctValues({std::int64_t(9007199254740993), std::int64_t(9007199254740992)}), Kept({0, 1}));
}

TEST(Distinct, NotANumber_EqualsNothing) {
    EXPECT_EQ(DistinctValues({std::nan(""), std::nan(""), 1.0, 1.0}), Kept({0, 1, 2}));
}

TEST(Distinct, Bytes_EqualNothing) {
    EXPECT_EQ(DistinctValues({ByteArray("ab"), ByteArray("ab")}), Kept({0, 1}));
}

TEST(Distinct, Nulls_AreOne) {
    EXPECT_EQ(DistinctValues({NullVariant(), Long(0), NullVariant(), CComVariant()}), Kept({0, 1, 3}));
}

TEST(Distinct, EmptyCells_AreOneAndNeitherZeroNorEmptyText) {
    EXPECT_EQ(DistinctValues({Long(0), CComVariant(), "", CComVariant()}), Kept({0, 1, 2}));
}

TEST(Distinct, MissingCells_CountAsEmpty) {
    RowSet rows;
    rows.Add({Long(1), CComVariant()});
    rows.Add({Long(1)});
    rows.Add({});
    rows.Add({CComVariant(), CComVariant()});
    EXPECT_EQ(DistinctRows(rows.Rows(), {0, 1}), Kept({0, 2}));
    EXPECT_EQ(DistinctRows(rows.Rows(), {77}), Kept({0}));
}

TEST(Distinct, NoFields_KeepsTheFirstRow) {
    EXPECT_EQ(DistinctRows(RowsOfOneField({Long(1), Long(2)}).Rows(), {}), Kept({0}));
}

TEST(Distinct, SeveralFields_MustAllBeEqual) {
    RowSet rows;
    rows.Add({"a", Long(1)});
    rows.Add({"a", Long(2)});
    rows.Add({"b", Long(1)});
    rows.Add({"a", Long(1)});
    EXPECT_EQ(DistinctRows(rows.Rows(), {0, 1}), Kept({0, 1, 2}));
    EXPECT_EQ(DistinctRows(rows.Rows(), {1, 0, 1}), Kept({0, 1, 2}));
}

TEST(Distinct, BooleansOfOtherBits_AreBothKept) {
    EXPECT_EQ(DistinctValues({BooleanBits(VARIANT_TRUE), BooleanBits(1), CComVariant(true)}), Kept({0, 1}));
}

class DistinctOf : public testing::TestWithParam<Filling> {
protected:
    void ExpectPairwise(const RowSet& rows, const Fields& fields) {
        ASSERT_EQ(DistinctRows(rows.Rows(), fields), PairwiseDistinct(rows, fields))
            << rows.Size() << " rows";
    }
};

TEST_P(DistinctOf, OneField_IsThePairwiseTest) {
    constexpr int Rounds = 40;
    constexpr std::size_t MostRows = 300;
    Chance chance(1);
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        ExpectPairwise(RandomRows(chance, chance.Below(MostRows + 1), {GetParam()}), {0});
    }
}

TEST_P(DistinctOf, SeveralFields_IsThePairwiseTest) {
    constexpr int Rounds = 40;
    constexpr std::size_t MostRows = 150;
    const std::vector<Filling> all = AllFillings();
    Chance chance(2);
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        const std::vector<Filling> fillings = {GetParam(), chance.Of(all), chance.Of(all)};
        const Fields fields = chance.Of(std::vector<Fields>{{0, 1}, {1, 0}, {0, 1, 2}, {2, 0}, {0, 0, 3, 1}});
        ExpectPairwise(RandomRows(chance, chance.Below(MostRows + 1), fillings), fields);
    }
}

TEST_P(DistinctOf, SomeThousandRows_IsThePairwiseTest) {
    Chance chance(3);
    ExpectPairwise(RandomRows(chance, 2000, {GetParam()}), {0});
}

INSTANTIATE_TEST_SUITE_P(Fillings, DistinctOf, testing::ValuesIn(AllFillings()), FillingName);

class DistinctCost : public testing::Test {
protected:
    static constexpr std::size_t Rows = 10000;

    // How many cells are read to find the rows.
    static std::size_t Reads(const Filling& filling) {
        Chance chance(4);
        const RowSet rows = RandomRows(chance, Rows, {filling});
        CountedCell::s_reads = 0;
        DistinctRows(rows.Rows(), {0});
        return CountedCell::s_reads;
    }
};

TEST_F(DistinctCost, Values_AreReadOnce) {
    const Filling words = TextsOf("", {'a', 'b', 'A', '-', 0xE9, 0x416}, 12);
    EXPECT_EQ(Reads({"", [](Chance& chance) { return CComVariant(chance.Below(15000) / 4.0); }}), Rows);
    EXPECT_EQ(Reads(words), Rows);
    EXPECT_EQ(Reads(WithSome("", words, NullVariant(), 4)), Rows);
    EXPECT_EQ(Reads(WithSome("", words, Long(1), 4)), Rows);
    EXPECT_EQ(Reads(Numbers("", VT_R8, {std::nan(""), 1})), Rows);
    EXPECT_EQ(Reads({"", [](Chance&) { return ByteArray("ab"); }}), Rows);
}

TEST_F(DistinctCost, TextsThatAreNotNormalized_AreComparedWithTheirLike) {
    constexpr std::size_t ReadsPerComparison = 2;
    const Filling marked = {"", [](Chance& chance) {
                                const CString text = chance.Text({'a', 'b', 'c', 'd', 0x301, 0x323}, 12);
                                return CComVariant(Units({0x301, 0x323}) + text);
                            }};
    EXPECT_LE(Reads(marked), Rows * (1 + ReadsPerComparison));
}

TEST_F(DistinctCost, TextsThatMayBeEqualInOtherCharacters_AreComparedWithTheirLike) {
    constexpr std::size_t ReadsPerComparison = 2;
    EXPECT_LE(Reads(TextsOf("", {'a', 'b', 'c', 'd', 0x627, 0x628, 0xAD}, 12)),
              Rows * (1 + ReadsPerComparison));
}

}  // namespace
}  // namespace quillet::test
