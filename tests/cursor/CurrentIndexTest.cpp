#include "Quillet/cursor/CurrentIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using quillet::CurrentIndex;
using quillet::test::Long;
using quillet::test::NullVariant;
using testing::ElementsAre;

using Index = DbTableDescr::DbIndex;

class CurrentIndexTest : public testing::Test {
protected:
    CurrentIndexTest() {
        m_descr.CreateField("a", false, DbFieldDescr::Long);
        m_descr.CreateField("b", false, DbFieldDescr::Text);
        m_descr.CreateIndex("ab", "a,b");
    }

    void Add(const CComVariant& a, const CComVariant& b) {
        DbTableRow& row = m_data[m_data.AddRow()];
        row[0].GetVariant() = a;
        row[1].GetVariant() = b;
    }
    Index& TheIndex() { return *m_descr.FindIndex("ab"); }
    // The correct position, found by a linear search.
    std::optional<uint64> FirstEqual(const std::vector<CComVariant>& keys) {
        std::vector<uint64> fields = {0, 1};
        fields.resize(keys.size());
        const std::vector<uint64>& order = TheIndex().GetRowOrder();
        for (uint64 place = 0; place < order.size(); ++place) {
            if (DbTableRow::CompareEx(fields, keys, m_data[order[place]]) == DbTableRow::CmpEqual) {
                return place;
            }
        }
        return std::nullopt;
    }

    DbTableDescr m_descr{nullptr};
    DbTableData m_data{nullptr, &m_descr};
    CurrentIndex m_current;
};

TEST_F(CurrentIndexTest, WithoutAnIndex_PlacesArePositions) {
    EXPECT_EQ(m_current.Get(), nullptr);
    EXPECT_EQ(m_current.PositionAt(7), 7U);
    m_current.RowDeleted(0, 0);
}

TEST_F(CurrentIndexTest, PositionAt_FollowsTheOrderOfTheIndex) {
    TheIndex().GetRowOrder() = {4, 2};
    m_current.Set(&TheIndex());
    EXPECT_EQ(m_current.PositionAt(0), 4U);
    EXPECT_EQ(m_current.PositionAt(1), 2U);
    EXPECT_EQ(m_current.PositionAt(2), quillet::NoRow);
}

TEST_F(CurrentIndexTest, Get_IndexThatWasDeleted_IsNull) {
    m_current.Set(&TheIndex());
    m_descr.DeleteIndex("ab");
    EXPECT_EQ(m_current.Get(), nullptr);
    EXPECT_EQ(m_current.PositionAt(7), 7U);
    m_current.RowDeleted(0, 0);
}

TEST_F(CurrentIndexTest, Get_CopyOfAnIndex_LivesOnItsOwn) {
    const Index copy(TheIndex());
    m_current.Set(&copy);
    m_descr.DeleteIndex("ab");
    EXPECT_EQ(m_current.Get(), &copy);
    Index assigned("other");
    CurrentIndex other;
    other.Set(&assigned);
    assigned = copy;
    EXPECT_EQ(other.Get(), &assigned);
    EXPECT_EQ(assigned.GetName(), "ab");
}

TEST_F(CurrentIndexTest, Build_OrdersByTheFieldsInTurn) {
    Add(Long(2), "x");
    Add(Long(1), "z");
    Add(Long(1), "y");
    m_current.Set(&TheIndex());
    m_current.Build(m_descr, m_data);
    EXPECT_THAT(TheIndex().GetRowOrder(), ElementsAre(2U, 1U, 0U));
    m_data.Clear();
    m_current.Build(m_descr, m_data);
    EXPECT_THAT(TheIndex().GetRowOrder(), ElementsAre());
}

TEST_F(CurrentIndexTest, Build_IndexWithoutFields_TakesEveryRowOnce) {
    Add(Long(2), "x");
    Add(Long(1), "z");
    m_descr.CreateIndex("none");
    m_current.Set(m_descr.FindIndex("none"));
    m_current.Build(m_descr, m_data);
    EXPECT_THAT(m_current.Get()->GetRowOrder(), testing::UnorderedElementsAre(0U, 1U));
}

TEST_F(CurrentIndexTest, Build_GivesTheOrderOfOneByOneInsertion) {
    std::mt19937 random(quillet::test::Seed(7));
    for (int round = 0; round < 20; ++round) {
        m_data.Clear();
        for (int i = 0; i < 60; ++i) {
            const int number = static_cast<int>(random() % 6);
            const bool isNull = random() % 10 == 0;
            Add(isNull ? NullVariant() : CComVariant(number), random() % 2 == 0 ? "x" : "X");
        }
        m_current.Set(&TheIndex());
        m_current.Build(m_descr, m_data);
        std::vector<uint64> fields = {0, 1};
        std::vector<uint64> order;
        for (uint64 row = 0; row < m_data.size(); ++row) {
            const uint64 place = m_data.SpatialIndex(fields, order, m_data[row]);
            order.insert(order.begin() + static_cast<std::ptrdiff_t>(place), row);
        }
        EXPECT_EQ(TheIndex().GetRowOrder(), order) << round;
    }
}

TEST_F(CurrentIndexTest, Find_GivesTheFirstEqualPlace_WhateverTheValuesAre) {
    std::mt19937 random(quillet::test::Seed(11));
    const std::vector<CComVariant> odd = {NullVariant(), CComVariant("3"), CComVariant(2.0), CComVariant(),
                                          CComVariant(std::numeric_limits<double>::quiet_NaN())};
    // In Danish, aa and AA are one letter and aA is two; in Turkish, i is not the lower case of I.
    const std::vector<CComVariant> texts = {"x",  "X",  "y",  "",   "xy", "aa", "aA",
                                            "AA", "ab", "zz", "Ib", "ia", "ib", "IB"};
    for (int round = 0; round < 60; ++round) {
        m_data.Clear();
        const auto number = [&] {
            const bool isOdd = round % 2 == 1 && random() % 8 == 0;
            return isOdd ? odd[random() % odd.size()] : CComVariant(static_cast<int>(random() % 9));
        };
        for (int i = 0; i < 40; ++i) {
            Add(number(), texts[random() % texts.size()]);
        }
        m_current.Set(&TheIndex());
        m_current.Build(m_descr, m_data);
        for (int i = 0; i < 30; ++i) {
            std::vector<CComVariant> keys = {random() % 6 == 0 ? odd[random() % odd.size()] : number(),
                                             texts[random() % texts.size()]};
            keys.resize(random() % 3);
            EXPECT_EQ(m_current.Find(m_descr, m_data, keys.data(), keys.size()), FirstEqual(keys)) << round;
        }
    }
}

TEST_F(CurrentIndexTest, Find_TextsThatAreEqualWithoutCaseAndNoNeighbours_AreFound) {
    // Without case, an iota subscript equals an iota; in the alphabet it sorts before all letters.
    const char* const below = "\xCD\x85";
    const char* const iota = "\xCE\xB9";
    m_descr.CreateIndex("b", "b");
    for (const char* const text : {"a", iota, "z"}) {
        Add(Long(1), text);
    }
    m_current.Set(m_descr.FindIndex("b"));
    m_current.Build(m_descr, m_data);
    const CComVariant key(below);
    ASSERT_TRUE(quillet::EqualIgnoringCase(key, CComVariant(iota)));
    EXPECT_EQ(m_current.Find(m_descr, m_data, &key, 1), 2U);

    Add(Long(1), below);
    m_current.Build(m_descr, m_data);
    ASSERT_THAT(std::as_const(*m_current.Get()).GetRowOrder(), ElementsAre(3U, 0U, 2U, 1U));
    for (const char* const text : {below, iota}) {
        const CComVariant either(text);
        EXPECT_EQ(m_current.Find(m_descr, m_data, &either, 1), 0U);
    }
}

TEST_F(CurrentIndexTest, Find_AfterTheCallerChangedTheOrder_LooksAgain) {
    for (const int number : {1, 2, 3, 4, 5}) {
        Add(Long(number), "x");
    }
    m_current.Set(&TheIndex());
    m_current.Build(m_descr, m_data);
    const CComVariant key(2);
    EXPECT_EQ(m_current.Find(m_descr, m_data, &key, 1), 1U);
    TheIndex().GetRowOrder() = {1, 4, 3, 2, 0};
    EXPECT_EQ(m_current.Find(m_descr, m_data, &key, 1), 0U);
}

TEST_F(CurrentIndexTest, Find_InAnOrderThatWasTakenAsItIs_LooksAtEveryRow) {
    for (const int number : {1, 2, 3}) {
        Add(Long(number), "x");
    }
    TheIndex().GetRowOrder() = {2, 9, 0, 1};
    m_current.Set(&TheIndex());
    const CComVariant key(2);
    EXPECT_EQ(m_current.Find(m_descr, m_data, &key, 1), 3U) << "a place without a row is passed over";
}

TEST_F(CurrentIndexTest, RowDeleted_TakesThePlaceOutAndLowersTheRest) {
    TheIndex().GetRowOrder() = {3, 1, 0, 2};
    m_current.Set(&TheIndex());
    m_current.RowDeleted(1, 1);
    EXPECT_THAT(TheIndex().GetRowOrder(), ElementsAre(2U, 0U, 1U));
    m_current.RowDeleted(7, quillet::NoRow);
    EXPECT_THAT(TheIndex().GetRowOrder(), ElementsAre(2U, 0U, 1U));
}

TEST_F(CurrentIndexTest, RowDeleted_OfRowsThatAscended_LooksForTheirOrderAgain) {
    for (int number = 1; number <= 4; ++number) {
        Add(Long(number), "x");
    }
    m_current.Set(&TheIndex());
    m_current.Build(m_descr, m_data);
    const CComVariant key = Long(4);
    EXPECT_EQ(m_current.Find(m_descr, m_data, &key, 1), 3U);
    // As a deletion from borrowed rows may do: others are seen than before, and they don't ascend.
    for (int row = 0; row < 4; ++row) {
        m_data[static_cast<uint64>(row)][0].GetVariant() = Long(5 - row);
    }
    m_data.DeleteRow(0);
    m_current.RowDeleted(0, 0);
    EXPECT_EQ(m_current.Find(m_descr, m_data, &key, 1), 0U);
}

}  // namespace
