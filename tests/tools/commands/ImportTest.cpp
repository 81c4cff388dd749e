#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/ToolTest.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class Import : public quillet::test::ToolTest {
protected:
    void SetUp() override { m_file = CopyExample("materials.xml"); }

    std::string ImportText(const std::string& csv, std::vector<std::string> options = {}) const {
        return Output(Command(csv, std::move(options)));
    }

    // The message of an import that must fail and leave the catalog as it was, without the path of the CSV
    // file.
    std::string FailsUnchanged(const std::string& csv, std::vector<std::string> options = {}) const {
        const std::string before = Read("materials.xml");
        const std::string message = Failure(Command(csv, std::move(options)));
        EXPECT_EQ(Read("materials.xml"), before);
        EXPECT_THAT(message, StartsWith(Path("in.csv") + ":"));
        return message.substr(std::min(message.size(), Path("in.csv").size() + 1));
    }

    std::vector<std::string> Command(const std::string& csv, std::vector<std::string> options) const {
        std::vector<std::string> command = {"import", m_file, "New", Write("in.csv", csv)};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    std::vector<std::string> Types() const {
        std::vector<std::string> types;
        for (const json& field : json::parse(Output({"fields", m_file, "New", "--format", "json"}))) {
            types.push_back(field["type"]);
        }
        return types;
    }

    json Rows() const { return json::parse(Output({"show", m_file, "New", "--format", "json"})); }

    std::string m_file;
};

TEST_F(Import, Import_MixedColumns_InfersTheirTypes) {
    EXPECT_EQ(ImportText("name,n,x,ok,code,big,mixed\r\n"
                         "a,1,1.5,true,007,3000000000,1\r\n"
                         "b,-2,1e3,FALSE,008,4,x\r\n"),
              m_file + ": table 'New' imported, 7 fields, 2 rows\n");
    EXPECT_THAT(Types(), testing::ElementsAre("text", "long", "double", "boolean", "text", "double", "text"));
    const json rows = Rows();
    EXPECT_EQ(rows[0], json({{"name", "a"},
                             {"n", 1},
                             {"x", 1.5},
                             {"ok", true},
                             {"code", "007"},
                             {"big", 3000000000.0},
                             {"mixed", "1"}}));
    EXPECT_EQ(rows[1]["x"], 1000);
    EXPECT_EQ(rows[1]["ok"], false);
}

TEST_F(Import, Import_Result_PassesCheck) {
    ImportText("name,n\na,1\n");
    EXPECT_EQ(Output({"check", m_file}), m_file + ": ok\n");
}

TEST_F(Import, Import_QuotedValues_KeepMarksBlanksAndLineBreaks) {
    ImportText("a,\"b\"\n\" x \",\"line\r\nbreak \"\"quoted\"\"\"\n  y,\n");
    const json rows = Rows();
    EXPECT_EQ(rows[0], json({{"a", " x "}, {"b", "line\r\nbreak \"quoted\""}}));
    EXPECT_EQ(rows[1], json({{"a", "  y"}, {"b", ""}}));
}

TEST_F(Import, Import_ByteOrderMark_IsNotPartOfTheFirstName) {
    ImportText(
        "\xEF\xBB\xBF"
        "a,b\n1,2\n");
    EXPECT_EQ(Rows()[0], json({{"a", 1}, {"b", 2}}));
}

TEST_F(Import, Import_EmptyValues_LeaveLongAndBooleanWithoutValue) {
    ImportText("n,ok,t\n1,true,x\n,,\n");
    EXPECT_THAT(Types(), testing::ElementsAre("long", "boolean", "text"));
    EXPECT_EQ(Rows()[1], json({{"n", nullptr}, {"ok", nullptr}, {"t", ""}}));
}

TEST_F(Import, Import_HeaderLineOnly_MakesAnEmptyTable) {
    EXPECT_EQ(ImportText("a,b\n"), m_file + ": table 'New' imported, 2 fields, 0 rows\n");
    EXPECT_THAT(Types(), testing::ElementsAre("text", "text"));
    EXPECT_EQ(Rows(), json::array());
}

TEST_F(Import, Import_TypesGiven_OverrideTheInferredOnes) {
    ImportText("a,b,c,d,e_f,g\n1,2,1,QUI=,1,7\n",
               {"--type", "a=text", "--type", "B=DOUBLE", "--type", "c=boolean", "--type", "d=binary",
                "--type", "e_f=float", "--type", "g=integer"});
    EXPECT_THAT(Types(), testing::ElementsAre("text", "double", "boolean", "binary", "float", "long"));
    EXPECT_EQ(Rows()[0], json({{"a", "1"}, {"b", 2}, {"c", true}, {"d", "QUI="}, {"e_f", 1}, {"g", 7}}));
}

TEST_F(Import, Import_KeysGiven_AreMarked) {
    ImportText("a,b\n1,2\n", {"--key", "B"});
    const json fields = json::parse(Output({"fields", m_file, "New", "--format", "json"}));
    EXPECT_EQ(fields[0]["key"], false);
    EXPECT_EQ(fields[1]["key"], true);
}

TEST_F(Import, Import_ExistingTable_NeedsReplace) {
    const std::string csv = Write("in.csv", "name,x\nM8,1\n");
    const std::string before = Read("materials.xml");
    EXPECT_EQ(Failure({"import", m_file, "bolts", csv}),
              m_file + ": a table 'bolts' is already there: --replace replaces it");
    EXPECT_EQ(Read("materials.xml"), before);
    EXPECT_EQ(Output({"import", m_file, "bolts", csv, "--replace"}),
              m_file + ": table 'Bolts' imported, 2 fields, 1 row\n");
    EXPECT_EQ(Output({"show", m_file, "Bolts", "--format", "csv"}), "name,x\r\nM8,1\r\n");
    EXPECT_EQ(json::parse(Output({"fields", m_file, "Bolts", "--format", "json"}))[0]["key"], true);
    EXPECT_THAT(Output({"info", m_file}),
                HasSubstr("\n  Bolts         table       2     1\n  Bolt classes "));
}

TEST_F(Import, Import_IntoHeader_IsRefused) {
    const std::string csv = Write("in.csv", "a\n1\n");
    const std::string before = Read("materials.xml");
    EXPECT_EQ(Failure({"import", m_file, "Header", csv, "--replace"}),
              m_file + ": the table Header can't be imported: 'quillet set' sets its values");
    EXPECT_EQ(Read("materials.xml"), before);
}

TEST_F(Import, Import_BadCsv_NamesTheLineAndChangesNothing) {
    EXPECT_EQ(FailsUnchanged("a,b\n1,2\n3\n"), "3: 1 value, but the first line names 2 fields");
    EXPECT_EQ(FailsUnchanged("a,b\n\"x\ny\",2\n3,4,5\n"), "4: 3 values, but the first line names 2 fields");
    EXPECT_EQ(FailsUnchanged("a,b\n1,\"2\n3,4\n"),
              "2: a quoted value of the row that begins here is never closed");
    EXPECT_THAT(FailsUnchanged("a,b\n1,x\"2\n"), StartsWith("2: a quotation mark inside a value"));
    EXPECT_THAT(FailsUnchanged("a,b\n1,\"2\"x\n"), StartsWith("2: a quotation mark inside a value"));
    EXPECT_EQ(FailsUnchanged("a,b\n1,2\n3,\xFF\n"), "3: not UTF-8");
    EXPECT_EQ(FailsUnchanged("a,b\n1,x\x01\n"), "2: field 'b' holds U+0001, which a catalog can't carry");
    EXPECT_EQ(FailsUnchanged(""), " empty: the first line must name the fields");
}

TEST_F(Import, Import_HeadingsThatNoCatalogCanKeep_AreNamed) {
    const std::vector<std::string> keep = {"--names", "keep"};
    EXPECT_EQ(FailsUnchanged("a,,b\n1,2,3\n", keep), "1: field 2 has no name");
    EXPECT_EQ(FailsUnchanged("a,b,a\n1,2,3\n", keep), "1: two fields are called 'a'");
    EXPECT_THAT(FailsUnchanged("a,1st\n1,2\n", keep), StartsWith("1: a catalog can't have a field '1st': "));
    EXPECT_THAT(FailsUnchanged("a,b&c\n1,2\n", keep), StartsWith("1: a catalog can't have a field 'b&c': "));
    EXPECT_EQ(FailsUnchanged("a b,a_b\n1,2\n", keep),
              "1: a catalog can't tell the fields 'a b' and 'a_b' apart, it writes both as 'a_b'");
}

TEST_F(Import, Import_HeadingsThatDifferInCaseOnly_AreBothKeptWhenAsked) {
    ImportText("I,i,n\n1,2,3\n", {"--type", "i=double", "--type", "N=text", "--names", "keep"});
    EXPECT_THAT(Types(), testing::ElementsAre("long", "double", "text"));
    EXPECT_EQ(Rows()[0], json({{"I", 1}, {"i", 2}, {"n", "3"}}));
}

// A heading, and the name by which a query finds its values.
TEST_F(Import, Import_AnyHeadings_MakeNamesThatCanBeSavedAndQueried) {
    const std::vector<std::pair<const char*, const char*>> headings = {
        {"h [mm]", "h_mm"},   {"\"h, mm\"", "h_mm_2"}, {"h (mm)", "h_mm_3"}, {"G (kg/m)", "G_kg_m"},
        {"b [mm]", "b_mm"},   {"", "field_6"},         {"b", "b"},           {"B", "B_3"},
        {"a b", "[a b]"},     {"a_b", "a_b_2"},        {"1st", "_1st"},      {"b&c", "b_c"},
        {"A [cm²]", "A_cm2"}, {"名前", "名前"},        {"order", "[order]"}, {"b", "b_4"},
        {"% x*y=z", "x_y_z"}, {"''", "field_18"},      {"f.ck", "f.ck"},     {"]", "field_20"},
        {"B_2", "[B_2]"}};
    std::string first;
    std::string second;
    for (std::size_t i = 0; i < headings.size(); ++i) {
        first += (i == 0 ? "" : ",") + std::string(headings[i].first);
        second += (i == 0 ? "" : ",") + std::to_string(i);
    }
    const quillet::test::RunResult result = Run(Command(first + "\n" + second + "\n", {}));
    EXPECT_EQ(result.m_status, 0) << result.m_errors;
    EXPECT_THAT(Complaint(result.m_errors),
                StartsWith("warning: " + Path("in.csv") +
                           ": fields renamed: 'h [mm]' to 'h_mm', 'h, mm' to 'h_mm_2', 'h (mm)' to 'h_mm_3', "
                           "'G (kg/m)' to 'G_kg_m', "));
    EXPECT_EQ(Output({"check", m_file}), m_file + ": ok\n");
    for (std::size_t i = 0; i < headings.size(); ++i) {
        const std::string name = headings[i].second;
        const std::string value = std::to_string(i);
        const json rows = json::parse(
            Output({"query", m_file,
                    "select " + name + " from New where " + name + " = " + value + " order by " + name,
                    "--format", "json"}));
        ASSERT_EQ(rows.size(), 1U) << name;
        EXPECT_EQ(rows[0].begin().value(), i) << name;
    }
}

TEST_F(Import, Import_HeadingsThatCanStay_AreNotRenamed) {
    ImportText("name,h/b,a b,f.ck,Größe,select\n1,2,3,4,5,6\n");
    EXPECT_EQ(Rows()[0],
              json({{"name", 1}, {"h/b", 2}, {"a b", 3}, {"f.ck", 4}, {"Größe", 5}, {"select", 6}}));
}

TEST_F(Import, Import_OptionsForRenamedFields_TakeHeadingsAndNames) {
    const quillet::test::RunResult result =
        Run(Command("h [mm],G (kg/m)\n1,2\n", {"--type", "h [mm]=double", "--key", "g_kg_m"}));
    EXPECT_EQ(result.m_status, 0) << result.m_errors;
    const json fields = json::parse(Output({"fields", m_file, "New", "--format", "json"}));
    EXPECT_EQ(fields[0]["type"], "double");
    EXPECT_EQ(fields[1]["key"], true);
}

TEST_F(Import, Import_OtherDelimiters_AreNamedAndThenTaken) {
    const std::string all = " reads them, --delimiter , takes commas all the same";
    EXPECT_EQ(FailsUnchanged("name;h;G\nIPE 80;80;6\n"),
              "1: the values seem to be separated by semicolons: --delimiter ';'" + all);
    EXPECT_EQ(FailsUnchanged("name\th\nIPE 80\t80\n"),
              "1: the values seem to be separated by tabs: --delimiter tab" + all);
    EXPECT_THAT(FailsUnchanged("name|h\nIPE 80|80\n"), HasSubstr("--delimiter '|'"));
    EXPECT_THAT(FailsUnchanged("name;h, mm;G\nIPE 80;80,5;6\n"), HasSubstr("--delimiter ';'"))
        << "decimal commas, as many as there are in the headings";
    EXPECT_THAT(FailsUnchanged("name;h;G\nIPE 80;80,5;6\n"), HasSubstr("--delimiter ';'"));

    ImportText("name;h\n\"a;b\";80.5\n", {"--delimiter", ";"});
    EXPECT_EQ(Rows()[0], json({{"name", "a;b"}, {"h", 80.5}}));
    ImportText("name\th\nIPE, 80\t80\n", {"--delimiter", "tab", "--replace"});
    EXPECT_EQ(Rows()[0], json({{"name", "IPE, 80"}, {"h", 80}}));
}

TEST_F(Import, Import_CommaAskedFor_IsTaken) {
    const quillet::test::RunResult result = Run(Command("a;b\n1;2\n", {"--delimiter", ","}));
    EXPECT_EQ(result.m_status, 0) << result.m_errors;
    EXPECT_EQ(Rows()[0], json({{"a_b", "1;2"}}));
}

TEST_F(Import, Import_CommasBesideOtherMarks_AreTakenForWhatTheyAre) {
    ImportText("name,note\na,one; two\nb,three\n");
    EXPECT_EQ(Rows()[0], json({{"name", "a"}, {"note", "one; two"}}));
}

TEST_F(Import, Import_QuotedValuesBetweenOtherDelimiters_AreNamedAndThenTaken) {
    const std::string semicolons =
        "1: the values seem to be separated by semicolons: --delimiter ';' reads them";
    EXPECT_EQ(FailsUnchanged("\"name\";\"h\";\"G\"\r\n\"IPE 80\";\"80,5\";\"6\"\r\n"), semicolons);
    EXPECT_EQ(FailsUnchanged("name;\"h\"\nIPE 80;80\n"), semicolons);
    EXPECT_EQ(FailsUnchanged("\"name\";\"h, mm\"\n"), semicolons);
    EXPECT_EQ(FailsUnchanged("name;\"h;\nmm\"\nIPE 80;80\n"), semicolons);
    EXPECT_EQ(FailsUnchanged("\"name\"\t\"h\"\nIPE 80\t80\n"),
              "1: the values seem to be separated by tabs: --delimiter tab reads them");
    EXPECT_EQ(FailsUnchanged("\"name\"|\"h\"\nIPE 80|80\n"),
              "1: the values seem to be separated by bars: --delimiter '|' reads them");
    EXPECT_THAT(FailsUnchanged("a\"b;c\n1;2\n"), HasSubstr("a quotation mark inside a value"))
        << "no delimiter makes sense of it";
    EXPECT_THAT(Run(Command("\"name\";\"h\"\n", {"--delimiter", ","})).m_errors,
                HasSubstr("a quotation mark inside a value"))
        << "as it was asked for";

    ImportText("\"name\";\"h\"\n\"a;b\";\"80.5\"\n", {"--delimiter", ";"});
    EXPECT_EQ(Rows()[0], json({{"name", "a;b"}, {"h", 80.5}}));
    const quillet::test::RunResult single = Run(Command("\"name; h\"\n\"a;b\"\n", {"--replace"}));
    EXPECT_EQ(single.m_status, 0) << single.m_errors;
    EXPECT_EQ(Rows()[0], json({{"name_h", "a;b"}})) << "one quoted value is no row of two";
}

TEST_F(Import, Import_BadDelimiterOrRuleOfNames_IsBadUsage) {
    for (const char* delimiter : {"ab", "\"", "\n", "é"}) {
        EXPECT_THAT(UsageError({"import", m_file, "New", "in.csv", "--delimiter", delimiter}),
                    HasSubstr("neither 'tab' nor a single ASCII character"))
            << delimiter;
    }
    EXPECT_THAT(UsageError({"import", m_file, "New", "in.csv", "--names", "all"}),
                HasSubstr("'all' is neither keep nor safe"));
}

TEST_F(Import, Import_Utf16_SaysSo) {
    using namespace std::string_literals;
    for (const std::string& csv : {"\xFF\xFE"
                                   "a\0,\0b\0\n\0"s,
                                   "\xFE\xFF\0a\0,\0b\0\n"s, "a\0,\0b\0\n\0"s, "\0a\0,\0b\0\n"s}) {
        EXPECT_EQ(FailsUnchanged(csv), " UTF-16, not UTF-8: save it as UTF-8 and import that");
    }
}

TEST_F(Import, Import_NumbersThatTheFileWouldLose_StayTexts) {
    ImportText("x\n1.7976931348623157e308\n");
    EXPECT_THAT(Types(), testing::ElementsAre("text"));
    EXPECT_EQ(Rows()[0]["x"], "1.7976931348623157e308");
}

TEST_F(Import, Import_ValuesThatDoNotFitTheTypeGiven_AreNamed) {
    EXPECT_EQ(FailsUnchanged("a,b\n1,2\n3,x\n", {"--type", "b=long"}),
              "3: field 'b': 'x' is no value of the type long");
    EXPECT_EQ(FailsUnchanged("a\n2147483648\n", {"--type", "a=long"}),
              "2: field 'a': '2147483648' is no value of the type long");
    EXPECT_EQ(FailsUnchanged("a\n\"1,5\"\n", {"--type", "a=double"}),
              "2: field 'a': '1,5' is no value of the type double");
    EXPECT_EQ(FailsUnchanged("a\n1.7976931348623157e308\n", {"--type", "a=double"}),
              "2: field 'a': '1.7976931348623157e308' is no value of the type double")
        << "its 15 digits would be more than a double holds";
    EXPECT_EQ(FailsUnchanged("a\nyes\n", {"--type", "a=boolean"}),
              "2: field 'a': 'yes' is no value of the type boolean");
    EXPECT_EQ(FailsUnchanged("a\nQQ\n", {"--type", "a=binary"}),
              "2: field 'a': 'QQ' is no value of the type binary");
}

TEST_F(Import, Import_OptionsForUnknownFieldsOrTypes_AreRefused) {
    EXPECT_EQ(FailsUnchanged("length,b\n1,2\n", {"--type", "lenght=long"}),
              " no field 'lenght' for --type: did you mean 'length'?");
    EXPECT_EQ(FailsUnchanged("a,b\n1,2\n", {"--key", "other"}),
              " no field 'other' for --key: there are a, b");
    EXPECT_THAT(
        UsageError({"import", m_file, "New", Path("in.csv"), "--type", "a=number"}),
        HasSubstr(
            "'number' is not a type; the types are boolean, integer, long, float, double, text, binary"));
    EXPECT_THAT(UsageError({"import", m_file, "New", Path("in.csv"), "--type", "a"}),
                HasSubstr("FIELD=WORD"));
}

TEST_F(Import, Import_MissingFile_IsNamed) {
    const std::string missing = Path("none.csv");
    EXPECT_EQ(Failure({"import", m_file, "New", missing}), missing + ": " + WhyUnreadable(missing));
}

TEST_F(Import, Import_InALocaleWithCommas_ReadsPoints) {
    if (!CanRunWithCommas()) {
        GTEST_SKIP() << "the locale is the user's here, and has no commas";
    }
    const std::string csv = Write("in.csv", "x\n1.5\n-0.25\n");
    EXPECT_EQ(RunWithCommas({"import", m_file, "New", csv}).m_status, 0);
    EXPECT_EQ(Rows(), json::parse(R"([{"x": 1.5}, {"x": -0.25}])"));
    EXPECT_THAT(RunWithCommas({"show", m_file, "New"}).m_output, HasSubstr("-0,25"));
}

TEST_F(Import, Import_ManyRows_KeepsTheirOrder) {
    constexpr int Rows = 20000;
    std::string csv = "i,name\r\n";
    for (int i = 0; i < Rows; ++i) {
        csv += std::to_string(i) + ",row " + std::to_string(i) + "\r\n";
    }
    ImportText(csv);
    EXPECT_EQ(Output({"export", m_file, "New", "-"}), csv);
}

TEST_F(Import, Import_TableNamedLikeACommand_IsReachable) {
    Output({"import", m_file, "show", Write("in.csv", "a\n1\n")});
    EXPECT_EQ(Output({"show", m_file, "show", "--format", "csv"}), "a\r\n1\r\n");
}

}  // namespace
