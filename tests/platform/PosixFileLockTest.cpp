// POSIX file locks: on the file itself, held by a process that may be killed.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "support/AsOrdinaryUser.h"
#include "support/FileLocking.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::FileLock;
using std::chrono::milliseconds;

class PosixFileLock : public FileLocking {};

TEST_F(PosixFileLock, Take_ByAnyLink_IsTheLockOfTheFile) {
    fs::create_directory(m_folder / "links");
    fs::create_symlink("../text", m_folder / "links/soft");
    fs::create_hard_link(m_folder / "text", m_folder / "links/hard");
    const auto lock = Take(At("links/soft"));
    ASSERT_NE(lock, nullptr) << m_refusal.m_why;
    for (const char* name : {"text", "links/soft", "links/hard"}) {
        EXPECT_EQ(Take(At(name)), nullptr) << name;
        EXPECT_TRUE(m_refusal.m_isHeld) << name;
    }
}

TEST_F(PosixFileLock, Take_HolderIsKilled_LockIsFree) {
    int held[2];
    ASSERT_EQ(pipe(held), 0);
    const pid_t holder = fork();
    if (holder == 0) {
        FileLock::Refusal refusal;
        const auto lock = FileLock::Take(At("text"), milliseconds(0), refusal);
        const bool good = lock != nullptr;
        static_cast<void>(!write(held[1], &good, 1));
        pause();
    }
    char good = 0;
    ASSERT_EQ(read(held[0], &good, 1), 1);
    ASSERT_EQ(good, 1);
    EXPECT_EQ(Take(At("text")), nullptr);
    if (fs::exists("/proc/locks")) {
        EXPECT_EQ(m_refusal.m_holder, static_cast<std::uint64_t>(holder));
    }
    ASSERT_EQ(kill(holder, SIGKILL), 0);
    EXPECT_NE(Take(At("text"), milliseconds(60'000)), nullptr);
    ASSERT_EQ(waitpid(holder, nullptr, 0), holder);
    close(held[0]);
    close(held[1]);
}

TEST_F(PosixFileLock, Take_FileThatMayNotBeWritten_SaysWhy) {
    chmod(At("text").c_str(), 0444);
    const AsOrdinaryUser user;
    EXPECT_EQ(Take(At("text")), nullptr);
    EXPECT_FALSE(m_refusal.m_isHeld);
    EXPECT_EQ(m_refusal.m_why, "Permission denied");
}

TEST_F(PosixFileLock, Take_FolderThatTakesNoNewFile_NeedsNone) {
    chmod(At("text").c_str(), 0666);
    chmod(m_folder.Path().c_str(), 0555);
    {
        const AsOrdinaryUser user;
        EXPECT_NE(Take(At("text")), nullptr) << m_refusal.m_why;
    }
    chmod(m_folder.Path().c_str(), 0755);
}

TEST_F(PosixFileLock, Take_Pipe_IsRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0666), 0);
    EXPECT_EQ(Take(At("pipe"), milliseconds(60'000)), nullptr);
    EXPECT_FALSE(m_refusal.m_isHeld);
    EXPECT_NE(m_refusal.m_why, "");
}

}  // namespace
}  // namespace quillet::test
