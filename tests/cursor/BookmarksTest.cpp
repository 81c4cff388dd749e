#include "Quillet/cursor/Bookmarks.h"

#include <gtest/gtest.h>

namespace {

using quillet::Bookmarks;

TEST(BookmarksTest, Add_ATakenNumber_KeepsTheFirstPosition) {
    Bookmarks bookmarks;
    bookmarks.Add(5, 1);
    bookmarks.Add(5, 2);
    EXPECT_EQ(bookmarks.Find(5), 1);
    EXPECT_EQ(bookmarks.Find(4), std::nullopt);
}

TEST(BookmarksTest, Set_ATakenNumber_ReplacesThePosition) {
    Bookmarks bookmarks;
    bookmarks.Set(0, 1);
    bookmarks.Set(0, 2);
    EXPECT_EQ(bookmarks.Find(0), 2);
}

TEST(BookmarksTest, Clear_ForgetsAll) {
    Bookmarks bookmarks;
    bookmarks.Add(5, 1);
    bookmarks.Clear();
    EXPECT_EQ(bookmarks.Find(5), std::nullopt);
}

TEST(BookmarksTest, RowDeleted_DropsThoseOfTheRowBefore_AndMovesLaterOnesUp) {
    Bookmarks bookmarks;
    bookmarks.Add(2, 1);
    bookmarks.Add(3, 2);
    bookmarks.Add(4, 2);
    bookmarks.Add(5, 3);
    bookmarks.Add(6, 9);
    bookmarks.RowDeleted(2);
    EXPECT_EQ(bookmarks.Find(2), 1);
    EXPECT_EQ(bookmarks.Find(3), std::nullopt);
    EXPECT_EQ(bookmarks.Find(4), std::nullopt);
    EXPECT_EQ(bookmarks.Find(5), 2) << "the deleted row's own";
    EXPECT_EQ(bookmarks.Find(6), 8);
}

TEST(BookmarksTest, RowDeleted_TheFirstRow_DropsThoseBeforeTheRows) {
    Bookmarks bookmarks;
    bookmarks.Add(2, -1);
    bookmarks.Add(3, 0);
    bookmarks.RowDeleted(-1);
    EXPECT_EQ(bookmarks.Find(2), std::nullopt);
    EXPECT_EQ(bookmarks.Find(3), -1);
}

}  // namespace
