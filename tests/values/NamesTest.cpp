#include "Quillet/values/Names.h"

#include <gtest/gtest.h>

#include "support/TestHelpers.h"

namespace {

using quillet::WithoutBrackets;
using quillet::WithoutQuotes;

TEST(Names, WithoutBrackets_EachEndLosesOneOnItsOwn) {
    EXPECT_EQ(WithoutBrackets("[a b]"), "a b");
    EXPECT_EQ(WithoutBrackets("[[a]]"), "[a]");
    EXPECT_EQ(WithoutBrackets("[a"), "a");
    EXPECT_EQ(WithoutBrackets("a]"), "a");
    EXPECT_EQ(WithoutBrackets("]a["), "]a[");
    EXPECT_EQ(WithoutBrackets("[]"), "");
    EXPECT_EQ(WithoutBrackets("["), "");
    EXPECT_EQ(WithoutBrackets("]"), "");
    EXPECT_EQ(WithoutBrackets(""), "");
}

TEST(Names, WithoutQuotes_EachEndLosesOneOfAnyKind) {
    EXPECT_EQ(WithoutQuotes("'a'"), "a");
    EXPECT_EQ(WithoutQuotes("'a\""), "a");
    EXPECT_EQ(WithoutQuotes("\uFF91a"), "a");
    EXPECT_EQ(WithoutQuotes("''a'"), "'a");
    EXPECT_EQ(WithoutQuotes("'"), "");
    EXPECT_EQ(WithoutQuotes("''"), "");
    EXPECT_EQ(WithoutQuotes(""), "");
}

}  // namespace
