// Whether a file is unchanged.
#include "Quillet/platform/FileVersion.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "support/TemporaryFolder.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::AtomicFile;
using platform::FileVersion;
using platform::ReadableFile;

class FileVersionTest : public testing::Test {
protected:
    std::string At(const fs::path& name) const { return Utf8(m_folder / name); }

    std::string Existing(const fs::path& name, const std::string& text) const {
        WriteBytes(m_folder / name, text);
        return At(name);
    }

    // How the path has changed; empty if it has not.
    static std::string Difference(const FileVersion& seen, const std::string& path) {
        std::string why;
        return seen.Matches(FileVersion::Of(path), &why) ? "" : why.empty() ? "no reason" : why;
    }

    // Replaces the file if it is unchanged. Returns the reason of a failure.
    static std::string ReplaceSeen(FileVersion& seen, const std::string& path, const std::string& text) {
        std::string why;
        const auto file = AtomicFile::Create(path, &why);
        const bool good = file != nullptr && file->Write(text, &why) && file->CommitOver(seen, &why);
        return good ? "" : why.empty() ? "no reason" : why;
    }

    TemporaryFolder m_folder;
};

TEST_F(FileVersionTest, Matches_FileThatNobodyTouched) {
    const std::string path = Existing("text", std::string(200'000, 'x'));
    const FileVersion seen = FileVersion::Of(path);
    EXPECT_FALSE(seen.IsOfNothing());
    EXPECT_EQ(Difference(seen, path), "");
    EXPECT_EQ(Difference(seen, Utf8(m_folder.Path()) + "/./text"), "");
    EXPECT_TRUE(seen.Matches(FileVersion::Of(*ReadableFile::Open(path))));
}

TEST_F(FileVersionTest, Matches_NotAfterAnyChange) {
    const std::string path = Existing("text", "old");
    const FileVersion seen = FileVersion::Of(path);
    WriteBytes(path, "older");
    EXPECT_EQ(Difference(seen, path), "somebody else changed it meanwhile");
    fs::remove(m_folder / "text");
    EXPECT_EQ(Difference(seen, path), "somebody else removed it meanwhile");
    EXPECT_NE(Difference(seen, Existing("other", "old")), "");
}

TEST_F(FileVersionTest, Matches_NotWhenOnlyTheBytesTell) {
    const std::string path = Existing("text", "old");
    // The standard library's times are less precise than the file system's, so the first time is set too.
    const fs::file_time_type time = fs::last_write_time(m_folder / "text");
    fs::last_write_time(m_folder / "text", time);
    const FileVersion seen = FileVersion::Of(path);
    WriteBytes(path, "new");
    fs::last_write_time(m_folder / "text", time);
    EXPECT_NE(Difference(seen, path), "");
    WriteBytes(path, "old");
    fs::last_write_time(m_folder / "text", time);
    EXPECT_EQ(Difference(seen, path), "") << "it is again what it was";
}

TEST_F(FileVersionTest, Matches_NotWhenOnlyTheTimeTells) {
    const std::string path = Existing("text", "old");
    const FileVersion seen = FileVersion::Of(path);
    fs::last_write_time(m_folder / "text", fs::last_write_time(m_folder / "text") + std::chrono::hours(1));
    EXPECT_NE(Difference(seen, path), "");
}

TEST_F(FileVersionTest, Matches_NotAnotherFileWithTheSameBytesAndTime) {
    const std::string path = Existing("text", "old");
    const fs::file_time_type time = fs::last_write_time(m_folder / "text");
    fs::last_write_time(m_folder / "text", time);
    const FileVersion seen = FileVersion::Of(path);
    Existing("other", "old");
    fs::last_write_time(m_folder / "other", time);
    fs::rename(m_folder / "other", m_folder / "text");
    EXPECT_NE(Difference(seen, path), "");
}

TEST_F(FileVersionTest, OfNothing_MatchesOnlyNothing) {
    const FileVersion seen = FileVersion::Of(At("text"));
    EXPECT_TRUE(seen.IsOfNothing());
    EXPECT_EQ(Difference(seen, At("text")), "");
    EXPECT_EQ(Difference(seen, Existing("text", "")), "somebody else made it meanwhile");
}

TEST_F(FileVersionTest, OfAFileThatCannotBeRead_MatchesNothing) {
    const FileVersion seen(std::nullopt, 0);
    EXPECT_FALSE(seen.IsOfNothing());
    EXPECT_NE(Difference(seen, Existing("text", "x")), "");
    EXPECT_NE(Difference(seen, At("none")), "");
    EXPECT_FALSE(seen.Matches(seen));
}

TEST_F(FileVersionTest, CommitOver_FileThatWasSeen_ReplacesItAgainAndAgain) {
    const std::string path = Existing("text", "old");
    FileVersion seen = FileVersion::Of(path);
    for (const char* text : {"new", "newer, and longer", "", "last"}) {
        EXPECT_EQ(ReplaceSeen(seen, path, text), "");
        EXPECT_EQ(ReadBytes(m_folder / "text"), text);
        EXPECT_EQ(Difference(seen, path), "") << "what was written is what was seen last";
    }
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(FileVersionTest, CommitOver_FileThatWasChanged_LeavesItAndNothingElse) {
    const std::string path = Existing("text", "old");
    FileVersion seen = FileVersion::Of(path);
    WriteBytes(path, "mine");
    EXPECT_EQ(ReplaceSeen(seen, path, "new"), "somebody else changed it meanwhile");
    EXPECT_EQ(ReadBytes(m_folder / "text"), "mine");
    EXPECT_EQ(ReplaceSeen(seen, path, "new"), "somebody else changed it meanwhile");
    fs::remove(m_folder / "text");
    EXPECT_EQ(ReplaceSeen(seen, path, "new"), "somebody else removed it meanwhile");
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(FileVersionTest, CommitOver_ChangeWhileItIsWritten_IsSeen) {
    const std::string path = Existing("text", "old");
    FileVersion seen = FileVersion::Of(path);
    const auto file = AtomicFile::Create(path);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write("new"));
    WriteBytes(path, "mine");
    EXPECT_FALSE(file->CommitOver(seen));
    EXPECT_EQ(ReadBytes(m_folder / "text"), "mine");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(FileVersionTest, CommitOver_OfTwoNewFiles_OneWins) {
    FileVersion first = FileVersion::Of(At("text"));
    FileVersion second = first;
    EXPECT_EQ(ReplaceSeen(first, At("text"), "first"), "");
    EXPECT_EQ(ReplaceSeen(second, At("text"), "second"), "somebody else made it meanwhile");
    EXPECT_EQ(ReadBytes(m_folder / "text"), "first");
    EXPECT_EQ(ReplaceSeen(first, At("text"), "again"), "");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

}  // namespace
}  // namespace quillet::test
