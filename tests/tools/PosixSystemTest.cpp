// The command line's messages for failures of a POSIX system: file permissions, and a device that is always
// full.
#include <gmock/gmock.h>

#include "support/ToolTest.h"

namespace {

class PosixSystem : public quillet::test::ToolTest {};

TEST_F(PosixSystem, ForbiddenFile_SaysSo) {
    const std::string file = CopyExample("materials.xml");
    std::filesystem::permissions(m_folder.Path(), std::filesystem::perms::all);
    std::filesystem::permissions(m_folder / "materials.xml", std::filesystem::perms::none);
    const quillet::test::RunResult result = RunAsOrdinaryUser({"info", file});
    if (result.m_status == 126 || result.m_status == 127) {
        GTEST_SKIP() << "the program can't be run for another user here";
    }
    EXPECT_EQ(Complaint(result.m_errors), file + ": Permission denied");
    EXPECT_EQ(result.m_status, 1);
}

TEST_F(PosixSystem, Reasons_AreTheSystemsWords) {
    EXPECT_EQ(Failure({"info", Path("none.xml")}), Path("none.xml") + ": No such file or directory");
    EXPECT_EQ(Failure({"info", Path("")}), Path("") + ": Is a directory");
}

TEST_F(PosixSystem, Show_OnAFullDisk_Fails) {
    quillet::test::RunConditions conditions;
    conditions.m_outputTo = "/dev/full";
    if (!std::filesystem::exists(conditions.m_outputTo)) {
        GTEST_SKIP() << "there is no device that is always full";
    }
    const quillet::test::RunResult result =
        RunProgram({"show", CopyExample("materials.xml"), "Steel"}, m_folder, conditions);
    EXPECT_EQ(result.m_status, 1);
    EXPECT_EQ(Complaint(result.m_errors), "standard output: No space left on device");
}

TEST_F(PosixSystem, Help_OnAFullDisk_Fails) {
    quillet::test::RunConditions conditions;
    conditions.m_outputTo = "/dev/full";
    if (!std::filesystem::exists(conditions.m_outputTo)) {
        GTEST_SKIP() << "there is no device that is always full";
    }
    const quillet::test::RunResult result = RunProgram({"--help"}, m_folder, conditions);
    EXPECT_EQ(result.m_status, 1);
    EXPECT_EQ(Complaint(result.m_errors), "standard output: No space left on device");
}

// Runs the program with an address space of that many kilobytes.
class PosixMemory : public quillet::test::ToolTest {
protected:
    quillet::test::RunResult RunWithin(std::size_t kilobytes,
                                       const std::vector<std::string>& arguments) const {
        std::string line = "ulimit -c 0; ulimit -v " + std::to_string(kilobytes) + "; exec " +
                           quillet::test::QuotedArgument(QUILLET_PROGRAM);
        for (const std::string& argument : arguments) {
            line += " " + quillet::test::QuotedArgument(argument);
        }
        line += " </dev/null >" + quillet::test::QuotedArgument(Path("stdout")) + " 2>" +
                quillet::test::QuotedArgument(Path("stderr"));
        const int status = std::system(line.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Read("stdout"), Read("stderr")};
    }

    // The system ends a program in this way if there is no memory for its libraries.
    static bool IsLoaded(const quillet::test::RunResult& result) { return result.m_status != 127; }

    // The approximate memory that the system needs to load the program; 0 if more than a gigabyte.
    std::size_t KilobytesToLoad() const {
        std::size_t none = 0;
        std::size_t enough = std::size_t{1024} * 1024;
        if (!IsLoaded(RunWithin(enough, {"--version"})) || RunWithin(enough, {"--version"}).m_status != 0) {
            return 0;
        }
        while (enough - none > 16) {
            const std::size_t middle = (none + enough) / 2;
            (IsLoaded(RunWithin(middle, {"--version"})) ? enough : none) = middle;
        }
        return enough;
    }

    // From only enough for the error message to enough for the command.
    void ExpectAnswerOrLine(const std::vector<std::string>& arguments, std::size_t step) const {
        const std::size_t loaded = KilobytesToLoad();
        if (loaded == 0) {
            GTEST_SKIP() << "the program takes more than a gigabyte to load";
        }
        const std::string right = Run(arguments).m_output;
        std::size_t lines = 0;
        for (std::size_t kilobytes = loaded;; kilobytes += step) {
            const quillet::test::RunResult result = RunWithin(kilobytes, arguments);
            if (!IsLoaded(result)) {
                continue;
            }
            if (result.m_status == 0) {
                EXPECT_EQ(result.m_output, right) << kilobytes;
                break;
            }
            ++lines;
            ASSERT_EQ(result.m_status, 1) << kilobytes << ": " << result.m_errors;
            ASSERT_EQ(Complaint(result.m_errors), "out of memory") << kilobytes;
        }
        EXPECT_GT(lines, 0U);
    }
};

TEST_F(PosixMemory, Version_InLittleMemory_IsPrintedOrTheLine) {
    ExpectAnswerOrLine({"--version"}, 16);
}

TEST_F(PosixMemory, Query_InLittleMemory_IsAnsweredOrTheLine) {
    const std::string file = Path("large.xml");
    std::string csv = "name,h,b\n";
    for (int i = 0; i < 20000; ++i) {
        csv += "row " + std::to_string(i) + "," + std::to_string(i) + ".5," + std::to_string(i % 100) + "\n";
    }
    Output({"new", file});
    Output({"import", file, "Large", Write("in.csv", csv)});
    const std::string before = Read("large.xml");
    ExpectAnswerOrLine({"query", file, "select name, h from Large where b > 98 order by name"}, 1024);
    EXPECT_EQ(Read("large.xml"), before);
}

}  // namespace
