// Reading files and replacing them whole.
#include "platform/File.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::AtomicFile;
using platform::CanWriteFile;
using platform::ReadableFile;
using platform::ReadWholeFile;

class File : public testing::Test {
protected:
    // A file in the folder that holds the text.
    std::string Existing(const std::filesystem::path& name, const std::string& text) {
        WriteBytes(m_folder / name, text);
        return Utf8(m_folder / name);
    }
    std::string Missing(const std::filesystem::path& name) const { return Utf8(m_folder / name); }
    std::string Folder() const { return Utf8(m_folder.Path()); }

    TemporaryFolder m_folder;
};

TEST_F(File, ReadWhole_AnyBytes_ComeAsTheyAre) {
    const std::string bytes(
        "a\r\nb\0\xFF\x1A"
        "c\n",
        9);
    EXPECT_EQ(ReadWholeFile(Existing("bytes", bytes)), bytes);
}

TEST_F(File, ReadWhole_EmptyFile_IsEmpty) {
    EXPECT_EQ(ReadWholeFile(Existing("empty", "")), std::string());
}

TEST_F(File, ReadWhole_LargeFile_IsComplete) {
    std::string bytes(3'000'001, 'x');
    bytes.back() = 'y';
    EXPECT_EQ(ReadWholeFile(Existing("large", bytes)), bytes);
}

TEST_F(File, ReadWhole_MissingFile_SaysWhy) {
    std::string why;
    EXPECT_EQ(ReadWholeFile(Missing("none"), &why), std::nullopt);
    EXPECT_FALSE(why.empty());
    EXPECT_EQ(ReadWholeFile(Missing("none")), std::nullopt);
}

TEST_F(File, ReadWhole_Folder_IsNoFile) {
    std::string why;
    EXPECT_EQ(ReadWholeFile(Folder(), &why), std::nullopt);
    EXPECT_FALSE(why.empty());
}

TEST_F(File, Open_MissingFileOrFolder_GivesNullAndSaysWhy) {
    std::string why;
    EXPECT_EQ(ReadableFile::Open(Missing("none"), &why), nullptr);
    EXPECT_FALSE(why.empty());
    why.clear();
    EXPECT_EQ(ReadableFile::Open(Folder(), &why), nullptr);
    EXPECT_FALSE(why.empty());
    EXPECT_EQ(ReadableFile::Open("", nullptr), nullptr);
}

TEST_F(File, Read_InBlocks_ReachesTheEnd) {
    const auto file = ReadableFile::Open(Existing("text", "abcdefg"));
    ASSERT_NE(file, nullptr);
    char block[4];
    ASSERT_EQ(file->Read(block, 4), 4U);
    EXPECT_EQ(std::string(block, 4), "abcd");
    ASSERT_EQ(file->Read(block, 4), 3U);
    EXPECT_EQ(std::string(block, 3), "efg");
    EXPECT_EQ(file->Read(block, 4), 0U);
    EXPECT_EQ(file->Read(block, 4), 0U);
}

TEST_F(File, Read_WhileTheFileIsReplaced_GoesOnWithTheOldContents) {
    const std::string path = Existing("text", "old contents");
    const auto reader = ReadableFile::Open(path);
    ASSERT_NE(reader, nullptr);
    const auto writer = AtomicFile::Create(path);
    ASSERT_NE(writer, nullptr);
    ASSERT_TRUE(writer->Write("new"));
    ASSERT_TRUE(writer->Commit());
    char block[32];
    const std::size_t count = reader->Read(block, sizeof block);
    EXPECT_EQ(std::string(block, count), "old contents");
    EXPECT_EQ(ReadWholeFile(path), "new");
}

TEST_F(File, CanWrite_ExistingFile_DoesNotTouchIt) {
    const std::string path = Existing("text", "contents");
    const auto before = std::filesystem::last_write_time(m_folder / "text");
    EXPECT_TRUE(CanWriteFile(path));
    EXPECT_EQ(ReadBytes(m_folder / "text"), "contents");
    EXPECT_EQ(std::filesystem::last_write_time(m_folder / "text"), before);
}

TEST_F(File, CanWrite_MissingFile_DoesNotCreateIt) {
    EXPECT_FALSE(CanWriteFile(Missing("none")));
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(File, CanWrite_Folder_IsNoFile) {
    EXPECT_FALSE(CanWriteFile(Folder()));
    EXPECT_FALSE(CanWriteFile(""));
}

TEST_F(File, Atomic_NewFile_AppearsWithTheCommit) {
    const auto file = AtomicFile::Create(Missing("new"));
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write("one "));
    ASSERT_TRUE(file->Write(""));
    ASSERT_TRUE(file->Write("two"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "new"));
    ASSERT_TRUE(file->Commit());
    EXPECT_EQ(ReadBytes(m_folder / "new"), "one two");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Atomic_ExistingFile_IsOldUntilTheCommit) {
    const std::string path = Existing("text", "a long old text");
    const auto file = AtomicFile::Create(path);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write("new"));
    EXPECT_EQ(ReadBytes(m_folder / "text"), "a long old text");
    ASSERT_TRUE(file->Commit());
    EXPECT_EQ(ReadBytes(m_folder / "text"), "new");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Atomic_WithoutACommit_LeavesNoTrace) {
    const std::string path = Existing("text", "old");
    {
        const auto file = AtomicFile::Create(path);
        ASSERT_NE(file, nullptr);
        ASSERT_TRUE(file->Write("new"));
    }
    EXPECT_EQ(ReadBytes(m_folder / "text"), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Atomic_NothingWritten_CommitsAnEmptyFile) {
    const std::string path = Existing("text", "old");
    ASSERT_TRUE(AtomicFile::Create(path)->Commit());
    EXPECT_EQ(ReadBytes(m_folder / "text"), "");
}

TEST_F(File, Atomic_TwoForOneTarget_TheLastCommitCounts) {
    const auto first = AtomicFile::Create(Missing("text"));
    const auto second = AtomicFile::Create(Missing("text"));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    ASSERT_TRUE(first->Write("first"));
    ASSERT_TRUE(second->Write("second"));
    ASSERT_TRUE(second->Commit());
    ASSERT_TRUE(first->Commit());
    EXPECT_EQ(ReadBytes(m_folder / "text"), "first");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Atomic_ManyLargeBlocks_AreComplete) {
    const auto file = AtomicFile::Create(Missing("large"));
    ASSERT_NE(file, nullptr);
    std::string expected;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const std::string block(100'000, letter);
        ASSERT_TRUE(file->Write(block));
        expected += block;
    }
    ASSERT_TRUE(file->Commit());
    EXPECT_TRUE(ReadBytes(m_folder / "large") == expected);
}

TEST_F(File, Atomic_NameBeyondAscii_IsUtf8) {
    const std::filesystem::path name = u8"katal\u00F3g \u0416 \u65E5\u672C.xml";
    const auto file = AtomicFile::Create(Missing(name));
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write("text"));
    ASSERT_TRUE(file->Commit());
    EXPECT_EQ(ReadBytes(m_folder / name), "text");
    EXPECT_EQ(ReadWholeFile(Missing(name)), "text");
    EXPECT_TRUE(CanWriteFile(Missing(name)));
}

TEST_F(File, Atomic_FolderAsTarget_IsRefused) {
    for (const std::string& target : {Folder(), Folder() + "/", Folder() + "/.", std::string()}) {
        std::string why;
        EXPECT_EQ(AtomicFile::Create(target, &why), nullptr);
        EXPECT_FALSE(why.empty());
    }
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(File, Atomic_FolderThatDoesNotExist_IsRefused) {
    std::string why;
    EXPECT_EQ(AtomicFile::Create(Missing("none") + "/text", &why), nullptr);
    EXPECT_FALSE(why.empty());
    EXPECT_EQ(AtomicFile::Create(Missing("none") + "/text"), nullptr);
}

}  // namespace
}  // namespace quillet::test
