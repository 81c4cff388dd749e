#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/ToolTest.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class Check : public quillet::test::ToolTest {
protected:
    // The output of check for a faulty file, which must stay unchanged.
    std::string Findings(const std::string& name, const std::vector<std::string>& options = {}) const {
        const std::string before = Read(name);
        std::vector<std::string> arguments = {"check", Path(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const quillet::test::RunResult result = Run(arguments);
        EXPECT_EQ(result.m_status, 1);
        EXPECT_THAT(Complaint(result.m_errors), StartsWith(Path(name) + ": "));
        EXPECT_EQ(Read(name), before);
        return result.m_output;
    }
};

TEST_F(Check, Check_ExampleCatalogs_AreSound) {
    for (const char* name : {"european-steel.xml", "materials.xml", "field-types.xml"}) {
        const std::string file = CopyExample(name);
        EXPECT_EQ(Output({"check", file}), file + ": ok\n");
        EXPECT_EQ(Output({"check", file, "--sequential"}), file + ": ok\n");
    }
}

TEST_F(Check, Check_FieldsUnderWhichNoRowCanBeSaved_AreNamedWithBothNames) {
    const std::string before = "<field name=\"nu\"";
    const std::string file =
        WriteChanged("names.xml", before,
                     "<field name=\"x(mm)\" key=\"false\" type=\"8\" required=\"0\" />\n"
                     "<field name=\"x_LP_mm_RP_\" key=\"false\" type=\"8\" required=\"0\" />\n"
                     "<field name=\"a&amp;b\" key=\"false\" type=\"8\" required=\"0\" />\n" +
                         before);
    const std::string findings = Findings("names.xml");
    EXPECT_THAT(findings, HasSubstr("field 'x_LP_mm_RP_': rows can't be saved: the fields 'x(mm)' and "
                                    "'x_LP_mm_RP_' would both be saved as 'x_LP_mm_RP_'"));
    EXPECT_THAT(findings, HasSubstr("field 'a&b': rows can't be saved: the field 'a&b' would be saved as "
                                    "'a&b', which is no name in XML"));
}

TEST_F(Check, Check_SoundFileForPrograms_ListsNothing) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"check", file, "--format", "json"}), "[]\n");
    EXPECT_EQ(Output({"check", file, "--format", "csv"}), "file,line,table,row,field,message\r\n");
}

TEST_F(Check, Check_BrokenXml_GivesTheLine) {
    const std::string file = WriteChanged("broken.xml", "</header>", "</haeder>");
    const std::string text = Read("broken.xml");
    const auto line =
        std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(text.find("</haeder>")), '\n') +
        1;
    EXPECT_THAT(Findings("broken.xml"), StartsWith(file + ":" + std::to_string(line) + ": "));
    const json findings = json::parse(Findings("broken.xml", {"--format", "json"}));
    EXPECT_EQ(findings[0]["line"], line);
    EXPECT_EQ(findings[0]["table"], nullptr);
}

TEST_F(Check, Check_InvalidUtf8_GivesTheLine) {
    const std::string file = Write("latin.xml", "<database>\n<header a='\xE4' />\n</database>");
    EXPECT_EQ(Findings("latin.xml"), file + ":2: Invalid UTF-8\n");
}

TEST_F(Check, Check_XmlOfAnotherKind_SaysWhatIsMissing) {
    const std::string other = Write("other.xml", "<html />");
    EXPECT_EQ(Findings("other.xml"), other + ": no catalog: there is no <database> element\n");
    Write("headless.xml", "<database />");
    EXPECT_THAT(Findings("headless.xml"),
                HasSubstr(": no catalog: its header or its body is not complete\n"));
}

TEST_F(Check, Check_MissingHeaderTable_IsNamed) {
    const std::string file = WriteChangedThroughout("changed.xml", "\"Properties\"", "\"Others\"");
    EXPECT_EQ(Findings("changed.xml"), file + ": the header has no table Properties\n");
}

TEST_F(Check, Check_RowsWithOtherNumbersOfValues_AreCounted) {
    const std::string file = WriteChanged("misfit.xml", R"(d="8")", R"(d="8" extra="1")");
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--sequential"}}) {
        EXPECT_THAT(
            Findings("misfit.xml", options),
            HasSubstr(
                file +
                ": Table 'Bolts' has rows whose values do not match its 7 fields: 1, the first is row 1\n"));
    }
}

TEST_F(Check, Check_TextInANumberColumn_GivesTableRowAndField) {
    const std::string file = WriteChanged("typed.xml", R"(d="10")", R"(d="thick")");
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--sequential"}}) {
        EXPECT_EQ(Findings("typed.xml", options),
                  file + ": table 'Bolts', row 2, field 'd': 'thick' is no value of the type double\n");
    }
    const json finding = json::parse(Findings("typed.xml", {"--format", "json"}))[0];
    EXPECT_EQ(finding["table"], "Bolts");
    EXPECT_EQ(finding["row"], 2);
    EXPECT_EQ(finding["field"], "d");
    EXPECT_EQ(finding["line"], nullptr);
}

TEST_F(Check, Check_NumberThatItsTextCannotCarry_IsNamed) {
    const std::string file = WriteChanged("large.xml", R"(d="10")", R"(d="1.7976931348623157e308")");
    EXPECT_EQ(Findings("large.xml"),
              file +
                  ": table 'Bolts', row 2, field 'd': the number can't be carried by a text: "
                  "'1.79769313486232E+308' is not read back\n");
    // Anything less, by however little, is only rounded.
    for (const char* number : {"1.79769313486231e308", "-2.2250738585072014e-308", "4.9406564584124654e-324",
                               "0.1234567890123456789"}) {
        EXPECT_EQ(
            Output({"check", WriteChanged("small.xml", R"(d="10")", "d=\"" + std::string(number) + "\"")}),
            Path("small.xml") + ": ok\n")
            << number;
    }
}

TEST_F(Check, Check_DuplicateTable_IsNamed) {
    WriteChanged("twice.xml", "<table name=\"Timber\">", "<table name=\"concrete\">");
    EXPECT_THAT(Findings("twice.xml"), HasSubstr("'concrete' already in database"));
}

TEST_F(Check, Check_DuplicateField_IsNamed) {
    const std::string file = WriteChanged("twice.xml", "<field name=\"fu_40\"", "<field name=\"fy_40\"");
    EXPECT_EQ(Findings("twice.xml"), file + ": table 'Steel', field 'fy_40': two fields have this name\n");
}

TEST_F(Check, Check_UnknownFieldType_IsNamed) {
    const std::string file = WriteChanged("type.xml", "name=\"nu\" key=\"false\" type=\"5\"",
                                          "name=\"nu\" key=\"false\" type=\"99\"");
    EXPECT_EQ(Findings("type.xml"),
              file + ": table 'Steel', field 'nu': there is no type '99', its values are read as text\n");
}

TEST_F(Check, Check_MalformedRows_AreNamed) {
    const std::string file =
        WriteChanged("rows.xml", "<table name=\"Steel\">\n<row", "<table name=\"Steel\">x<row");
    EXPECT_EQ(Findings("rows.xml"), file + ": Table 'Steel' has malformed rows\n");
    EXPECT_EQ(Findings("rows.xml", {"--sequential"}), file + ": Table 'Steel' has malformed rows\n");
}

TEST_F(Check, Check_TableWithoutRowsElement_IsNamed) {
    CopyExample("materials.xml");
    std::string text = Read("materials.xml");
    const std::size_t rows = text.rfind("<table name=\"Bolt classes\">");
    text.erase(rows, text.find("</table>", rows) + 8 - rows);
    const std::string file = Write("cut.xml", text);
    EXPECT_EQ(Findings("cut.xml"), file + ": table 'Bolt classes': its rows are missing from the file\n");
    EXPECT_EQ(Findings("cut.xml", {"--sequential"}), Findings("cut.xml"));
}

TEST_F(Check, Check_SeveralFaults_AreCounted) {
    const std::string file = WriteChanged("faulty.xml", R"(d="10")", R"(d="thick" extra="")");
    const quillet::test::RunResult result = Run({"check", file});
    const auto lines = std::count(result.m_output.begin(), result.m_output.end(), '\n');
    EXPECT_GT(lines, 1);
    EXPECT_EQ(Complaint(result.m_errors), file + ": " + std::to_string(lines) + " faults");
}

// The next change of such a catalog would drop these parts.
TEST_F(Check, Check_WhatACatalogHasOnceAndStandsTwice_IsNamed) {
    const std::string more = "<data><table name='Bolts'><row name='more' /></table></data>";
    for (const char* end : {"</body>", "</header>"}) {
        const std::string file = WriteChanged("twice.xml", end, more + end);
        for (const std::vector<std::string>& options :
             {std::vector<std::string>{}, std::vector<std::string>{"--sequential"}}) {
            EXPECT_THAT(Findings("twice.xml", options),
                        HasSubstr(options.empty() ? ": A surplus <data> in <" : ": an element <data> in <"));
        }
        EXPECT_EQ(Run({"set", file, "header", "title=x"}).m_status, 1);
    }
    WriteChanged("twice.xml", "</database>", "<body><structure />" + more + "</body></database>");
    EXPECT_THAT(Findings("twice.xml"), HasSubstr(": A surplus <body> in <database> is left out"));
    WriteChanged("twice.xml", "<database>", "<database><header /></database><database>");
    EXPECT_THAT(Findings("twice.xml"), HasSubstr(": there is more than one element at the top"));
}

TEST_F(Check, Check_ElementsThatNoCatalogHas_AreNamed) {
    WriteChanged("more.xml", "</database>", "<remarks>text</remarks></database>");
    EXPECT_THAT(Findings("more.xml"),
                HasSubstr(": an element <remarks> in <database> that no catalog has there\n"));
    WriteChanged("more.xml", "</body>", "text</body>");
    EXPECT_THAT(Findings("more.xml"), HasSubstr(": text in <body> that no catalog has there\n"));
    const std::string text = Read("more.xml");
    const std::size_t row = text.find("/>", text.rfind("<row"));
    Write("more.xml", text.substr(0, row) + "><remark /></row>" + text.substr(row + 2));
    EXPECT_THAT(Findings("more.xml"),
                HasSubstr(": the row holds elements or text, which no catalog has there\n"));
}

TEST_F(Check, Check_AttributesThatNoCatalogHas_AreNamed) {
    WriteChanged("more.xml", "<database>", "<database owner=\"me\">");
    EXPECT_THAT(Findings("more.xml"), HasSubstr(": an attribute 'owner' of <database> that no catalog has"));
    WriteChanged("more.xml", "<body>", "<body owner=\"me\">");
    EXPECT_THAT(Findings("more.xml"),
                HasSubstr(": an attribute 'owner' of <body> that no catalog has there\n"));
    WriteChanged("more.xml", "<table name=\"Steel\">", "<table name=\"Steel\" color=\"red\">");
    EXPECT_THAT(Findings("more.xml"),
                HasSubstr(": an attribute 'color' of <table> that no catalog has there\n"));
}

TEST_F(Check, Check_WhatAFieldHoldsBesideItsAttributes_IsNamed) {
    const std::string text = Read(std::filesystem::path(CopyExample("materials.xml")).filename().string());
    const std::size_t end = text.find("/>", text.find("<field"));
    Write("field.xml", text.substr(0, end) + " unit=\"mm\"><remark /></field>" + text.substr(end + 2));
    EXPECT_THAT(Findings("field.xml"),
                HasSubstr("the field holds elements or text, which no catalog has there"));
    EXPECT_THAT(Findings("field.xml"), HasSubstr("an attribute 'unit' of <field> that no catalog has there"));
}

// Nothing is lost from such a file, and everything reported about it is true.
TEST_F(Check, Check_SoundFileThatSequentialReadingCannotFollow_HasOneFault) {
    const std::string hint = "; try it without --sequential\n";
    const std::string incomplete =
        ": no catalog that can be read sequentially: its header or its body is not found, or not all of it" +
        hint;
    const std::string unreached = ": sequential reading did not reach the rows of ";
    for (const auto& [place, why] :
         {std::pair("<header>", incomplete), std::pair("<body>", incomplete),
          std::pair("<table name=\"Steel\">\n<row",
                    unreached + "'Steel', 'Concrete', 'Timber', 'Bolts', 'Bolt classes'" + hint)}) {
        const std::string file = WriteChanged("remark.xml", place, std::string("<!-- c -->") + place);
        EXPECT_EQ(Output({"check", file}), file + ": ok\n") << place;
        EXPECT_EQ(Findings("remark.xml", {"--sequential"}), file + why) << place;
    }
    const std::string sound = WriteChanged("remark.xml", "</database>", "<!-- c --></database>");
    EXPECT_EQ(Output({"check", sound, "--sequential"}), sound + ": ok\n") << "after all that is read";
    const std::string comment = "<table name=\"Bolt classes\">\n<row";
    const std::string file = WriteChanged("remark.xml", comment, "<!-- c -->" + comment);
    const std::string why = unreached + "'Bolt classes'" + hint;
    EXPECT_EQ(Findings("remark.xml", {"--sequential"}), file + why);
    std::string text = Read("remark.xml");
    text.replace(text.find(R"(d="10")"), 6, R"(d="thick")");
    Write("remark.xml", text);
    EXPECT_EQ(
        Findings("remark.xml", {"--sequential"}),
        file + why + file + ": table 'Bolts', row 2, field 'd': 'thick' is no value of the type double\n");
}

TEST_F(Check, Check_Sequentially_TellsWhatASaveWouldRefuse) {
    WriteChanged("ghost.xml", "</data>\n</body>",
                 "<table name='Ghost'><row a='1' /></table></data>\n</body>");
    EXPECT_THAT(Findings("ghost.xml", {"--sequential"}),
                HasSubstr("Table 'Ghost' has rows but no structure"));
}

}  // namespace
