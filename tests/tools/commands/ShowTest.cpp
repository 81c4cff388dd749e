#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/ToolTest.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class Show : public quillet::test::ToolTest {
protected:
    // A catalog with a table Bolts.
    std::string MakeBolts() const {
        std::string file = Path("bolts.xml");
        Output({"new", file});
        Output({"import", file, "Bolts",
                Write("bolts.csv",
                      "name,d,As,n,usual\nM8,8,36.61,1,true\nM10,10,58,,\nM12,12.5,-84.27,120,false\n")});
        return file;
    }

    json ShowJson(const std::string& file, const std::string& table) const {
        return json::parse(Output({"show", file, table, "--format", "json"}));
    }
};

TEST_F(Show, Show_Table_AlignsColumnsAndNumbersToTheRight) {
    EXPECT_EQ(Output({"show", MakeBolts(), "bolts"}),
              "name     d      As    n  usual\n"
              "----  ----  ------  ---  -----\n"
              "M8       8   36.61    1  true\n"
              "M10     10      58\n"
              "M12   12.5  -84.27  120  false\n");
}

TEST_F(Show, Show_TableNameInOtherCase_IsFound) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"show", file, "BOLT CLASSES"}), Output({"show", file, "Bolt classes"}));
}

TEST_F(Show, Show_LimitAndOffset_CutTheRows) {
    const std::string file = CopyExample("materials.xml");
    const auto names = [&](std::vector<std::string> options) {
        std::vector<std::string> arguments = {"show", file, "Bolt classes", "--format", "json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::vector<std::string> found;
        for (const json& row : json::parse(Output(arguments))) {
            found.push_back(row["name"]);
        }
        return found;
    };
    EXPECT_THAT(names({}), testing::SizeIs(7));
    EXPECT_THAT(names({"--limit", "2"}), testing::ElementsAre("4.6", "4.8"));
    EXPECT_THAT(names({"--limit", "1", "--offset", "1"}), testing::ElementsAre("4.8"));
    EXPECT_THAT(names({"--offset", "6"}), testing::ElementsAre("10.9"));
    EXPECT_THAT(names({"--offset", "7"}), testing::IsEmpty());
    EXPECT_THAT(names({"--limit", "0"}), testing::IsEmpty());
}

TEST_F(Show, Show_UnknownTable_ListsNearNamesOrAll) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Failure({"show", file, "concret"}), file + ": no table 'concret': did you mean 'Concrete'?");
    EXPECT_EQ(Failure({"show", file, "bolt"}),
              file + ": no table 'bolt': did you mean 'Bolts' or 'Bolt classes'?");
    EXPECT_EQ(
        Failure({"show", file, "glass"}),
        file +
            ": no table 'glass': there are Header, Properties, Steel, Concrete, Timber, Bolts, Bolt classes");
}

TEST_F(Show, Show_AsCsv_FollowsTheStandard) {
    const std::string csv = Output({"show", CopyExample("field-types.xml"), "every type", "--format", "csv"});
    EXPECT_THAT(
        csv, testing::StartsWith("name,boolean,integer,float,double,text,binary,typeless,with two blanks,"));
    EXPECT_THAT(csv,
                HasSubstr("\r\nmarkup & <signs>,true,1,1,1,\"a < b & c > d, \"\"quoted\"\" and 'single', "
                          "&amp; as text\",PCY+,\"<row name=\"\"x\"\" />\",\"a\tb\nc\r\nd\",1,"));
    EXPECT_THAT(
        csv,
        HasSubstr("\r\n  blanks around  ,true,1,1,1,  two  inner  blanks  ,ICA=, , leading,1,trailing ,"));
}

TEST_F(Show, Show_AsJson_KeepsTypes) {
    const json rows = ShowJson(CopyExample("field-types.xml"), "Every type");
    EXPECT_EQ(rows[0]["boolean"], true);
    EXPECT_EQ(rows[0]["integer"], 42);
    EXPECT_EQ(rows[0]["double"], 2.75);
    EXPECT_EQ(rows[0]["text"], "plain text");
    EXPECT_EQ(rows[0]["名前"], "鋼");
    EXPECT_EQ(rows[3]["integer"], 2147483647);
    EXPECT_EQ(rows[3]["double"], 1.79769313486231E+308);
}

TEST_F(Show, Show_CellsWithoutValueAsJson_AreNull) {
    const json row = ShowJson(MakeBolts(), "Bolts")[1];
    EXPECT_EQ(row["n"], nullptr);
    EXPECT_EQ(row["usual"], nullptr);
    EXPECT_EQ(row["As"], 58);
}

TEST_F(Show, Show_BinaryAsJson_IsBase64WithoutLineBreaks) {
    const std::string binary = ShowJson(CopyExample("field-types.xml"), "Every type")[3]["binary"];
    EXPECT_EQ(binary.size(), 344U);
    EXPECT_THAT(binary,
                testing::StartsWith("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEy"));
    EXPECT_EQ(binary.find_first_of(" \r\n"), std::string::npos);
}

TEST_F(Show, Show_ControlCharactersAsText_AreSpelledOut) {
    const std::string file = WriteChanged("control.xml", "S 235",
                                          "S&#10;2\xC2\x9B"
                                          "35\xE2\x80\xAE");
    EXPECT_THAT(Output({"show", file, "Steel", "--limit", "1"}), HasSubstr("S\\n2\\u{9b}35\\u{202e}"));
    EXPECT_EQ(ShowJson(file, "Steel")[0]["name"],
              "S\n2\xC2\x9B"
              "35\xE2\x80\xAE");
}

TEST_F(Show, Show_InALocaleWithCommas_KeepsPointsForPrograms) {
    if (!CanRunWithCommas()) {
        GTEST_SKIP() << "the locale is the user's here, and has no commas";
    }
    const std::string file = MakeBolts();
    const auto show = [&](const char* format) {
        return RunWithCommas({"show", file, "Bolts", "--format", format}).m_output;
    };
    EXPECT_THAT(show("text"), HasSubstr("M12   12,5  -84,27  120  false\n"));
    EXPECT_THAT(show("csv"), HasSubstr("M12,12.5,-84.27,120,false\r\n"));
    EXPECT_EQ(json::parse(show("json"))[2]["As"], -84.27);
}

TEST_F(Show, Show_DamagedTable_FailsAndOthersAreShown) {
    const std::string file =
        WriteChanged("damaged.xml", "<table name=\"Steel\">\n<row", "<table name=\"Steel\">x<row");
    EXPECT_EQ(Failure({"show", file, "Steel"}), file + ": Table 'Steel' has malformed rows");
    EXPECT_EQ(Failure({"show", file, "Steel", "--sequential"}), file + ": Table 'Steel' has malformed rows");
    EXPECT_EQ(Run({"show", file, "Timber"}).m_status, 0);
}

}  // namespace
