#include "output/NameSuggestions.h"

#include <gtest/gtest.h>

namespace quillet::tool {
namespace {

TEST(NameSuggestions, Suggest_NearName_IsSuggestedWithoutRegardToCase) {
    EXPECT_EQ(SuggestNames("ipw", {"HEA", "IPE", "UPE"}), "did you mean 'IPE'?");
    EXPECT_EQ(SuggestNames("STELE", {"Steel", "Concrete"}), "did you mean 'Steel'?");
    EXPECT_EQ(SuggestNames("bolt c", {"Bolt classes", "Timber"}), "did you mean 'Bolt classes'?");
}

TEST(NameSuggestions, Suggest_SeveralNearNames_AreJoined) {
    EXPECT_EQ(SuggestNames("HEX", {"HEA", "HEB", "HEM", "HED"}), "did you mean 'HEA', 'HEB' or 'HEM'?");
}

TEST(NameSuggestions, Suggest_NothingNear_ListsWhatThereIs) {
    EXPECT_EQ(SuggestNames("glass", {"Steel", "Timber"}), "there are Steel, Timber");
    EXPECT_EQ(SuggestNames("x", {"a", "b"}), "there are a, b") << "one letter is near everything";
    EXPECT_EQ(SuggestNames("glass", {}), "there are none");
}

TEST(NameSuggestions, Suggest_ManyNames_AreCutShort) {
    const std::vector<std::string> many(15, "Table");
    EXPECT_TRUE(SuggestNames("glass", many).ends_with("Table and 3 more"));
}

}  // namespace
}  // namespace quillet::tool
