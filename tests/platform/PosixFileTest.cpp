// What a POSIX file system adds: modes, owners, links, limits.
#include <gtest/gtest.h>
#include <limits.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/platform/File.h"
#include "support/AsOrdinaryUser.h"
#include "support/AtomicWrite.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::AtomicFile;
using platform::CanWriteFile;
using platform::ReadableFile;
using platform::ReadWholeFile;

constexpr uid_t Nobody = AsOrdinaryUser::Nobody;

// Limits the size of files, to simulate a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

class FileModeMask {
public:
    explicit FileModeMask(mode_t mask) : m_before(umask(mask)) {}
    FileModeMask(const FileModeMask&) = delete;
    FileModeMask& operator=(const FileModeMask&) = delete;
    ~FileModeMask() { umask(m_before); }

private:
    const mode_t m_before;
};

// The subject of an access list entry, and its permissions.
enum AccessTag : std::uint32_t { UserObject = 1, User = 2, GroupObject = 4, Mask = 16, Other = 32 };
struct AccessEntry {
    std::uint32_t m_tag;
    std::uint32_t m_rights;
    // Unused where the tag gives the subject.
    std::uint32_t m_id = 0xFFFFFFFF;
};

class PosixFile : public testing::Test {
protected:
    std::string At(const fs::path& name) const { return Utf8(m_folder / name); }

    struct stat Status(const fs::path& name) const {
        struct stat status {};
        EXPECT_EQ(lstat((m_folder / name).c_str(), &status), 0);
        return status;
    }

    mode_t Mode(const fs::path& name) const { return Status(name).st_mode & 07777; }

    // Nothing if the file has no such attribute.
    std::optional<std::string> Attribute(const fs::path& name, const char* attribute) const {
        std::string value(65536, '\0');
        const ssize_t size = getxattr((m_folder / name).c_str(), attribute, value.data(), value.size());
        if (size < 0) {
            return std::nullopt;
        }
        return value.substr(0, static_cast<std::size_t>(size));
    }

    // An access list in the system's format, little-endian.
    static std::string AccessList(const std::vector<AccessEntry>& entries) {
        std::string list("\2\0\0\0", 4);
        for (const AccessEntry& entry : entries) {
            for (const auto& [value, bytes] :
                 {std::pair(entry.m_tag, 2U), std::pair(entry.m_rights, 2U), std::pair(entry.m_id, 4U)}) {
                for (unsigned i = 0; i < bytes; ++i) {
                    list += static_cast<char>(value >> (8 * i) & 0xFF);
                }
            }
        }
        return list;
    }

    TemporaryFolder m_folder;
};

TEST_F(PosixFile, Atomic_ExistingFile_KeepsItsMode) {
    const FileModeMask mask(022);
    WriteBytes(m_folder / "text", "old");
    for (const mode_t mode : {0600U, 0640U, 0666U, 0755U}) {
        ASSERT_EQ(chmod(At("text").c_str(), mode), 0);
        EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
        EXPECT_EQ(Mode("text"), mode);
    }
}

TEST_F(PosixFile, Atomic_NewFile_HasTheModeOfTheMask) {
    {
        const FileModeMask mask(027);
        EXPECT_EQ(WriteAtomically(At("strict"), "new"), "");
    }
    const FileModeMask mask(0);
    EXPECT_EQ(WriteAtomically(At("open"), "new"), "");
    EXPECT_EQ(Mode("strict"), mode_t{0640});
    EXPECT_EQ(Mode("open"), mode_t{0666});
}

TEST_F(PosixFile, Atomic_FileOfSomebodyElse_KeepsItsOwner) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give a file away";
    }
    WriteBytes(m_folder / "text", "old");
    ASSERT_EQ(chown(At("text").c_str(), Nobody, Nobody), 0);
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(Status("text").st_uid, Nobody);
    EXPECT_EQ(Status("text").st_gid, Nobody);
}

TEST_F(PosixFile, Atomic_Link_StaysAndItsTargetIsReplaced) {
    fs::create_directory(m_folder / "data");
    WriteBytes(m_folder / "data/text", "old");
    fs::create_symlink("data/text", m_folder / "relative");
    fs::create_symlink(m_folder / "data/text", m_folder / "absolute");
    fs::create_symlink("relative", m_folder / "chain");
    fs::create_symlink("data", m_folder / "folder");
    for (const char* name : {"relative", "absolute", "chain", "folder/text"}) {
        EXPECT_TRUE(CanWriteFile(At(name))) << name;
        EXPECT_EQ(WriteAtomically(At(name), name), "") << name;
        EXPECT_EQ(ReadBytes(m_folder / "data/text"), name);
    }
    EXPECT_TRUE(fs::is_symlink(m_folder / "relative"));
    EXPECT_TRUE(fs::is_symlink(m_folder / "absolute"));
    EXPECT_TRUE(fs::is_symlink(m_folder / "chain"));
    EXPECT_FALSE(fs::is_symlink(m_folder / "data/text"));
    EXPECT_EQ(m_folder.Names().size(), 5U);
}

TEST_F(PosixFile, Atomic_LinkToNothing_CreatesWhatItPointsTo) {
    fs::create_directory(m_folder / "data");
    fs::create_symlink("data/new", m_folder / "link");
    EXPECT_FALSE(CanWriteFile(At("link")));
    EXPECT_EQ(WriteAtomically(At("link"), "text"), "");
    EXPECT_TRUE(fs::is_symlink(m_folder / "link"));
    EXPECT_EQ(ReadBytes(m_folder / "data/new"), "text");
}

TEST_F(PosixFile, Atomic_LinksInACircle_AreRefused) {
    fs::create_symlink("b", m_folder / "a");
    fs::create_symlink("a", m_folder / "b");
    EXPECT_EQ(WriteAtomically(At("a"), "text"), "Too many levels of symbolic links");
    EXPECT_FALSE(CanWriteFile(At("a")));
}

TEST_F(PosixFile, Atomic_FullDisk_LeavesTheOldFileWhole) {
    const std::string old(5000, 'o');
    WriteBytes(m_folder / "text", old);
    {
        const FileSizeLimit limit(8192);
        std::string why;
        const auto file = AtomicFile::Create(At("text"), &why);
        ASSERT_NE(file, nullptr) << why;
        EXPECT_TRUE(file->Write(std::string(4096, 'n'), &why));
        EXPECT_FALSE(file->Write(std::string(8192, 'n'), &why));
        EXPECT_EQ(why, "File too large");
        why.clear();
        EXPECT_FALSE(file->Write("more", &why));
        EXPECT_FALSE(why.empty());
        why.clear();
        EXPECT_FALSE(file->Commit(&why));
        EXPECT_EQ(why, "File too large");
    }
    EXPECT_EQ(ReadBytes(m_folder / "text"), old);
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(PosixFile, Atomic_WriterIsKilled_NextSaveClearsWhatItLeft) {
    WriteBytes(m_folder / "text", "old");
    int written[2];
    ASSERT_EQ(pipe(written), 0);
    const pid_t writer = fork();
    if (writer == 0) {
        const auto file = AtomicFile::Create(At("text"));
        const bool good = file != nullptr && file->Write("half a fi");
        static_cast<void>(!write(written[1], &good, 1));
        pause();
    }
    char good = 0;
    ASSERT_EQ(read(written[0], &good, 1), 1);
    ASSERT_EQ(good, 1);
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(m_folder.Names().size(), 2U) << "the writer lives";
    ASSERT_EQ(kill(writer, SIGKILL), 0);
    ASSERT_EQ(waitpid(writer, nullptr, 0), writer);
    EXPECT_EQ(m_folder.Names().size(), 2U);
    EXPECT_EQ(WriteAtomically(At("text"), "newer"), "");
    EXPECT_EQ(m_folder.Names().size(), 1U);
    close(written[0]);
    close(written[1]);
}

TEST_F(PosixFile, Atomic_ExistingFile_KeepsItsExtendedAttributes) {
    const std::string path = At("text");
    WriteBytes(path, "old");
    const std::string large(3000, 'v');
    if (setxattr(path.c_str(), "user.origin", "a\0b", 3, 0) != 0) {
        GTEST_SKIP() << "the file system has no extended attributes of users";
    }
    ASSERT_EQ(setxattr(path.c_str(), "user.empty", "", 0, 0), 0);
    ASSERT_EQ(setxattr(path.c_str(), "user.large", large.data(), large.size(), 0), 0);
    chmod(path.c_str(), 0600);
    EXPECT_EQ(WriteAtomically(path, "new"), "");
    EXPECT_EQ(ReadBytes(m_folder / "text"), "new");
    EXPECT_EQ(Attribute("text", "user.origin"), std::string("a\0b", 3));
    EXPECT_EQ(Attribute("text", "user.empty"), "");
    EXPECT_EQ(Attribute("text", "user.large"), large);
    EXPECT_EQ(Mode("text"), mode_t{0600});
    EXPECT_EQ(WriteAtomically(At("other"), "new"), "");
    EXPECT_EQ(Attribute("other", "user.origin"), std::nullopt);
}

// For a file with an access list, the group bits of the mode are the list's mask, not the group's
// permissions.
TEST_F(PosixFile, Atomic_FileWithAnAccessList_KeepsItAndOpensToNobodyElse) {
    WriteBytes(m_folder / "text", "old");
    const std::string list =
        AccessList({{UserObject, 6}, {User, 6, 12345}, {GroupObject, 0}, {Mask, 6}, {Other, 0}});
    if (setxattr(At("text").c_str(), "system.posix_acl_access", list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "the file system has no access lists";
    }
    ASSERT_EQ(Mode("text"), mode_t{0660});
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(Attribute("text", "system.posix_acl_access"), list);
    EXPECT_EQ(Mode("text"), mode_t{0660});
}

TEST_F(PosixFile, Atomic_FolderThatGivesAccessLists_GivesNoneToAFileWithout) {
    WriteBytes(m_folder / "text", "old");
    chmod(At("text").c_str(), 0660);
    const std::string list =
        AccessList({{UserObject, 7}, {User, 7, 12345}, {GroupObject, 7}, {Mask, 7}, {Other, 7}});
    if (setxattr(m_folder.Path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "the file system has no access lists";
    }
    EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
    EXPECT_EQ(Attribute("text", "system.posix_acl_access"), std::nullopt);
    EXPECT_EQ(Mode("text"), mode_t{0660});
    EXPECT_EQ(WriteAtomically(At("other"), "new"), "");
    EXPECT_NE(Attribute("other", "system.posix_acl_access"), std::nullopt)
        << "a new file has what the folder gives";
}

TEST_F(PosixFile, Permissions_TargetThatMayNotBeWritten_IsRefused) {
    WriteBytes(m_folder / "text", "old");
    chmod(At("text").c_str(), 0444);
    chmod(m_folder.Path().c_str(), 0777);
    {
        const AsOrdinaryUser user;
        EXPECT_FALSE(CanWriteFile(At("text")));
        EXPECT_EQ(WriteAtomically(At("text"), "new"), "Permission denied");
    }
    EXPECT_EQ(ReadBytes(m_folder / "text"), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(PosixFile, Permissions_FolderThatTakesNoNewFile_IsRefused) {
    WriteBytes(m_folder / "text", "old");
    chmod(At("text").c_str(), 0666);
    chmod(m_folder.Path().c_str(), 0555);
    {
        const AsOrdinaryUser user;
        EXPECT_TRUE(CanWriteFile(At("text")));
        EXPECT_EQ(WriteAtomically(At("text"), "new"), "Permission denied");
        EXPECT_EQ(WriteAtomically(At("other"), "new"), "Permission denied");
    }
    chmod(m_folder.Path().c_str(), 0755);
    EXPECT_EQ(ReadBytes(m_folder / "text"), "old");
}

TEST_F(PosixFile, Permissions_FolderThatCannotBeListed_StillTakesFiles) {
    chmod(m_folder.Path().c_str(), 0733);
    {
        const AsOrdinaryUser user;
        EXPECT_EQ(WriteAtomically(At("text"), "new"), "");
        EXPECT_EQ(ReadWholeFile(At("text")), "new");
    }
    chmod(m_folder.Path().c_str(), 0755);
}

TEST_F(PosixFile, Permissions_FileThatMayNotBeRead_SaysWhy) {
    WriteBytes(m_folder / "text", "secret");
    chmod(At("text").c_str(), 0);
    const AsOrdinaryUser user;
    std::string why;
    EXPECT_EQ(ReadableFile::Open(At("text"), &why), nullptr);
    EXPECT_EQ(why, "Permission denied");
    why.clear();
    EXPECT_EQ(ReadWholeFile(At("text"), &why), std::nullopt);
    EXPECT_EQ(why, "Permission denied");
}

TEST_F(PosixFile, Reasons_OrdinaryFailures_AreTheSystemsWords) {
    std::string why;
    EXPECT_EQ(ReadWholeFile(At("none"), &why), std::nullopt);
    EXPECT_EQ(why, "No such file or directory");
    EXPECT_EQ(ReadableFile::Open(Utf8(m_folder.Path()), &why), nullptr);
    EXPECT_EQ(why, "Is a directory");
    EXPECT_EQ(WriteAtomically(Utf8(m_folder.Path()), "text"), "Is a directory");
    EXPECT_EQ(WriteAtomically(At("none/text"), "text"), "No such file or directory");
    WriteBytes(m_folder / "text", "old");
    EXPECT_EQ(WriteAtomically(At("text/below"), "text"), "Not a directory");
    EXPECT_EQ(WriteAtomically(At(std::string("text\0more", 9)), "text"), "Invalid argument");
    EXPECT_EQ(WriteAtomically(At(std::string(NAME_MAX + 1, 'n')), "text"), "File name too long");
}

TEST_F(PosixFile, Atomic_PipeAsTarget_IsRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0666), 0);
    EXPECT_FALSE(CanWriteFile(At("pipe")));
    EXPECT_NE(WriteAtomically(At("pipe"), "text"), "");
    EXPECT_TRUE(fs::is_fifo(m_folder / "pipe"));
}

TEST_F(PosixFile, Paths_AsLongAsTheyMayBe_Work) {
    constexpr std::size_t LongestPath = PATH_MAX - 1;
    std::string folder = Utf8(m_folder.Path());
    while (folder.size() + 202 < LongestPath) {
        folder += "/" + std::string(200, 'f');
        ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);
    }
    const std::string path = folder + "/" + std::string(LongestPath - folder.size() - 1, 'n');
    ASSERT_EQ(path.size(), LongestPath);
    EXPECT_EQ(WriteAtomically(path, "text"), "");
    EXPECT_EQ(WriteAtomically(path, "again"), "");
    EXPECT_EQ(ReadWholeFile(path), "again");
    EXPECT_TRUE(CanWriteFile(path));
}

TEST_F(PosixFile, Identity_Links_LeadToTheirTarget) {
    WriteBytes(m_folder / "text", "contents");
    fs::create_symlink("text", m_folder / "link");
    fs::create_symlink("none", m_folder / "dangling");
    fs::create_hard_link(m_folder / "text", m_folder / "other name");
    const auto identity = platform::FileIdentity::Of(At("text"));
    ASSERT_TRUE(identity.has_value());
    EXPECT_EQ(platform::FileIdentity::Of(At("link")), identity);
    EXPECT_EQ(platform::FileIdentity::Of(At("other name")), identity);
    EXPECT_EQ(platform::FileIdentity::Of(At("dangling")), std::nullopt);
}

TEST_F(PosixFile, Place_OfALink_IsThatOfItsTarget) {
    fs::create_symlink("text", m_folder / "link");
    const auto place = platform::FilePlace::Of(At("text"));
    EXPECT_NE(place, std::nullopt);
    EXPECT_EQ(platform::FilePlace::Of(At("link")), place) << "a target that is not there";
    WriteBytes(m_folder / "text", "contents");
    EXPECT_EQ(platform::FilePlace::Of(At("link")), place);
    fs::create_hard_link(m_folder / "text", m_folder / "other name");
    EXPECT_NE(platform::FilePlace::Of(At("other name")), place) << "a second name is another place";
    EXPECT_NE(platform::FilePlace::Of(At("TEXT")), place);
}

TEST_F(PosixFile, Read_Error_IsToldFromTheEnd) {
    // Nothing is mapped at the beginning of a process's memory.
    const auto file = ReadableFile::Open("/proc/self/mem");
    if (file == nullptr) {
        GTEST_SKIP() << "the system has no such file";
    }
    char block[8];
    EXPECT_FALSE(file->HasFailed());
    EXPECT_EQ(file->Read(block, sizeof block), 0U);
    std::string why;
    EXPECT_TRUE(file->HasFailed(&why));
    EXPECT_EQ(why, "Input/output error");
    EXPECT_EQ(file->Read(block, sizeof block), 0U);
    EXPECT_TRUE(file->HasFailed());
}

TEST_F(PosixFile, ReadWhole_FileWithoutASize_IsReadToItsEnd) {
    const auto text = ReadWholeFile("/proc/self/limits");
    ASSERT_TRUE(text.has_value());
    EXPECT_NE(text->find("Max file size"), std::string::npos);
}

}  // namespace
}  // namespace quillet::test
