#include "Quillet/rows/RowTokens.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

#include "Quillet/Db_TableRow.h"

namespace {

using quillet::RowTokens;

// Rows at fixed addresses.
std::deque<DbTableRow>& MakeRows(std::deque<DbTableRow>& rows, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        rows.emplace_back(nullptr);
    }
    return rows;
}

TEST(RowTokens, Of_OneRow_IsOneTokenAsLongAsSomebodyHoldsIt) {
    DbTableRow row(nullptr);
    RowTokens tokens;
    auto token = tokens.Of(row);
    EXPECT_EQ(*token, &row);
    EXPECT_EQ(tokens.Of(row), token);
    token.reset();
    EXPECT_EQ(*tokens.Of(row), &row);
}

TEST(RowTokens, RowGoes_OnlyItsOwnTokenIsEmptied) {
    DbTableRow first(nullptr);
    DbTableRow second(nullptr);
    RowTokens tokens;
    const auto ofFirst = tokens.Of(first);
    const auto ofSecond = tokens.Of(second);
    tokens.RowGoes(first);
    EXPECT_EQ(*ofFirst, nullptr);
    EXPECT_EQ(*ofSecond, &second);
    // One without a token.
    tokens.RowGoes(first);
    EXPECT_NE(tokens.Of(first), ofFirst);
}

TEST(RowTokens, Destroy_EmptiesAll) {
    DbTableRow row(nullptr);
    auto tokens = std::make_unique<RowTokens>();
    const auto token = tokens->Of(row);
    tokens.reset();
    EXPECT_EQ(*token, nullptr);
}

TEST(RowTokens, ManyThatNobodyHolds_AreForgotten) {
    constexpr std::size_t Count = 10000;
    std::deque<DbTableRow> rows;
    RowTokens tokens;
    for (DbTableRow& row : MakeRows(rows, Count)) {
        tokens.Of(row);
    }
    EXPECT_LT(tokens.Size(), 100U);
}

TEST(RowTokens, ManyThatAreHeld_AreAllKept) {
    constexpr std::size_t Count = 1000;
    std::deque<DbTableRow> rows;
    RowTokens tokens;
    std::vector<std::shared_ptr<DbTableRow*>> held;
    for (DbTableRow& row : MakeRows(rows, Count)) {
        held.push_back(tokens.Of(row));
    }
    EXPECT_EQ(tokens.Size(), Count);
    for (std::size_t i = 0; i < Count; ++i) {
        EXPECT_EQ(*held[i], &rows[i]);
    }
}

}  // namespace
