// Files by descriptors. A file is replaced through a new one in the same folder, flushed and then renamed;
// all names are resolved relative to the open folder, so a long path costs nothing and a moved folder does no
// harm.
#include "Quillet/platform/File.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <utility>

#include "Quillet/platform/ContentDigest.h"
#include "Quillet/platform/FileNames.h"
#include "Quillet/platform/FileVersion.h"
#include "Quillet/platform/posix/Descriptor.h"
#include "Quillet/platform/posix/FileAttributes.h"
#include "Quillet/platform/posix/FileStatus.h"

namespace quillet::platform {
namespace {

Descriptor OpenForReading(const std::string& path, struct stat& status, std::string* why) {
    Descriptor file = OpenAt(AT_FDCWD, path, O_RDONLY | O_NOCTTY);
    if (!file.IsOpen() || ::fstat(file.Get(), &status) == -1) {
        Fail(errno, why);
        return Descriptor();
    }
    if (S_ISDIR(status.st_mode)) {
        Fail(EISDIR, why);
        return Descriptor();
    }
    return file;
}

ssize_t ReadSome(const Descriptor& file, char* buffer, std::size_t capacity) {
    return Retried([&] { return ::read(file.Get(), buffer, capacity); });
}

class PosixReadableFile final : public ReadableFile {
public:
    explicit PosixReadableFile(Descriptor file) : m_file(std::move(file)) {}

    std::size_t Read(char* buffer, std::size_t capacity) override {
        const ssize_t count = m_error != 0 ? 0 : ReadSome(m_file, buffer, capacity);
        if (count < 0) {
            m_error = errno;
            return 0;
        }
        return static_cast<std::size_t>(count);
    }

    bool HasFailed(std::string* why) const override { return m_error != 0 && !Fail(m_error, why); }

    std::optional<FileStamp> Stamp() const override { return StampOf(m_file); }

private:
    Descriptor m_file;
    int m_error = 0;
};

// Where a path leads once every link is followed: a name in an open folder. The name need not exist.
struct Location {
    Descriptor folder;
    std::string name;
};

Descriptor OpenFolder(int base, const std::string& path) {
    Descriptor folder = OpenAt(base, path, O_RDONLY | O_DIRECTORY);
#if defined(O_PATH)
    if (!folder.IsOpen() && errno == EACCES) {
        // A folder that may be entered but not listed still takes files.
        folder = OpenAt(base, path, O_PATH | O_DIRECTORY);
    }
#endif
    return folder;
}

// The target of a link; empty, with errno EINVAL, if the name is not a link.
std::string ReadLink(int folder, const std::string& name) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(folder, name.c_str(), target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

// The error, or 0.
int Locate(std::string path, Location& location) {
    constexpr int MostLinks = 40;
    location.folder = Descriptor();
    for (int links = 0; links <= MostLinks; ++links) {
        if (path.empty()) {
            return ENOENT;
        }
        const std::size_t slash = path.rfind('/');
        const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
        std::string name = path.substr(nameStart);
        if (name.empty() || name == "." || name == "..") {
            return EISDIR;
        }
        if (name.find('\0') != std::string::npos) {
            return EINVAL;
        }
        const int base = location.folder.IsOpen() ? location.folder.Get() : AT_FDCWD;
        Descriptor folder = OpenFolder(base, nameStart == 0 ? std::string(".") : path.substr(0, nameStart));
        if (!folder.IsOpen()) {
            return errno;
        }
        path = ReadLink(folder.Get(), name);
        const int error = errno;
        location = {std::move(folder), std::move(name)};
        if (path.empty()) {
            return error == EINVAL || error == ENOENT ? 0 : error;
        }
    }
    return ELOOP;
}

// Opens the regular file that the name stands for, to see whether it may be written; the error, or 0.
int OpenWritable(const Location& location, Descriptor& file, struct stat& status) {
    if (::fstatat(location.folder.Get(), location.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == -1) {
        return errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    if (!S_ISREG(status.st_mode)) {
        return ENOTSUP;
    }
    file = OpenAt(location.folder.Get(), location.name, O_WRONLY | O_NOCTTY);
    return file.IsOpen() ? 0 : errno;
}

// Whether the name in the folder stands for the open file.
bool IsNameOf(const Descriptor& folder, const std::string& name, const Descriptor& file) {
    struct stat named {};
    struct stat open {};
    return ::fstatat(folder.Get(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(file.Get(), &open) == 0 && IdentityOf(named) == IdentityOf(open);
}

// The writer of a temporary file holds its lock, so one that can be locked here was left behind.
void RemoveUnlessHeld(const Descriptor& folder, const char* name) {
    struct stat status {};
    const Descriptor file = OpenAt(folder.Get(), name, O_RDWR | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK);
    if (file.IsOpen() && ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && Hold(file) == 0) {
        ::unlinkat(folder.Get(), name, 0);
    }
}

// Removes what writers of this target left when they were killed. What can't be removed stays.
void RemoveAbandoned(const Location& target) {
    const int listed =
        Retried([&] { return ::openat(target.folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    const std::unique_ptr<DIR, int (*)(DIR*)> list(listed == -1 ? nullptr : ::fdopendir(listed), ::closedir);
    if (!list) {
        Descriptor(listed).Close();
        return;
    }
    while (const dirent* const entry = ::readdir(list.get())) {
        if (IsTemporaryBeside(entry->d_name, target.name)) {
            RemoveUnlessHeld(target.folder, entry->d_name);
        }
    }
}

class PosixAtomicFile final : public AtomicFile {
public:
    explicit PosixAtomicFile(Location target) : m_target(std::move(target)) {}
    ~PosixAtomicFile() override { Remove(); }

    bool Open(std::string* why) {
        Descriptor old;
        struct stat status {};
        const int error = OpenWritable(m_target, old, status);
        if (error != 0 && error != ENOENT) {
            return Fail(error, why);
        }
        RemoveAbandoned(m_target);
        if (!MakeTemporary(old.IsOpen(), why)) {
            return false;
        }
        return !old.IsOpen() || TakeOver(old, status, why);
    }

    bool Write(std::string_view bytes, std::string* why) override {
        if (m_error != 0) {
            return Fail(m_error, why);
        }
        while (!bytes.empty()) {
            const ssize_t count = Retried([&] { return ::write(m_file.Get(), bytes.data(), bytes.size()); });
            if (count < 0) {
                m_error = errno;
                return Fail(m_error, why);
            }
            const auto written = static_cast<std::size_t>(count);
            m_digest.Add(bytes.substr(0, written));
            bytes.remove_prefix(written);
        }
        return true;
    }

    bool Commit(std::string* why) override { return Finish(nullptr, why); }
    bool CommitOver(FileVersion& seen, std::string* why) override { return Finish(&seen, why); }

private:
    bool MakeTemporary(bool replaces, std::string* why) {
        // Nobody may look into the new file before it has the mode of the old one.
        constexpr mode_t Private = S_IRUSR | S_IWUSR;
        constexpr mode_t AsTheMaskAllows = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
        constexpr int MostAttempts = 100;
        errno = EEXIST;
        for (int attempt = 0; attempt < MostAttempts && errno == EEXIST; ++attempt) {
            const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
            std::string name =
                NewNameBeside(m_target.name, static_cast<unsigned long>(::getpid()), now, TemporaryEnding);
            m_file = OpenAt(m_target.folder.Get(), name, O_WRONLY | O_CREAT | O_EXCL,
                            replaces ? Private : AsTheMaskAllows);
            if (m_file.IsOpen()) {
                m_temporary = std::move(name);
                if (LockTemporary()) {
                    return true;
                }
                Remove();
                errno = EEXIST;
            }
        }
        return Fail(errno, why);
    }

    // False if another writer removed the file, or is about to, before it was locked. Where files can't be
    // locked, nobody removes them.
    bool LockTemporary() {
        const int error = Hold(m_file);
        return error == 0 ? IsNameOf(m_target.folder, m_temporary, m_file) : error != EWOULDBLOCK;
    }

    // Owner and group are kept where the system lets us; the mode and the access list always. The set-user-ID
    // and set-group-ID bits are dropped, as a write into the file itself would drop them.
    bool TakeOver(const Descriptor& old, const struct stat& status, std::string* why) {
        constexpr mode_t Permissions = S_IRWXU | S_IRWXG | S_IRWXO;
        constexpr auto AnyOwner = static_cast<uid_t>(-1);
        const int file = m_file.Get();
        [[maybe_unused]] const bool kept =
            ::fchown(file, status.st_uid, status.st_gid) == 0 || ::fchown(file, AnyOwner, status.st_gid) == 0;
        const int error = CopyAttributes(old.Get(), file);
        if (error != 0) {
            return Fail(error, why);
        }
        return ::fchmod(file, status.st_mode & Permissions) != -1 || Fail(errno, why);
    }

    bool Finish(FileVersion* seen, std::string* why) {
        if (m_error == 0) {
            m_error = Flush();
        }
        if (m_error == 0 && seen != nullptr && !seen->Matches(TargetNow(), why)) {
            Remove();
            return false;
        }
        if (m_error == 0) {
            m_error = seen != nullptr && seen->IsOfNothing() ? CreateNew() : Replace();
        }
        if (m_error == 0 && seen != nullptr) {
            *seen = FileVersion(StampOf(m_file), m_digest.Value());
        }
        Remove();
        return m_error == 0 || Fail(m_error, why);
    }

    FileVersion TargetNow() const {
        Descriptor file =
            OpenAt(m_target.folder.Get(), m_target.name, O_RDONLY | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK);
        if (!file.IsOpen()) {
            return errno == ENOENT ? FileVersion() : FileVersion(std::nullopt, 0);
        }
        PosixReadableFile target(std::move(file));
        return FileVersion::Of(target);
    }

    // The error, or 0.
    int Flush() {
        if (Retried([&] { return ::fsync(m_file.Get()); }) == -1) {
            return errno;
        }
        // Closing a copy reports what closing the file would report, and the lock stays.
        Descriptor copy(::fcntl(m_file.Get(), F_DUPFD_CLOEXEC, 0));
        return copy.IsOpen() ? copy.Close() : errno;
    }

    // The error, or 0.
    int Replace() {
        const int folder = m_target.folder.Get();
        if (::renameat(folder, m_temporary.c_str(), folder, m_target.name.c_str()) == -1) {
            return errno;
        }
        m_temporary.clear();
        FlushFolder();
        return 0;
    }

    // The error, or 0. A hard link is made only if nothing has the name.
    int CreateNew() {
        const int folder = m_target.folder.Get();
        if (::linkat(folder, m_temporary.c_str(), folder, m_target.name.c_str(), 0) == -1) {
            // Some file systems have no hard links. There the check just made has to do.
            return errno == EPERM || errno == ENOTSUP || errno == ENOSYS ? Replace() : errno;
        }
        RemoveTemporary();
        FlushFolder();
        return 0;
    }

    // The target is in place by now, so a failure here is not one of the commit.
    void FlushFolder() const {
        static_cast<void>(Retried([&] { return ::fsync(m_target.folder.Get()); }));
    }

    void RemoveTemporary() noexcept {
        if (!m_temporary.empty()) {
            ::unlinkat(m_target.folder.Get(), m_temporary.c_str(), 0);
            m_temporary.clear();
        }
    }

    void Remove() noexcept {
        RemoveTemporary();
        m_file.Close();
    }

    Location m_target;
    Descriptor m_file;
    std::string m_temporary;
    ContentDigest m_digest;
    int m_error = 0;
};

}  // namespace

std::optional<FileIdentity> FileIdentity::Of(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || ::stat(path.c_str(), &status) == -1 ||
        S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    return IdentityOf(status);
}

std::optional<FilePlace> FilePlace::Of(const std::string& path) {
    Location location;
    struct stat folder {};
    if (Locate(path, location) != 0 || ::fstat(location.folder.Get(), &folder) == -1) {
        return std::nullopt;
    }
    return FilePlace(IdentityOf(folder), location.name);
}

ReadableFile::ReadableFile() = default;
ReadableFile::~ReadableFile() = default;

std::unique_ptr<ReadableFile> ReadableFile::Open(const std::string& path, std::string* why) {
    struct stat status {};
    Descriptor file = OpenForReading(path, status, why);
    if (!file.IsOpen()) {
        return nullptr;
    }
    return std::make_unique<PosixReadableFile>(std::move(file));
}

bool PathExists(const std::string& path) {
    struct stat status {};
    return path.find('\0') == std::string::npos && ::lstat(path.c_str(), &status) == 0;
}

bool IsRegularFile(const std::string& path) {
    struct stat status {};
    return path.find('\0') == std::string::npos && ::stat(path.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode);
}

bool CanWriteFile(const std::string& path) {
    Location location;
    Descriptor file;
    struct stat status {};
    return Locate(path, location) == 0 && OpenWritable(location, file, status) == 0;
}

AtomicFile::AtomicFile() = default;
AtomicFile::~AtomicFile() = default;

std::unique_ptr<AtomicFile> AtomicFile::Create(const std::string& target, std::string* why) {
    Location location;
    const int error = Locate(target, location);
    if (error != 0) {
        Fail(error, why);
        return nullptr;
    }
    auto file = std::make_unique<PosixAtomicFile>(std::move(location));
    if (!file->Open(why)) {
        return nullptr;
    }
    return file;
}

}  // namespace quillet::platform
