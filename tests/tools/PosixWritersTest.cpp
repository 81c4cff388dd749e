// POSIX locks of catalogs: through links, and where the system supports none.
#include <gmock/gmock.h>
#if defined(__linux__)
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "Quillet/platform/FileLock.h"
#include "support/ToolTest.h"

namespace {

using testing::HasSubstr;

class PosixWriters : public quillet::test::ToolTest {};

TEST_F(PosixWriters, Lock_OfTheFileBehindALink_KeepsWritersOut) {
    const std::string file = CopyExample("materials.xml");
    std::filesystem::create_symlink("materials.xml", m_folder / "link.xml");
    quillet::platform::FileLock::Refusal refusal;
    const auto lock = quillet::platform::FileLock::Take(file, std::chrono::milliseconds(0), refusal);
    ASSERT_NE(lock, nullptr);
    EXPECT_THAT(Failure({"drop", Path("link.xml"), "Steel", "--no-wait"}), HasSubstr(": locked by "));
}

#if defined(__linux__)

// From now on, the process and the programs that it runs can't lock files.
bool RefuseLocks() {
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_flock, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOLCK),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{4, rules};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST_F(PosixWriters, WhereNoLockCanBeMade_ALineSaysSoAndTheChangeIsMade) {
    const std::string file = CopyExample("materials.xml");
    const pid_t child = fork();
    if (child == 0) {
        if (!RefuseLocks()) {
            _exit(126);
        }
        const quillet::test::RunResult result = Run({"drop", file, "Steel"});
        const std::string line = "quillet: warning: " + file + ": can't be locked: No locks available; " +
                                 "what others change in it meanwhile makes the save fail\n";
        _exit(result.m_status != 0 ? 1 : result.m_errors != line ? 2 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 126) {
        GTEST_SKIP() << "the system filters no calls";
    }
    EXPECT_EQ(status, 0) << Read("stderr");
    EXPECT_THAT(Output({"info", file}), testing::Not(HasSubstr("Steel")));
}

#endif

}  // namespace
