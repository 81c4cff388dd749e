// One writer at a time.
#include "Quillet/platform/FileLock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "Quillet/platform/File.h"
#include "support/FileLocking.h"

namespace quillet::test {
namespace {

using platform::FileLock;
using std::chrono::milliseconds;

class FileLockTest : public FileLocking {};

TEST_F(FileLockTest, Take_FreeFile_IsHeldUntilItIsLetGo) {
    auto lock = Take(At("text"));
    ASSERT_NE(lock, nullptr) << m_refusal.m_why;
    EXPECT_EQ(Take(At("text")), nullptr);
    EXPECT_TRUE(m_refusal.m_isHeld);
    lock.reset();
    EXPECT_NE(Take(At("text")), nullptr);
    EXPECT_EQ(m_folder.Names().size(), 1U) << "nothing is left beside the file";
}

TEST_F(FileLockTest, Take_HeldFile_HindersNeitherReadingNorReplacing) {
    auto lock = Take(At("text"));
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(platform::ReadWholeFile(At("text")), "contents");
    EXPECT_TRUE(platform::CanWriteFile(At("text")));
    const auto file = platform::AtomicFile::Create(At("text"));
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write("new"));
    EXPECT_TRUE(file->Commit());
    lock.reset();
    EXPECT_EQ(ReadBytes(m_folder / "text"), "new");
    EXPECT_EQ(m_folder.Names().size(), 1U);
    EXPECT_NE(Take(At("text")), nullptr) << "the new file is free";
}

TEST_F(FileLockTest, Take_OtherFile_IsFree) {
    WriteBytes(m_folder / "other", "contents");
    const auto lock = Take(At("text"));
    EXPECT_NE(Take(At("other")), nullptr);
}

TEST_F(FileLockTest, Take_FileThatIsLetGoMeanwhile_Waits) {
    auto lock = Take(At("text"));
    ASSERT_NE(lock, nullptr);
    std::thread holder([&] {
        std::this_thread::sleep_for(milliseconds(100));
        lock.reset();
    });
    EXPECT_NE(Take(At("text"), milliseconds(60'000)), nullptr);
    holder.join();
}

TEST_F(FileLockTest, Take_FileThatIsReplacedWhileItWaits_HoldsTheNewOne) {
    auto lock = Take(At("text"));
    ASSERT_NE(lock, nullptr);
    std::thread holder([&] {
        std::this_thread::sleep_for(milliseconds(100));
        const auto file = platform::AtomicFile::Create(At("text"));
        EXPECT_TRUE(file != nullptr && file->Commit());
        lock.reset();
    });
    const auto mine = Take(At("text"), milliseconds(60'000));
    holder.join();
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(Take(At("text")), nullptr);
    EXPECT_TRUE(m_refusal.m_isHeld);
}

TEST_F(FileLockTest, Take_HeldTooLong_GivesUp) {
    const auto lock = Take(At("text"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Take(At("text"), milliseconds(50)), nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(50));
    EXPECT_TRUE(m_refusal.m_isHeld);
}

TEST_F(FileLockTest, Take_WithoutAFile_SaysWhy) {
    for (const std::string& path : {At("none"), At("none/text"), Utf8(m_folder.Path()), std::string()}) {
        m_refusal.m_why.clear();
        EXPECT_EQ(Take(path, milliseconds(60'000)), nullptr) << path;
        EXPECT_FALSE(m_refusal.m_isHeld) << path;
        EXPECT_NE(m_refusal.m_why, "") << path;
    }
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

}  // namespace
}  // namespace quillet::test
