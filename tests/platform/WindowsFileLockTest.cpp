// Windows file locks: in a separate file, which disappears with its holder.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "support/FileLocking.h"

namespace quillet::test {
namespace {

using platform::FileLock;
using std::chrono::milliseconds;

class WindowsFileLock : public FileLocking {};

TEST_F(WindowsFileLock, Take_HeldFile_NamesTheProcess) {
    const auto lock = Take(At("text"));
    ASSERT_NE(lock, nullptr) << m_refusal.m_why;
    for (const char* name : {"text", "TEXT"}) {
        EXPECT_EQ(Take(At(name)), nullptr);
        EXPECT_EQ(m_refusal.m_holder, GetCurrentProcessId());
    }
}

TEST_F(WindowsFileLock, Take_LockLeftByACrashOfTheSystem_IsFreeAndGoes) {
    std::filesystem::path name;
    {
        const auto lock = Take(At("text"));
        for (const std::filesystem::path& entry : m_folder.Names()) {
            name = entry == "text" ? name : entry;
        }
    }
    ASSERT_FALSE(name.empty());
    EXPECT_EQ(m_folder.Names().size(), 1U);
    WriteBytes(m_folder / name, "12345");
    EXPECT_NE(Take(At("text")), nullptr) << m_refusal.m_why;
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

}  // namespace
}  // namespace quillet::test
