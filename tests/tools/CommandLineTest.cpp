// What all commands share: options, help, exit statuses, missing files.
#include <gmock/gmock.h>

#include "support/RegexMatchers.h"
#include "support/ToolTest.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CommandLine : public quillet::test::ToolTest {};

TEST_F(CommandLine, Help_OfTheProgram_NamesEveryCommand) {
    const std::string help = Output({"--help"});
    for (const char* command :
         {"info", "fields", "show", "query", "check", "export", "new", "set", "import", "drop", "rename"}) {
        EXPECT_THAT(help, HasSubstr(std::string("\n  ") + command + " ")) << command;
    }
    for (const char* option : {"--format", "--sequential", "--log", "--version", "--help"}) {
        EXPECT_THAT(help, HasSubstr(option));
    }
    EXPECT_EQ(Output({"-h"}), help);
}

TEST_F(CommandLine, Help_OfACommand_TellsItsArguments) {
    EXPECT_THAT(Output({"show", "--help"}), HasSubstr("quillet show [OPTIONS] FILE TABLE"));
    EXPECT_THAT(Output({"import", "--help"}), HasSubstr("--type FIELD=WORD"));
}

TEST_F(CommandLine, Version_Asked_IsPrinted) {
    EXPECT_THAT(Output({"--version"}), quillet::test::MatchesPattern("quillet [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(CommandLine, NoCommand_IsBadUsage) {
    EXPECT_EQ(UsageError({}), "a command is missing; try 'quillet --help'");
    EXPECT_EQ(UsageError({"--format", "json"}), "a command is missing; try 'quillet --help'");
}

TEST_F(CommandLine, UnknownCommandOrOption_IsBadUsage) {
    EXPECT_EQ(UsageError({"shwo", "x.xml"}), "unknown command 'shwo'; try 'quillet --help'");
    EXPECT_EQ(UsageError({"--shwo"}), "unknown option '--shwo'; try 'quillet --help'");
    EXPECT_EQ(UsageError({"info", "x.xml", "--all"}), "unknown option '--all'; try 'quillet info --help'");
}

TEST_F(CommandLine, WrongNumberOfArguments_IsBadUsage) {
    EXPECT_EQ(UsageError({"show", "x.xml"}), "TABLE is required; try 'quillet show --help'");
    EXPECT_EQ(UsageError({"info", "x.xml", "y.xml"}),
              "too many arguments: 'y.xml'; try 'quillet info --help'");
}

TEST_F(CommandLine, BadValuesOfOptions_AreBadUsage) {
    EXPECT_THAT(UsageError({"info", "x.xml", "--format", "xml"}),
                HasSubstr("'xml' is not one of text, csv and json"));
    for (const char* number : {"-1", "x", "1.5", "99999999999999999999", ""}) {
        EXPECT_THAT(UsageError({"show", "x.xml", "t", "--limit", number}),
                    HasSubstr("is not a non-negative whole number"))
            << number;
    }
    EXPECT_THAT(UsageError({"show", "x.xml", "t", "--offset"}), HasSubstr("--offset"));
    EXPECT_THAT(UsageError({"info", ""}), HasSubstr("FILE: must not be empty"));
}

TEST_F(CommandLine, GlobalOptions_BeforeAndBehindTheCommand_DoTheSame) {
    const std::string file = CopyExample("materials.xml");
    const std::string expected = Output({"--format", "csv", "fields", file, "Steel"});
    EXPECT_THAT(expected, StartsWith("name,type,key,default\r\n"));
    EXPECT_EQ(Output({"fields", "--format", "csv", file, "Steel"}), expected);
    EXPECT_EQ(Output({"fields", file, "Steel", "--format=csv"}), expected);
}

TEST_F(CommandLine, UnreadableFile_SaysWhy) {
    for (const std::string& path : {Path("none.xml"), Path("none/none.xml"), Path("")}) {
        EXPECT_EQ(Failure({"info", path}), path + ": " + WhyUnreadable(path));
    }
}

TEST_F(CommandLine, ForeignEnding_SaysWhichWouldDo) {
    const std::string file = Write("table.txt", "x");
    EXPECT_EQ(Failure({"info", file}), file + ": no catalog: its name ends neither in .xml nor in .mdb");
}

TEST_F(CommandLine, FileOfTheOtherKind_IsToldByItsFirstBytes) {
    using namespace std::string_literals;
    for (const char* engine : {"Standard Jet DB", "Standard ACE DB"}) {
        const std::string access = Write("access.xml", "\0\1\0\0"s + engine + "\0\1\0\0\0"s);
        for (const std::vector<std::string>& command : {std::vector<std::string>{"info", access},
                                                        {"check", access},
                                                        {"set", access, "header", "title=x"}}) {
            EXPECT_EQ(Failure(command),
                      access + ": an Access file, though its name ends in .xml: call it .mdb");
        }
    }
    CopyExample("materials.xml");
    std::filesystem::copy_file(m_folder / "materials.xml", m_folder / "xml.mdb");
    const std::string xml = Path("xml.mdb");
    EXPECT_EQ(Failure({"info", xml}), xml + ": an XML file, though its name ends in .mdb: call it .xml");
    EXPECT_EQ(Failure({"convert", xml, Path("out.xml")}),
              xml + ": an XML file, though its name ends in .mdb: call it .xml");
    EXPECT_EQ(Failure({"convert", Path("materials.xml"), xml}),
              xml + ": an XML file, though its name ends in .mdb: call it .xml");
    EXPECT_EQ(Read("xml.mdb"), Read("materials.xml"));
}

TEST_F(CommandLine, EmptyAccessFile_IsNotTakenForAnXmlFile) {
    CopyExample("materials.xml");
    const std::string file = Write("materials.mdb", "");
    const quillet::test::RunResult result = Run({"info", file});
    EXPECT_EQ(result.m_status, 1);
    EXPECT_THAT(Complaint(result.m_errors), StartsWith(file + ": "));
}

TEST_F(CommandLine, DamagedXml_GivesTheLine) {
    const std::string file = Write("broken.xml", "<database>\n<header>\n</database>\n");
    EXPECT_THAT(Failure({"info", file}), StartsWith(file + ":3: "));
    EXPECT_THAT(Failure({"--sequential", "info", file}), StartsWith(file + ":3: "));
    EXPECT_THAT(Failure({"show", file, "t"}), StartsWith(file + ":3: "));
}

TEST_F(CommandLine, XmlOfAnotherKind_IsNoCatalog) {
    const std::string file = Write("other.xml", "<html />");
    EXPECT_EQ(Failure({"info", file}), file + ": no catalog: its header or its body is not complete");
    EXPECT_EQ(Failure({"--sequential", "info", file}),
              file +
                  ": no catalog that can be read sequentially: its header or its body is not found, or "
                  "not all of it; try it without --sequential");
}

TEST_F(CommandLine, SoundFileThatSequentialReadingCannotFollow_SaysToReadItAsAWhole) {
    CopyExample("materials.xml");
    const std::string text = Read("materials.xml");
    std::string wide = "\xFF\xFE";
    for (const char letter : text.substr(text.find("<database>"))) {
        wide += letter;
        wide += '\0';
    }
    const std::string file = Write("wide.xml", wide);
    EXPECT_EQ(Output({"check", file}), file + ": ok\n");
    const std::string why =
        file + ": it is in UTF-16 or UTF-32, which can only be read as a whole; try it without --sequential";
    EXPECT_EQ(Failure({"info", file, "--sequential"}), why);
    EXPECT_EQ(Failure({"show", file, "Steel", "--sequential"}), why);
    EXPECT_EQ(Failure({"query", file, "Steel", "--sequential"}), why);
    EXPECT_EQ(Failure({"set", file, "header", "title=x", "--sequential"}), why);
    EXPECT_EQ(Read("wide.xml"), wide);
    const quillet::test::RunResult checked = Run({"check", file, "--sequential"});
    EXPECT_EQ(checked.m_status, 1);
    EXPECT_EQ(checked.m_output, why + "\n");
}

TEST_F(CommandLine, Reading_WhateverTheCommand_LeavesTheFileAsItWas) {
    for (const char* name : {"materials.xml", "field-types.xml"}) {
        const std::string file = CopyExample(name);
        const std::string table = name == std::string("materials.xml") ? "Steel" : "Every type";
        const std::string before = Read(name);
        const auto written = std::filesystem::last_write_time(m_folder / name);
        const std::vector<std::vector<std::string>> commands = {
            {"info", file},
            {"fields", file, table},
            {"show", file, table},
            {"check", file},
            {"export", file, table, Path("out.csv"), "--replace"}};
        for (std::vector<std::string> command : commands) {
            Output(command);
            command.insert(command.begin(), "--sequential");
            Output(command);
        }
        EXPECT_EQ(Read(name), before);
        EXPECT_EQ(std::filesystem::last_write_time(m_folder / name), written);
    }
}

TEST_F(CommandLine, Reading_AFileWithFaults_WarnsAndLeavesItAsItWas) {
    const std::string file = WriteChanged("faulty.xml", R"(d="8")", R"(d="8" extra="1")");
    const std::string before = Read("faulty.xml");
    const quillet::test::RunResult result = Run({"show", file, "Steel", "--limit", "1"});
    EXPECT_EQ(result.m_status, 0);
    EXPECT_THAT(result.m_output, HasSubstr("S 235"));
    EXPECT_THAT(Complaint(result.m_errors), StartsWith("warning: " + file + ": Table 'Bolts' has rows"));
    EXPECT_EQ(Read("faulty.xml"), before);
}

TEST_F(CommandLine, Log_Asked_GoesToStandardError) {
    const std::string file = CopyExample("materials.xml");
    const quillet::test::RunResult result = Run({"fields", file, "Steel", "--log", "--format", "csv"});
    EXPECT_EQ(result.m_status, 0);
    EXPECT_THAT(result.m_errors, HasSubstr("Table 'Steel' created"));
    EXPECT_THAT(result.m_output, testing::Not(HasSubstr("created")));
}

TEST_F(CommandLine, Sequential_EveryTable_ReadsTheSame) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"info", file, "--sequential"}), Output({"info", file}));
    for (const char* table : {"Header", "Steel", "Bolt classes"}) {
        EXPECT_EQ(Output({"show", file, table, "--sequential"}), Output({"show", file, table})) << table;
    }
}

TEST_F(CommandLine, FileNameBeyondAscii_IsFound) {
    CopyExample("materials.xml");
    const std::filesystem::path path = m_folder / std::filesystem::path(u8"Träger 鋼 \U0001F600.xml");
    std::filesystem::copy_file(m_folder / "materials.xml", path);
    EXPECT_THAT(Output({"info", quillet::test::Utf8(path)}), HasSubstr("Träger 鋼 \U0001F600.xml"));
}

TEST_F(CommandLine, LongPath_IsReadAndWritten) {
    const std::filesystem::path folder = quillet::test::MakeDeepFolder(m_folder.Path(), 1000);
    const std::string file = quillet::test::Utf8(folder / "new.xml");
    EXPECT_EQ(Output({"new", file, "--header", "title=deep"}), file + ": created\n");
    EXPECT_EQ(Output({"set", file, "header", "title=changed"}), file + ": 1 value set in header\n");
    EXPECT_THAT(Output({"info", file}), HasSubstr("\n  title         changed\n"));
    EXPECT_EQ(Failure({"new", file}), file + ": already there, and not overwritten");
}

TEST_F(CommandLine, ArgumentsWithBlanksAndMarks_ComeAsTheyAre) {
    const std::string file = CopyExample("materials.xml");
    for (const char* name : {"a b", "\"quoted\"", "back\\slash", "at the end\\", "both\\\"", " ", "%PATH%",
                             "^&|<>", "'single'", "*?", "$HOME `x`"}) {
        EXPECT_THAT(Failure({"show", file, name}), StartsWith(file + ": no table '" + name + "': ")) << name;
    }
}

TEST_F(CommandLine, MessageAboutControlCharacters_SpellsThemOut) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_THAT(Failure({"show", file, "\x1B[2J"}), HasSubstr("no table '\\u{1b}[2J'"));
}

}  // namespace
