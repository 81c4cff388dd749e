// What Windows adds to files: sharing, attributes, devices, separators and error messages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
// sddl.h needs the types of windows.h.
#include <sddl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Quillet/platform/File.h"
#include "support/AtomicWrite.h"
#include "support/RegexMatchers.h"
#include "support/TemporaryFolder.h"
#include "support/VariantValues.h"
#include "support/WindowsHandle.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::AtomicFile;
using platform::CanWriteFile;
using platform::FileIdentity;
using platform::ReadableFile;
using platform::ReadWholeFile;

constexpr DWORD ShareEverything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class WindowsFile : public testing::Test {
protected:
    std::string At(const fs::path& name) const { return Utf8(m_folder / name); }

    void SetUp() override { WriteBytes(m_folder / "text", "old"); }

    // Whether the system has a message for the error.
    static bool HasWords(DWORD error) {
        WCHAR words[512];
        return FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                              words, 512, nullptr) != 0;
    }

    static void ExpectWords(const std::string& why) {
        EXPECT_THAT(why, ContainsPattern("^[^0-9]{5,}[^.\\s]$"));
        EXPECT_THAT(why, testing::Not(testing::HasSubstr("system error")));
    }

    static std::string WhyUnreadable(const std::string& path) {
        std::string why;
        EXPECT_EQ(ReadWholeFile(path, &why), std::nullopt) << path;
        return why;
    }

    DWORD Attributes(const fs::path& name) const { return GetFileAttributesW((m_folder / name).c_str()); }

    // False if the file system does not keep the attribute.
    bool Mark(const fs::path& name, DWORD attributes) const {
        EXPECT_NE(SetFileAttributesW((m_folder / name).c_str(), attributes), 0);
        return (Attributes(name) & attributes) == attributes;
    }

    // False if the system can't create links, or does not let this user.
    bool MakeLink(const fs::path& name, const fs::path& target) const {
        constexpr DWORD WithoutPrivilege = 2;
        return CreateSymbolicLinkW((m_folder / name).c_str(), target.c_str(), WithoutPrivilege) != 0 &&
               IsLink(name);
    }

    bool IsLink(const fs::path& name) const {
        const DWORD attributes = Attributes(name);
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    }

    // The owner or the access list, in the system's own notation.
    std::string Security(const fs::path& name, SECURITY_INFORMATION what) const {
        std::vector<BYTE> list(4096);
        DWORD size = 0;
        EXPECT_NE(GetFileSecurityW((m_folder / name).c_str(), what, list.data(),
                                   static_cast<DWORD>(list.size()), &size),
                  0);
        LPWSTR text = nullptr;
        EXPECT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorW(list.data(), SDDL_REVISION_1, what,
                                                                       &text, nullptr),
                  0);
        const std::string notation = text == nullptr ? "" : Utf8(fs::path(text));
        LocalFree(text);
        return notation;
    }

    std::string AccessList(const fs::path& name) const { return Security(name, DACL_SECURITY_INFORMATION); }

    void SetAccessList(const fs::path& name, const std::string& notation) const {
        PSECURITY_DESCRIPTOR list = nullptr;
        ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(notation.c_str(), SDDL_REVISION_1,
                                                                       &list, nullptr),
                  0);
        EXPECT_NE(SetFileSecurityW((m_folder / name).c_str(), DACL_SECURITY_INFORMATION, list), 0);
        LocalFree(list);
    }

    // Only the file with the text is left.
    void ExpectAlone(const std::string& text) const {
        EXPECT_EQ(ReadBytes(m_folder / "text"), text);
        EXPECT_EQ(m_folder.Names().size(), 1U);
    }

    TemporaryFolder m_folder;
};

TEST_F(WindowsFile, Atomic_TargetOpenForReadingBySomebodyWhoShares_IsReplaced) {
    {
        const WindowsHandle reader(m_folder / "text", GENERIC_READ, ShareEverything);
        EXPECT_TRUE(CanWriteFile(At("text")));
        EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
        EXPECT_EQ(ReadWholeFile(At("text")), "new");
    }
    ExpectAlone("new");
}

TEST_F(WindowsFile, Atomic_ManyReadersAndReplacements_LeaveTheLastText) {
    std::vector<std::unique_ptr<ReadableFile>> readers;
    for (int round = 0; round < 10; ++round) {
        readers.push_back(ReadableFile::Open(At("text")));
        ASSERT_NE(readers.back(), nullptr);
        EXPECT_EQ(WriteAtomically(At("text"), std::to_string(round)), "");
    }
    for (int round = 0; round < 10; ++round) {
        char block[8];
        const std::size_t count = readers[static_cast<std::size_t>(round)]->Read(block, sizeof block);
        EXPECT_EQ(std::string(block, count), round == 0 ? "old" : std::to_string(round - 1));
    }
    readers.clear();
    ExpectAlone("9");
}

TEST_F(WindowsFile, Atomic_TargetThatMayNotBeDeletedMeanwhile_FailsTheCommitAndStays) {
    std::string why;
    {
        const auto file = AtomicFile::Create(At("text"), &why);
        ASSERT_NE(file, nullptr) << why;
        ASSERT_TRUE(file->Write("new"));
        const WindowsHandle holder(m_folder / "text", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_FALSE(file->Commit(&why));
    }
    const WindowsHandle holder(m_folder / "text", GENERIC_READ, 0);
    EXPECT_EQ(why, WhyUnreadable(At("text"))) << "both times somebody keeps it for himself";
}

TEST_F(WindowsFile, Atomic_AfterACommitThatFailed_NothingIsLeft) {
    {
        const WindowsHandle holder(m_folder / "text", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_NE(WriteAtomically(At("text"), "new"), "");
        ExpectAlone("old");
    }
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    ExpectAlone("new");
}

// Where an open file can't be replaced, it is first moved aside. A file that another program creates under
// its name in that moment stays, and the reason says where the old one is.
TEST_F(WindowsFile, Atomic_NameTakenWhileTheOldFileIsAside_TellsWhereThatIs) {
    std::atomic<bool> taken = false;
    std::atomic<bool> ends = false;
    std::thread other([&] {
        const std::wstring path = (m_folder / "text").wstring();
        while (!taken && !ends) {
            const HANDLE made =
                CreateFileW(path.c_str(), GENERIC_WRITE, ShareEverything, nullptr, CREATE_NEW, 0, nullptr);
            if (made != INVALID_HANDLE_VALUE) {
                taken = true;
                CloseHandle(made);
            }
        }
    });
    const std::string announcement = "; the old file is ";
    std::size_t place = std::string::npos;
    std::string why;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (place == std::string::npos && std::chrono::steady_clock::now() < end) {
        WriteBytes(m_folder / "text", "old");
        const auto reader = ReadableFile::Open(At("text"));
        why = WriteAtomically(At("text"), "new");
        place = why.find(announcement);
    }
    ends = true;
    other.join();
    if (!taken && !IsWine()) {
        GTEST_SKIP() << "the file system replaces files that are open";
    }
    ASSERT_TRUE(taken);
    ASSERT_NE(place, std::string::npos) << why;
    const std::string aside = why.substr(place + announcement.size());
    EXPECT_EQ(ReadWholeFile(aside), "old") << aside;
    EXPECT_EQ(fs::path(aside).root_name(), m_folder.Path().root_name()) << aside;
    EXPECT_EQ(ReadWholeFile(At("text")), "");
    EXPECT_EQ(m_folder.Names().size(), 2U);
}

// Between the two steps the target does not exist. Opening it then succeeds a moment later.
TEST_F(WindowsFile, Open_TargetThatIsReplacedInTwoSteps_IsThereAgain) {
    for (const bool comesBack : {true, false}) {
        fs::rename(m_folder / "text", m_folder / ".quillet-0123456789abcdef-1-0-1.old");
        std::thread writer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            if (comesBack) {
                WriteBytes(m_folder / "other", "new");
                fs::rename(m_folder / "other", m_folder / "text");
            }
        });
        EXPECT_EQ(FileIdentity::Of(At("text")).has_value(), comesBack);
        EXPECT_EQ(ReadWholeFile(At("text")).value_or("none"), comesBack ? "new" : "none");
        writer.join();
    }
}

TEST_F(WindowsFile, Atomic_TargetThatMayNotBeWritten_IsRefusedAtOnce) {
    const WindowsHandle holder(m_folder / "text", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE);
    EXPECT_FALSE(CanWriteFile(At("text")));
    std::string why;
    EXPECT_EQ(AtomicFile::Create(At("text"), &why), nullptr);
    EXPECT_NE(why, "");
    EXPECT_EQ(ReadWholeFile(At("text")), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(WindowsFile, Open_FileThatSomebodyKeepsForHimself_SaysWhy) {
    const WindowsHandle holder(m_folder / "text", GENERIC_READ, 0);
    EXPECT_NE(WhyUnreadable(At("text")), "");
    EXPECT_NE(WhyUnreadable(At("text")), WhyUnreadable(At("none")));
    EXPECT_EQ(ReadableFile::Open(At("text")), nullptr);
    EXPECT_FALSE(CanWriteFile(At("text")));
}

TEST_F(WindowsFile, Atomic_ReadOnlyTarget_IsRefusedAndKeepsItsMark) {
    ASSERT_TRUE(Mark("text", FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(CanWriteFile(At("text")));
    std::string why;
    EXPECT_EQ(AtomicFile::Create(At("text"), &why), nullptr);
    EXPECT_NE(why, "");
    EXPECT_NE(Attributes("text") & FILE_ATTRIBUTE_READONLY, 0U);
    ExpectAlone("old");
}

TEST_F(WindowsFile, Atomic_TargetMarkedReadOnlyMeanwhile_FailsTheCommitAndStays) {
    const auto file = AtomicFile::Create(At("text"));
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write("new"));
    ASSERT_TRUE(Mark("text", FILE_ATTRIBUTE_READONLY));
    {
        const auto reader = ReadableFile::Open(At("text"));
        std::string why;
        EXPECT_FALSE(file->Commit(&why));
        EXPECT_NE(why, "");
    }
    EXPECT_NE(Attributes("text") & FILE_ATTRIBUTE_READONLY, 0U);
    ExpectAlone("old");
}

TEST_F(WindowsFile, Atomic_HiddenAndSystemTarget_KeepsItsMarks) {
    constexpr DWORD Marks = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    if (!Mark("text", Marks)) {
        GTEST_SKIP() << "the file system keeps no such marks";
    }
    EXPECT_TRUE(CanWriteFile(At("text")));
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(Attributes("text") & Marks, Marks);
    {
        const auto reader = ReadableFile::Open(At("text"));
        EXPECT_EQ(WriteAtomically(At("text"), "newer"), "");
    }
    EXPECT_EQ(Attributes("text") & Marks, Marks);
    ExpectAlone("newer");
}

TEST_F(WindowsFile, Atomic_NewOrUnmarkedTarget_IsNotHidden) {
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(WriteAtomically(At("other"), "new"), "");
    for (const char* name : {"text", "other"}) {
        EXPECT_EQ(Attributes(name) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM), 0U) << name;
    }
}

TEST_F(WindowsFile, Atomic_TargetWithItsOwnAccessList_KeepsIt) {
    const std::string before = AccessList("text");
    ASSERT_NE(before, "");
    // Full access for the owner, none for others, and nothing inherited from the folder.
    const std::string owner = Security("text", OWNER_SECURITY_INFORMATION).substr(2);
    SetAccessList("text", "D:P(A;;FA;;;" + owner + ")");
    const std::string narrow = AccessList("text");
    ASSERT_NE(narrow, before) << "the file system keeps no access lists";
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(AccessList("text"), narrow);
    {
        const auto reader = ReadableFile::Open(At("text"));
        EXPECT_EQ(WriteAtomically(At("text"), "newer"), "");
    }
    EXPECT_EQ(AccessList("text"), narrow);
    EXPECT_EQ(WriteAtomically(At("other"), "new"), "");
    EXPECT_EQ(AccessList("other"), before);
    EXPECT_EQ(ReadWholeFile(At("text")), "newer");
}

TEST_F(WindowsFile, Identity_FileThatSomebodyKeepsForHimself_IsKnown) {
    const auto identity = FileIdentity::Of(At("text"));
    ASSERT_NE(identity, std::nullopt);
    const WindowsHandle holder(m_folder / "text", GENERIC_READ | GENERIC_WRITE, 0);
    EXPECT_EQ(FileIdentity::Of(At("text")), identity);
    EXPECT_EQ(FileIdentity::Of(At("TEXT")), identity);
}

TEST_F(WindowsFile, Place_NamesThatDifferInCase_AreOne) {
    const auto place = platform::FilePlace::Of(At("text"));
    ASSERT_NE(place, std::nullopt);
    EXPECT_EQ(platform::FilePlace::Of(At("TEXT")), place);
    EXPECT_EQ(platform::FilePlace::Of(At("none")), platform::FilePlace::Of(At("NONE")));
    EXPECT_NE(platform::FilePlace::Of(At("none")), place);
}

TEST_F(WindowsFile, Read_Error_IsToldFromTheEnd) {
    const std::string path = "\\\\.\\pipe\\quillet-test-" + std::to_string(GetCurrentProcessId());
    const HANDLE server =
        CreateNamedPipeW(fs::path(path).c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr);
    ASSERT_NE(server, INVALID_HANDLE_VALUE);
    const auto file = ReadableFile::Open(path);
    ASSERT_NE(file, nullptr);
    EXPECT_NE(DisconnectNamedPipe(server), 0);
    char block[8];
    EXPECT_FALSE(file->HasFailed());
    EXPECT_EQ(file->Read(block, sizeof block), 0U);
    std::string why;
    EXPECT_TRUE(file->HasFailed(&why));
    EXPECT_NE(why, "");
    CloseHandle(server);
}

TEST_F(WindowsFile, Devices_AreNoTargets) {
    for (const std::string& device :
         {std::string("NUL"), std::string("nul"), std::string("CON"), std::string("COM1"), std::string("AUX"),
          std::string("\\\\.\\NUL"), std::string("\\\\.\\COM1")}) {
        EXPECT_FALSE(CanWriteFile(device)) << device;
        std::string why;
        EXPECT_EQ(AtomicFile::Create(device, &why), nullptr) << device;
        EXPECT_NE(why, "") << device;
    }
}

TEST_F(WindowsFile, Links_AreFollowedAndStay) {
    fs::create_directory(m_folder / "data");
    WriteBytes(m_folder / "data/inner", "old");
    if (!MakeLink("link", "data\\inner") || !MakeLink("chain", "link")) {
        GTEST_SKIP() << "no symbolic links can be made here";
    }
    for (const char* name : {"link", "chain"}) {
        EXPECT_TRUE(CanWriteFile(At(name)));
        EXPECT_EQ(WriteAtomically(At(name), name), "");
        EXPECT_EQ(ReadBytes(m_folder / "data/inner"), name);
        EXPECT_TRUE(IsLink(name));
    }
    EXPECT_EQ(NamesIn(m_folder / "data").size(), 1U);
}

TEST_F(WindowsFile, LinkToNothing_CreatesWhatItPointsTo) {
    fs::create_directory(m_folder / "data");
    if (!MakeLink("link", "data\\new")) {
        GTEST_SKIP() << "no symbolic links can be made here";
    }
    EXPECT_FALSE(CanWriteFile(At("link")));
    EXPECT_TRUE(NamesIn(m_folder / "data").empty());
    EXPECT_EQ(WriteAtomically(At("link"), "text"), "");
    EXPECT_TRUE(IsLink("link"));
    EXPECT_EQ(ReadBytes(m_folder / "data/new"), "text");
}

TEST_F(WindowsFile, LinksInACircle_AreRefused) {
    if (!MakeLink("a", "b") || !MakeLink("b", "a")) {
        GTEST_SKIP() << "no symbolic links can be made here";
    }
    EXPECT_FALSE(CanWriteFile(At("a")));
    EXPECT_NE(WriteAtomically(At("a"), "text"), "");
}

TEST_F(WindowsFile, Reasons_OrdinaryFailures_AreWords) {
    for (const std::string& why :
         {WhyUnreadable(At("none")), WhyUnreadable(At("none/text")), WhyUnreadable(""), WhyUnreadable("\xFF"),
          WhyUnreadable(" "), WhyUnreadable(std::string("a\0b", 3)), WhyUnreadable(At("text") + "\\"),
          WhyUnreadable(At("a?b")), WriteAtomically(At("none/text"), "x"), WriteAtomically("NUL", "x")}) {
        ExpectWords(why);
    }
    EXPECT_NE(WhyUnreadable(At("none")), WhyUnreadable(At("none/text")));
    EXPECT_EQ(WhyUnreadable(At("none/text")), WriteAtomically(At("none/text"), "x"));
}

TEST_F(WindowsFile, Reasons_ForAFolder_TellThatItIsOne) {
    const std::string folder = Utf8(m_folder.Path());
    const std::string why = WhyUnreadable(folder);
    EXPECT_EQ(WriteAtomically(folder, "x"), why);
    EXPECT_EQ(WhyUnreadable(folder + "\\"), why);
    EXPECT_EQ(WhyUnreadable(folder + "/."), why);
    constexpr DWORD DirectoryNotSupported = 336;
    if (!HasWords(DirectoryNotSupported)) {
        EXPECT_EQ(why, "system error 336");
    } else {
        ExpectWords(why);
    }
}

TEST_F(WindowsFile, Separators_OfEitherKind_AreTheSame) {
    fs::create_directory(m_folder / "a");
    fs::create_directory(m_folder / "a/b");
    const std::string folder = Utf8(m_folder.Path());
    for (const char* rest : {"/a/b/text", "\\a\\b\\text", "/a\\b/text", "\\a/b\\text",
                             "\\a\\.\\b\\..\\b\\text", "//a///b//text"}) {
        for (const bool forward : {false, true}) {
            std::string path = folder;
            std::replace(path.begin(), path.end(), '\\', forward ? '/' : '\\');
            path += rest;
            EXPECT_EQ(WriteAtomically(path, path), "") << path;
            EXPECT_EQ(ReadWholeFile(path), path);
            EXPECT_TRUE(CanWriteFile(path)) << path;
            EXPECT_EQ(ReadBytes(m_folder / "a/b/text"), path);
        }
    }
    EXPECT_EQ(NamesIn(m_folder / "a/b").size(), 1U);
    EXPECT_NE(WriteAtomically(folder + "\\a\\", "x"), "");
    EXPECT_FALSE(CanWriteFile(folder + "\\text\\"));
}

TEST_F(WindowsFile, Paths_InTheSystemsOwnForms_Work) {
    const std::string full = Utf8(fs::absolute(m_folder / "text").make_preferred());
    for (const std::string& path : {"\\\\?\\" + full, full.substr(2)}) {
        const fs::path before = fs::current_path();
        fs::current_path(m_folder.Path());
        EXPECT_EQ(WriteAtomically(path, path), "") << path;
        EXPECT_EQ(ReadWholeFile(path), path);
        EXPECT_TRUE(CanWriteFile(path)) << path;
        fs::current_path(before);
        ExpectAlone(path);
    }
}

TEST_F(WindowsFile, Names_InAnotherCase_AreTheSameFile) {
    EXPECT_EQ(ReadWholeFile(At("TEXT")), "old");
    EXPECT_TRUE(CanWriteFile(At("Text")));
    EXPECT_EQ(WriteAtomically(At("TeXt"), "new"), "");
    ExpectAlone("new");
    EXPECT_EQ(m_folder.Names().front(), fs::path("text")) << "the file keeps the letters of its name";
}

TEST_F(WindowsFile, Names_ThatAreNotUtf8_AreRefused) {
    for (const char* name : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\xAF"}) {
        EXPECT_NE(WriteAtomically(At("") + name, "x"), "");
    }
    ExpectAlone("old");
}

TEST_F(WindowsFile, Names_WithCharactersThatNoFileHas_AreRefused) {
    for (const char* name : {"a?b", "a*b", "a<b", "a>b", "a|b", "a\"b", "?", "*"}) {
        EXPECT_NE(WhyUnreadable(At("") + name), "");
        EXPECT_FALSE(CanWriteFile(At("") + name)) << name;
        EXPECT_NE(WriteAtomically(At("") + name, "x"), "") << name;
    }
    ExpectAlone("old");
}

}  // namespace
}  // namespace quillet::test
