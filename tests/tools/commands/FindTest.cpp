#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/ToolTest.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class Find : public quillet::test::ToolTest {
protected:
    std::vector<int> Positions(const std::string& where, std::vector<std::string> options = {}) const {
        std::vector<std::string> arguments = {
            "find", CopyExample("materials.xml"), "Bolts", where, "--format", "json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::vector<int> positions;
        for (const json& row : json::parse(Output(arguments))) {
            positions.push_back(row["position"]);
        }
        return positions;
    }

    // The message when nothing is found among the bolts, without the name of the file.
    std::string WhyNot(const std::string& where, const std::string& table = "Bolts") const {
        const std::string file = CopyExample("materials.xml");
        const std::string message = Failure({"find", file, table, where});
        EXPECT_THAT(message, testing::StartsWith(file + ": "));
        return message.substr(file.size() + 2);
    }
};

TEST_F(Find, Find_ShowsTheFirstRowThatFits_AndItsPosition) {
    EXPECT_EQ(Output({"find", CopyExample("materials.xml"), "bolts", "d >= 24 and preferred = true"}),
              "position  name   d  P   As  d0   s  preferred\n"
              "--------  ----  --  -  ---  --  --  ---------\n"
              "       8  M24   24  3  353  26  36  true\n");
}

TEST_F(Find, Find_Backward_SearchesFromTheEnd) {
    const std::vector<int> first = Positions("d >= 24");
    const std::vector<int> last = Positions("d >= 24", {"--backward"});
    EXPECT_EQ(first.size(), 1U);
    EXPECT_EQ(last.size(), 1U);
    EXPECT_GT(last[0], first[0]);
}

TEST_F(Find, Find_All_GivesEveryRowInTheOrderOfTheSearch) {
    std::vector<int> forward = Positions("d >= 24", {"--all"});
    EXPECT_GT(forward.size(), 2U);
    EXPECT_TRUE(std::is_sorted(forward.begin(), forward.end()));
    const std::vector<int> backward = Positions("d >= 24", {"--all", "--backward"});
    std::reverse(forward.begin(), forward.end());
    EXPECT_EQ(forward, backward);
}

TEST_F(Find, Find_Csv_PutsThePositionInFront) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"find", file, "Bolts", "name = 'm24'", "--format", "csv", "--sequential"}),
              "position,name,d,P,As,d0,s,preferred\r\n8,M24,24,3,353,26,36,true\r\n");
}

TEST_F(Find, Find_AFieldCalledPosition_KeepsItsName) {
    const std::string file = Path("own.xml");
    Write("own.csv", "Position,x\r\nleft,1\r\nright,2\r\n");
    Output({"new", file});
    Output({"import", file, "Own", Path("own.csv")});
    EXPECT_EQ(Output({"find", file, "Own", "position = 'right'", "--format", "csv"}),
              "row position,Position,x\r\n1,right,2\r\n");
}

TEST_F(Find, Find_ABracketInFront_IsRead) {
    EXPECT_THAT(Positions("(d = 8 or d = 10) and preferred = true", {"--all"}), ElementsAre(0, 1));
    EXPECT_THAT(Positions("((d = 8) or d = 10)", {"--all"}), ElementsAre(0, 1));
}

TEST_F(Find, Find_NothingFits_IsAFailure) {
    EXPECT_EQ(WhyNot("d > 1000"), "no row of 'Bolts' fits");
    EXPECT_EQ(WhyNot("d > 1000 or"),
              "no row of 'Bolts' fits; nothing follows 'or' at the end of the condition");
}

TEST_F(Find, Find_ConditionThatIsNone_SaysWhy) {
    EXPECT_EQ(
        WhyNot("weight > 3"),
        "SQL Analyze - invalid condition 'weight > 3'; field 'weight': there are name, d, P, As, d0, s, "
        "preferred");
    EXPECT_EQ(WhyNot("d >"), "SQL Analyze - invalid condintion 'd >'");
    EXPECT_EQ(WhyNot("d > thick"), "SQL Analyze - invalid condition 'd > thick'");
    EXPECT_THAT(WhyNot("(d > 1"), HasSubstr("the brackets of the conditions don't match"));
    EXPECT_THAT(WhyNot("d > 1", "Nuts"), HasSubstr("no table 'Nuts'"));
}

TEST_F(Find, Find_WithoutItsArguments_IsBadUsage) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_THAT(UsageError({"find", file, "Bolts"}), HasSubstr("WHERE is required"));
    EXPECT_THAT(UsageError({"find", file, "Bolts", ""}), HasSubstr("must not be empty"));
}

TEST_F(Find, Find_LeavesTheFileAlone) {
    const std::string file = CopyExample("materials.xml");
    const std::string before = Read("materials.xml");
    Output({"find", file, "Bolts", "d > 10", "--all"});
    EXPECT_EQ(Read("materials.xml"), before);
}

}  // namespace
