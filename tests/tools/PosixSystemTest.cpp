// What the command line says where a POSIX system refuses: rights of files, and a device that is always full.
#include <gtest/gtest.h>

#include "tools/ToolTest.h"

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

}  // namespace
