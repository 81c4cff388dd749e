// Reading files and replacing them as a whole.
#include "Quillet/platform/File.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "support/AsOrdinaryUser.h"
#include "support/AtomicWrite.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::AtomicFile;
using platform::CanWriteFile;
using platform::FileIdentity;
using platform::FilePlace;
using platform::ReadableFile;
using platform::ReadWholeFile;

class File : public testing::Test {
protected:
    // Writes the text to a file in the folder.
    std::string Existing(const std::filesystem::path& name, const std::string& text) {
        WriteBytes(m_folder / name, text);
        return Utf8(m_folder / name);
    }
    std::string Missing(const std::filesystem::path& name) const { return Utf8(m_folder / name); }
    std::string Folder() const { return Utf8(m_folder.Path()); }

    // Leaves what a killed save of this target leaves in the folder.
    std::filesystem::path LeaveTemporaryBehind(const std::string& target) const {
        const std::vector<std::filesystem::path> before = m_folder.Names();
        std::filesystem::path temporary;
        {
            const auto file = AtomicFile::Create(target);
            for (const std::filesystem::path& name : m_folder.Names()) {
                if (std::find(before.begin(), before.end(), name) == before.end()) {
                    temporary = m_folder / name;
                }
            }
        }
        EXPECT_FALSE(temporary.empty());
        WriteBytes(temporary, "half a fi");
        return temporary;
    }

    // A file at this path can be created, read, examined and replaced.
    static void ExpectWorks(const std::string& path) {
        EXPECT_FALSE(CanWriteFile(path)) << path;
        EXPECT_EQ(WriteAtomically(path, "a long first text"), "") << path;
        EXPECT_EQ(ReadWholeFile(path), "a long first text") << path;
        EXPECT_TRUE(CanWriteFile(path)) << path;
        EXPECT_EQ(WriteAtomically(path, "second"), "") << path;
        const auto reader = ReadableFile::Open(path);
        ASSERT_NE(reader, nullptr) << path;
        char block[32];
        const std::size_t count = reader->Read(block, sizeof block);
        EXPECT_EQ(std::string(block, count), "second") << path;
    }

    // Nothing can be read at this path, and a reason is given.
    static void ExpectUnreadable(const std::string& path) {
        std::string why;
        EXPECT_EQ(ReadWholeFile(path, &why), std::nullopt) << path;
        EXPECT_FALSE(why.empty()) << path;
        why.clear();
        EXPECT_EQ(ReadableFile::Open(path, &why), nullptr) << path;
        EXPECT_FALSE(why.empty()) << path;
    }

    // Nor can anything be written.
    static void ExpectRefused(const std::string& path) {
        ExpectUnreadable(path);
        EXPECT_FALSE(CanWriteFile(path)) << path;
        std::string why;
        EXPECT_EQ(AtomicFile::Create(path, &why), nullptr) << path;
        EXPECT_FALSE(why.empty()) << path;
        EXPECT_EQ(AtomicFile::Create(path), nullptr) << path;
    }

    TemporaryFolder m_folder;
};

// Changes the current folder within a scope.
class CurrentFolder {
public:
    explicit CurrentFolder(const std::filesystem::path& folder) : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;
    ~CurrentFolder() { std::filesystem::current_path(m_before); }

private:
    const std::filesystem::path m_before;
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

TEST_F(File, Read_ToTheEnd_HasNotFailed) {
    const auto file = ReadableFile::Open(Existing("text", "abc"));
    ASSERT_NE(file, nullptr);
    char block[8];
    std::string why = "before";
    EXPECT_FALSE(file->HasFailed());
    ASSERT_EQ(file->Read(block, sizeof block), 3U);
    ASSERT_EQ(file->Read(block, sizeof block), 0U);
    EXPECT_FALSE(file->HasFailed(&why));
    EXPECT_EQ(why, "before");
}

TEST_F(File, Identity_OfOneFile_IsTheSameByEveryPath) {
    const std::string path = Existing("text", "contents");
    std::filesystem::create_directory(m_folder / "below");
    const auto identity = FileIdentity::Of(path);
    ASSERT_TRUE(identity.has_value());
    EXPECT_EQ(FileIdentity::Of(Missing("below/../text")), identity);
    EXPECT_EQ(ReadableFile::Open(path)->Identity(), identity);
    const CurrentFolder current(m_folder.Path());
    EXPECT_EQ(FileIdentity::Of("text"), identity);
    WriteBytes(m_folder / "text", "other contents, in the same file");
    EXPECT_EQ(FileIdentity::Of("text"), identity);
    std::filesystem::rename(m_folder / "text", m_folder / "renamed");
    EXPECT_EQ(FileIdentity::Of("renamed"), identity);
}

TEST_F(File, Place_IsTheSameByEveryPathWhetherAFileIsThereOrNot) {
    const auto place = FilePlace::Of(Missing("text"));
    ASSERT_TRUE(place.has_value());
    std::filesystem::create_directory(m_folder / "below");
    const auto expectSame = [&] {
        EXPECT_EQ(FilePlace::Of(Missing("./text")), place);
        EXPECT_EQ(FilePlace::Of(Missing("below/../text")), place);
        const CurrentFolder current(m_folder.Path());
        EXPECT_EQ(FilePlace::Of("text"), place);
        EXPECT_EQ(FilePlace::Of("./text"), place);
        EXPECT_NE(FilePlace::Of("other"), place);
        EXPECT_NE(FilePlace::Of("below/text"), place);
    };
    expectSame();
    Existing("text", "contents");
    expectSame();
    std::filesystem::remove(m_folder / "text");
    expectSame();
}

TEST_F(File, Place_WithoutAFolder_IsNone) {
    EXPECT_EQ(FilePlace::Of(Missing("none/text")), std::nullopt);
    EXPECT_EQ(FilePlace::Of(""), std::nullopt);
    EXPECT_EQ(FilePlace::Of(Missing("text") + std::string("\0more", 5)), std::nullopt);
}

TEST_F(File, Identity_OfTwoFiles_IsNotTheSame) {
    const auto identity = FileIdentity::Of(Existing("text", "contents"));
    EXPECT_NE(FileIdentity::Of(Existing("copy", "contents")), identity);
}

TEST_F(File, Identity_WithoutAFile_IsNone) {
    EXPECT_EQ(FileIdentity::Of(Missing("none")), std::nullopt);
    EXPECT_EQ(FileIdentity::Of(Missing("none/text")), std::nullopt);
    EXPECT_EQ(FileIdentity::Of(Folder()), std::nullopt);
    EXPECT_EQ(FileIdentity::Of(""), std::nullopt);
    EXPECT_EQ(FileIdentity::Of(Existing("text", "x") + std::string("\0more", 5)), std::nullopt);
}

TEST_F(File, Identity_OfAReplacedFile_IsThatOfTheNewOne) {
    const std::string path = Existing("text", "old");
    const auto reader = ReadableFile::Open(path);
    ASSERT_EQ(reader->Identity(), FileIdentity::Of(path));
    ASSERT_EQ(WriteAtomically(path, "new"), "");
    EXPECT_NE(FileIdentity::Of(path), std::nullopt);
    EXPECT_NE(reader->Identity(), FileIdentity::Of(path));
}

TEST_F(File, PathExists_FileOrFolder_IsThere) {
    EXPECT_TRUE(platform::PathExists(Existing("text", "contents")));
    EXPECT_TRUE(platform::PathExists(Folder()));
    EXPECT_FALSE(platform::PathExists(Missing("none")));
    EXPECT_FALSE(platform::PathExists(Missing("none/none")));
    EXPECT_FALSE(platform::PathExists(""));
    EXPECT_FALSE(platform::PathExists(Folder() + std::string(1, '\0')));
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

TEST_F(File, Atomic_TemporaryFileThatNobodyHolds_IsClearedByTheNextSaveOfItsTarget) {
    for (const std::string& name : {std::string("text"), std::string(255, 'n')}) {
        const std::filesystem::path left = LeaveTemporaryBehind(Missing(name));
        ASSERT_EQ(WriteAtomically(Missing("another"), "text"), "");
        EXPECT_TRUE(std::filesystem::exists(left)) << "it is none of another file's";
        ASSERT_EQ(WriteAtomically(Missing(name), "text"), "");
        EXPECT_FALSE(std::filesystem::exists(left));
        EXPECT_EQ(m_folder.Names().size(), 2U);
        RemoveTree(m_folder / name);
    }
}

TEST_F(File, Atomic_TemporaryFileOfALivingWriter_IsLeftAlone) {
    const auto living = AtomicFile::Create(Missing("text"));
    ASSERT_NE(living, nullptr);
    ASSERT_TRUE(living->Write("living"));
    EXPECT_EQ(WriteAtomically(Missing("text"), "other"), "");
    EXPECT_EQ(m_folder.Names().size(), 2U);
    EXPECT_TRUE(living->Commit());
    EXPECT_EQ(ReadBytes(m_folder / "text"), "living");
}

TEST_F(File, Atomic_FilesThatOnlyLookLikeTemporaryOnes_AreLeftAlone) {
    const std::filesystem::path left = LeaveTemporaryBehind(Missing("text"));
    const std::string name = Utf8(left.filename());
    for (const std::string& other :
         {name + "x", "x" + name, std::string(".quillet-x.tmp"), name.substr(0, name.size() - 4)}) {
        Existing(other, "mine");
    }
    std::filesystem::remove(left);
    std::filesystem::create_directory(left);
    EXPECT_EQ(WriteAtomically(Missing("text"), "new"), "");
    EXPECT_EQ(m_folder.Names().size(), 6U);
    EXPECT_TRUE(std::filesystem::is_directory(left));
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

TEST_F(File, Atomic_TargetBecomesAFolder_FailsTheCommitAndLeavesNoTrace) {
    std::string why;
    const auto file = AtomicFile::Create(Missing("text"), &why);
    ASSERT_NE(file, nullptr) << why;
    std::filesystem::create_directory(m_folder / "text");
    WriteBytes(m_folder / "text/inner", "mine");
    ASSERT_TRUE(file->Write("new"));
    EXPECT_FALSE(file->Commit(&why));
    EXPECT_FALSE(why.empty());
    EXPECT_EQ(ReadBytes(m_folder / "text/inner"), "mine");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Names_OfAnyCharacters_Work) {
    for (const char8_t* name :
         {u8"Tr\u00E4ger \u00FC.xml", u8"\u0436\u0416.xml", u8"\u65E5\u672C.xml", u8"\U0001F600.xml",
          u8"\uFF80\uFF91\uFFE6.xml", u8"\uFFFD.xml", u8"e\u0301", u8"\u200F\u05D0",
          u8"with  blanks in it.xml", u8"(a) & [b] %PATH% $HOME 'q' `x` #~^!@=+,;{}.xml", u8".hidden",
          u8"no ending", u8"a.b.c.xml", u8"-", u8"...x"}) {
        ExpectWorks(Missing(name));
        EXPECT_EQ(ReadBytes(m_folder / name), "second");
        ASSERT_EQ(m_folder.Names().size(), 1U);
        EXPECT_EQ(m_folder.Names().front(), std::filesystem::path(name));
        RemoveTree(m_folder / name);
    }
}

TEST_F(File, Names_AsLongAsTheyMayBe_Work) {
    constexpr std::size_t LongestName = 255;
    ExpectWorks(Missing(std::string(LongestName, 'n')));
    const std::string tooLong = Missing(std::string(LongestName + 1, 'n'));
    ExpectUnreadable(tooLong);
    EXPECT_FALSE(CanWriteFile(tooLong));
    EXPECT_NE(WriteAtomically(tooLong, "text"), "");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Names_WithAZeroByte_AreNotCut) {
    Existing("text", "old");
    ExpectRefused(Missing("text") + std::string("\0more", 5));
    ExpectRefused(Missing("text") + std::string(1, '\0'));
    EXPECT_EQ(ReadBytes(m_folder / "text"), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Names_ThatAreNotUtf8_AreNotFound) {
    for (const char* name :
         {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80", "caf\xE9.xml"}) {
        ExpectUnreadable(Missing("") + name);
        EXPECT_FALSE(CanWriteFile(Missing("") + name));
    }
}

TEST_F(File, Paths_OfAnyLength_Work) {
    for (const std::size_t length : {230U, 270U, 1000U, 1500U}) {
        const std::filesystem::path folder = MakeDeepFolder(m_folder.Path(), length);
        const std::string path = Utf8(folder / std::filesystem::path(u8"\u65E5\u672C.xml"));
        ASSERT_GT(path.size(), length);
        ExpectWorks(path);
        EXPECT_EQ(ReadBytes(folder / std::filesystem::path(u8"\u65E5\u672C.xml")), "second");
        EXPECT_EQ(WriteAtomically(Utf8(folder / "none" / "text"), "text").empty(), false);
        EXPECT_EQ(NamesIn(folder).size(), 1U) << "nothing is left beside it";
        ExpectRefused(Utf8(folder));
    }
}

TEST_F(File, Paths_LongerThanAny_AreRefused) {
    for (const std::size_t length : {40'000U, 200'000U}) {
        std::string path = Folder();
        while (path.size() < length) {
            path += "/folder";
        }
        for (const std::string& tooLong : {path, Missing(std::string(length, 'n'))}) {
            ExpectUnreadable(tooLong);
            EXPECT_FALSE(CanWriteFile(tooLong));
            EXPECT_NE(WriteAtomically(tooLong, "text"), "");
        }
    }
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(File, Paths_RelativeToTheCurrentFolder_Work) {
    std::filesystem::create_directory(m_folder / "below");
    const CurrentFolder current(m_folder.Path());
    for (const char* path :
         {"text", "./text", "below/text", "below/../text", "./below/./text", "below//text"}) {
        ExpectWorks(path);
        EXPECT_EQ(ReadBytes(m_folder / path), "second");
        RemoveTree(m_folder / path);
    }
    const CurrentFolder deeper(m_folder / "below");
    ExpectWorks("../text");
    EXPECT_EQ(ReadBytes(m_folder / "text"), "second");
}

TEST_F(File, Paths_RelativeAndLong_Work) {
    std::string path = "f";
    const CurrentFolder current(m_folder.Path());
    MakeFolder(path);
    while (path.size() < 600) {
        path += "/" + std::string(100, 'f');
        MakeFolder(path);
    }
    ExpectWorks(path + "/text");
    EXPECT_EQ(ReadBytes(m_folder / path / "text"), "second");
}

TEST_F(File, Atomic_CurrentFolderChangesMeanwhile_CommitsWhereItBegan) {
    std::filesystem::create_directory(m_folder / "one");
    std::filesystem::create_directory(m_folder / "other");
    const CurrentFolder one(m_folder / "one");
    const auto file = AtomicFile::Create("text");
    ASSERT_NE(file, nullptr);
    const CurrentFolder other(m_folder / "other");
    ASSERT_TRUE(file->Write("new"));
    EXPECT_TRUE(file->Commit());
    EXPECT_EQ(ReadBytes(m_folder / "one/text"), "new");
    EXPECT_TRUE(NamesIn(m_folder / "other").empty());
}

TEST_F(File, Paths_ThatNameAFolder_AreRefused) {
    std::filesystem::create_directory(m_folder / "folder");
    const CurrentFolder current(m_folder.Path());
    for (const char* path :
         {".", "..", "./", "../", "/", "", "folder", "folder/", "folder/.", "folder/..", "./folder"}) {
        ExpectRefused(path);
    }
    ExpectRefused(Folder());
    ExpectRefused(Folder() + "/");
    ExpectRefused(Folder() + "/.");
    EXPECT_TRUE(NamesIn(m_folder / "folder").empty());
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Paths_ThatEndWithASeparator_AreNoFiles) {
    Existing("text", "old");
    ExpectRefused(Missing("text") + "/");
    ExpectRefused(Missing("none") + "/");
    EXPECT_EQ(ReadBytes(m_folder / "text"), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Paths_BelowAFileOrAMissingFolder_AreRefused) {
    Existing("text", "old");
    ExpectRefused(Missing("text") + "/below");
    ExpectRefused(Missing("none") + "/text");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Open_BlankPath_SaysWhy) {
    const CurrentFolder current(m_folder.Path());
    ExpectUnreadable(" ");
    EXPECT_FALSE(CanWriteFile(" "));
}

TEST_F(File, ReadOnlyFile_IsReadButNotWritten) {
    using std::filesystem::perms;
    const std::string path = Existing("text", "old");
    std::filesystem::permissions(m_folder / "text",
                                 perms::owner_read | perms::group_read | perms::others_read);
    std::filesystem::permissions(m_folder.Path(), perms::all);
    const AsOrdinaryUser user;
    if (!user.IsBound()) {
        GTEST_SKIP() << "the superuser's rights can't be dropped here";
    }
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_FALSE(CanWriteFile(path));
    std::string why;
    EXPECT_EQ(AtomicFile::Create(path, &why), nullptr);
    EXPECT_FALSE(why.empty());
    EXPECT_EQ(ReadBytes(m_folder / "text"), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(File, Reader_Open_HindersNobody) {
    const std::string path = Existing("text", "old");
    const auto reader = ReadableFile::Open(path);
    ASSERT_NE(reader, nullptr);
    EXPECT_TRUE(CanWriteFile(path));
    WriteBytes(m_folder / "text", "more");
    std::filesystem::rename(m_folder / "text", m_folder / "other");
    std::filesystem::remove(m_folder / "other");
    char block[32];
    const std::size_t count = reader->Read(block, sizeof block);
    EXPECT_EQ(std::string(block, count), "more");
}

}  // namespace
}  // namespace quillet::test
