// new, set, drop and rename.
#include <gmock/gmock.h>

#include "support/RegexMatchers.h"
#include "support/ToolTest.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Edit : public quillet::test::ToolTest {
protected:
    // Runs commands on a file, each of which must fail and leave it unchanged. Returns the last message.
    std::string FailsUnchanged(const std::string& name, const std::vector<std::string>& command) const {
        const std::string before = Read(name);
        std::string message = Failure(command);
        EXPECT_EQ(Read(name), before);
        return message;
    }

    // A catalog whose table Bolts has two numbers that can't be written with 15 digits.
    std::string FileWithLostNumbers() const {
        const std::string file = CopyExample("materials.xml");
        Output({"import", file, "Bolts", Write("bolts.csv", "d\n4711.25\n4711.5\n"), "--replace"});
        std::string text = Read("materials.xml");
        for (const std::string number : {"4711.25", "4711.5"}) {
            text.replace(text.find("\"" + number) + 1, number.size(), "1.79769313486231570E+308");
        }
        return Write("lost.xml", text);
    }
};

TEST_F(Edit, New_WithValues_MakesACatalogThatHoldsThem) {
    const std::string file = Path("new.xml");
    EXPECT_EQ(
        Output({"new", file, "--header", "title=a=b", "--header", "VERSION=2", "--property", "units=mm"}),
        file + ": created\n");
    const std::string info = Output({"info", file});
    EXPECT_THAT(info, HasSubstr("\n  title         a=b\n"));
    EXPECT_THAT(info, HasSubstr("\n  version       2\n"));
    EXPECT_THAT(info, HasSubstr("\n  units        mm\n"));
    EXPECT_EQ(Output({"check", file}), file + ": ok\n");
}

TEST_F(Edit, New_ExistingFile_IsRefused) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(FailsUnchanged("materials.xml", {"new", file}), file + ": already there, and not overwritten");
}

TEST_F(Edit, New_BadNames_MakeNoFile) {
    EXPECT_THAT(Failure({"new", Path("new.mdb")}), HasSubstr("must end in .xml"));
    EXPECT_THAT(Failure({"new", Path("new.csv")}), HasSubstr("must end in .xml"));
    EXPECT_THAT(Failure({"new", Path("none/new.xml")}), HasSubstr(WhyNoTarget(Path("none/new.xml"))));
    EXPECT_THAT(UsageError({"new", Path("new.xml"), "--header", "title"}),
                HasSubstr("is not of the form KEY=VALUE"));
    EXPECT_THAT(UsageError({"new", Path("new.xml"), "--property", "=mm"}),
                HasSubstr("is not of the form KEY=VALUE"));
    EXPECT_EQ(Failure({"new", Path("new.xml"), "--property", "unit=mm"}),
              Path("new.xml") +
                  ": no field 'unit' in Properties: did you mean 'units', 'unit_long' or 'unit_sect'?");
    EXPECT_FALSE(Exists("new.xml"));
    EXPECT_FALSE(Exists("new.mdb"));
}

TEST_F(Edit, Set_KnownKeys_ChangesTheirValuesOnly) {
    const std::string file = CopyExample("materials.xml");
    const std::string tables = Output({"show", file, "Concrete"});
    EXPECT_EQ(Output({"set", file, "header", "title=Mine & yours <1>", "version="}),
              file + ": 2 values set in header\n");
    EXPECT_EQ(Output({"set", file, "properties", "material=Oak"}), file + ": 1 value set in properties\n");
    const std::string info = Output({"info", file});
    EXPECT_THAT(info, HasSubstr("\n  title         Mine & yours <1>\n"));
    EXPECT_THAT(info, HasSubstr("\n  version\n"));
    EXPECT_THAT(info, HasSubstr("\n  symbol        EN-MAT\n"));
    EXPECT_THAT(info, HasSubstr("\n  material     Oak\n"));
    EXPECT_EQ(Output({"show", file, "Concrete"}), tables);
}

TEST_F(Edit, Set_BadKeysOrValues_ChangeNothing) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(FailsUnchanged("materials.xml", {"set", file, "header", "version=2", "titel=x"}),
              file + ": no field 'titel' in Header: did you mean 'title'?");
    EXPECT_EQ(FailsUnchanged("materials.xml", {"set", file, "header", "title=\x01"}),
              file + ": the value of title holds U+0001, which a catalog can't carry");
    EXPECT_THAT(UsageError({"set", file, "footer", "title=x"}),
                HasSubstr("'footer' is neither header nor properties"));
    EXPECT_THAT(UsageError({"set", file, "header", "title"}), HasSubstr("is not of the form KEY=VALUE"));
    EXPECT_THAT(UsageError({"set", file, "header"}), HasSubstr("required"));
}

// Every command that changes a file rewrites it completely.
TEST_F(Edit, NumberThatIsNotReadBack_IsDestroyedWithLossyOnly) {
    const std::string file = FileWithLostNumbers();
    const std::string lost =
        file +
        ": not changed: table 'Bolts', row 1, field 'd': the number can't be carried by a text: "
        "'1.79769313486232E+308' is not read back (and 1 more)";
    const std::string read = Read("lost.xml");
    const std::vector<std::vector<std::string>> commands = {
        {"set", file, "header", "title=x"},
        {"rename", file, "Bolts", "Screws"},
        {"drop", file, "Steel"},
        {"import", file, "New", Write("in.csv", "a\n1\n")}};
    for (std::vector<std::string> command : commands) {
        SCOPED_TRACE(command.front());
        Write("lost.xml", read);
        EXPECT_EQ(FailsUnchanged("lost.xml", command), lost + "; --lossy goes on");

        command.emplace_back("--lossy");
        const quillet::test::RunResult result = Run(command);
        EXPECT_EQ(result.m_status, 0);
        EXPECT_THAT(result.m_errors, StartsWith("quillet: warning: " + file + ": table 'Bolts', row 1, "));
        EXPECT_THAT(Read("lost.xml"), HasSubstr("\"1.79769313486232E+308\""));
    }
}

TEST_F(Edit, NumberThatIsNotReadBack_MayBeDroppedOrReplaced) {
    const std::string csv = Write("in.csv", "d\n12\n");
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"drop", "Bolts"}, {"import", "Bolts", csv, "--replace"}}) {
        std::vector<std::string> arguments = command;
        arguments.insert(arguments.begin() + 1, FileWithLostNumbers());
        EXPECT_NE(Output(arguments), "");
    }
}

TEST_F(Edit, Set_FieldOfAnUnknownType_IsSavedWithNoneAndKeepsItsTexts) {
    const std::string file = WriteChanged("type.xml", "name=\"nu\" key=\"false\" type=\"5\"",
                                          "name=\"nu\" key=\"false\" type=\"99\"");
    const std::string rows = Output({"show", file, "Steel", "--format", "csv"});
    EXPECT_EQ(Run({"set", file, "header", "title=x"}).m_status, 0);
    EXPECT_THAT(Read("type.xml"), HasSubstr("name=\"nu\" key=\"false\" type=\"0\""));
    EXPECT_EQ(Output({"show", file, "Steel", "--format", "csv"}), rows);
}

TEST_F(Edit, Set_AsJson_PrintsNothing) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"set", file, "header", "title=x", "--format", "json"}), "");
}

TEST_F(Edit, Drop_Table_RemovesItAndKeepsTheOthers) {
    const std::string file = CopyExample("materials.xml");
    const std::string steel = Output({"show", file, "Steel"});
    EXPECT_EQ(Output({"drop", file, "timber"}), file + ": table 'Timber' dropped\n");
    EXPECT_THAT(Output({"info", file}), Not(HasSubstr("Timber")));
    EXPECT_EQ(Output({"show", file, "Steel"}), steel);
}

TEST_F(Edit, Drop_SequentialAccess_DoesTheSame) {
    const std::string file = CopyExample("materials.xml");
    Output({"drop", file, "Timber"});
    const std::string dropped = Read("materials.xml");
    CopyExample("materials.xml");
    Output({"drop", file, "Timber", "--sequential"});
    EXPECT_EQ(Read("materials.xml"), dropped);
}

TEST_F(Edit, Drop_UnknownOrNeededTable_ChangesNothing) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_THAT(FailsUnchanged("materials.xml", {"drop", file, "wood"}),
                StartsWith(file + ": no table 'wood': "));
    EXPECT_EQ(FailsUnchanged("materials.xml", {"drop", file, "HEADER"}),
              file + ": the table Header can't be dropped, every catalog has it");
    EXPECT_THAT(FailsUnchanged("materials.xml", {"drop", file, "Properties"}), HasSubstr("can't be dropped"));
}

TEST_F(Edit, Rename_Table_KeepsItsRowsAndItsPlace) {
    const std::string file = CopyExample("materials.xml");
    const std::string timber = Output({"show", file, "Timber"});
    EXPECT_EQ(Output({"rename", file, "TIMBER", "Wood, sawn"}),
              file + ": table 'Timber' renamed to 'Wood, sawn'\n");
    EXPECT_EQ(Output({"show", file, "Wood, sawn"}), timber);
    EXPECT_THAT(Output({"info", file}),
                quillet::test::ContainsPattern("\n  Concrete [^\n]*\n  Wood, sawn [^\n]*\n  Bolts "));
}

TEST_F(Edit, Rename_ToOtherCase_IsAllowed) {
    const std::string file = CopyExample("materials.xml");
    Output({"rename", file, "Timber", "TIMBER"});
    EXPECT_THAT(Output({"info", file}), HasSubstr("\n  TIMBER "));
}

TEST_F(Edit, Rename_UnknownTakenOrNeeded_ChangesNothing) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_THAT(FailsUnchanged("materials.xml", {"rename", file, "wood", "x"}),
                StartsWith(file + ": no table 'wood': "));
    EXPECT_EQ(FailsUnchanged("materials.xml", {"rename", file, "Timber", "steel"}),
              file + ": a table 'steel' is already there");
    EXPECT_THAT(FailsUnchanged("materials.xml", {"rename", file, "Timber", "header"}),
                HasSubstr("already there"));
    EXPECT_THAT(FailsUnchanged("materials.xml", {"rename", file, "Header", "x"}),
                HasSubstr("can't be renamed"));
    EXPECT_THAT(FailsUnchanged("materials.xml", {"rename", file, "Timber", "a\x02"}), HasSubstr("U+0002"));
    UsageError({"rename", file, "Timber", ""});
}

TEST_F(Edit, Edit_FileWithFaults_IsRefused) {
    const std::string file = WriteChanged("faulty.xml", R"(d="8")", R"(d="8" extra="1")");
    Write("in.csv", "a\n1\n");
    const std::vector<std::vector<std::string>> commands = {{"set", file, "header", "title=x"},
                                                            {"drop", file, "Timber"},
                                                            {"rename", file, "Timber", "Wood"},
                                                            {"import", file, "New", Path("in.csv")}};
    for (std::vector<std::string> command : commands) {
        EXPECT_THAT(FailsUnchanged("faulty.xml", command),
                    StartsWith(file + ": not changed, for it has faults"));
        command.emplace_back("--sequential");
        EXPECT_THAT(FailsUnchanged("faulty.xml", command),
                    StartsWith(file + ": not changed, for it has faults"));
    }
}

TEST_F(Edit, Edit_FileThatHoldsMoreThanIsRead_IsRefusedWithOneReason) {
    const std::string file =
        WriteChanged("more.xml", "</body>", "<data><table name=\"Z\"><row n=\"1\" /></table></data></body>");
    const std::string surplus = "A surplus <data> in <body> is left out";
    EXPECT_EQ(FailsUnchanged("more.xml", {"set", file, "header", "title=x"}),
              file + ": not changed, for it has faults that 'quillet check' lists: " + surplus);
    EXPECT_EQ(FailsUnchanged("more.xml", {"set", file, "header", "title=x", "--sequential"}),
              file + ": not saved: what was not read from it would be lost: " + surplus);
}

TEST_F(Edit, Edit_DamagedXml_IsRefused) {
    const std::string file = Write("broken.xml", "<database>\n<header>\n");
    EXPECT_THAT(FailsUnchanged("broken.xml", {"set", file, "header", "title=x"}), StartsWith(file + ":"));
}

TEST_F(Edit, Edit_MissingHeader_IsRefused) {
    const std::string file = WriteChangedThroughout("headless.xml", "\"Header\"", "\"Hidden\"");
    EXPECT_EQ(FailsUnchanged("headless.xml", {"drop", file, "Steel"}),
              file + ": not changed, for the tables Header and Properties are not the first ones");
}

TEST_F(Edit, Edit_WriteProtectedFile_IsRefused) {
    const std::string file = CopyExample("materials.xml");
    WriteProtect("materials.xml");
    const std::string before = Read("materials.xml");
    const quillet::test::RunResult result = RunAsOrdinaryUser({"drop", file, "Steel"});
    if (result.m_status == 126 || result.m_status == 127) {
        GTEST_SKIP() << "the program can't be run for another user here";
    }
    EXPECT_EQ(result.m_status, 1);
    EXPECT_EQ(Complaint(result.m_errors), file + ": the file is read-only");
    EXPECT_EQ(Read("materials.xml"), before);
}

TEST_F(Edit, Edit_AccessFile_IsRefused) {
    const std::string file = Write("old.mdb", "x");
    EXPECT_EQ(FailsUnchanged("old.mdb", {"set", file, "header", "title=x"}),
              file + ": only .xml catalogs can be changed");
}

}  // namespace
