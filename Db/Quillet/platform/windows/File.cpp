// Files by handles. Paths go to the system in full and with the prefix that lifts the limit of their length.
// A file is replaced through a new one in the same folder, flushed and then renamed.
#include "Quillet/platform/File.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "Quillet/platform/ContentDigest.h"
#include "Quillet/platform/FileNames.h"
#include "Quillet/platform/FileVersion.h"
#include "Quillet/platform/windows/FileHandle.h"

namespace quillet::platform {
namespace {

// Two names that some of the SDK's headers lack.
constexpr DWORD DirectoryNotSupported = 336;                               // ERROR_DIRECTORY_NOT_SUPPORTED
constexpr auto RenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);  // FileRenameInfoEx

// No call to the system takes more at a time.
constexpr std::size_t MostBytesAtOnce = std::size_t{1} << 30;

// 0 if the path names nothing.
DWORD AttributesOf(const WideString& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? 0 : attributes;
}

bool IsFolder(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsLink(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Why the path could not be opened. A folder has an error of its own.
DWORD OpenError(const WideString& path) {
    const DWORD error = GetLastError();
    return IsFolder(AttributesOf(path)) ? DirectoryNotSupported : error;
}

FileHandle OpenForReading(const std::string& path, std::string* why) {
    WideString wide;
    const DWORD error = ToSystemPath(path, wide);
    if (error != ERROR_SUCCESS) {
        Fail(error, why);
        return FileHandle();
    }
    FileHandle file = OpenExisting(wide, GENERIC_READ, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file.IsOpen()) {
        Fail(OpenError(wide), why);
    }
    return file;
}

// False on an error; count is 0 at the end.
bool ReadSome(const FileHandle& file, char* buffer, std::size_t capacity, std::size_t& count) {
    DWORD read = 0;
    const auto most = static_cast<DWORD>(std::min(capacity, MostBytesAtOnce));
    const bool succeeded = ReadFile(file.Get(), buffer, most, &read, nullptr) != 0;
    count = read;
    // The end of a pipe is an end too.
    return succeeded || GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_HANDLE_EOF;
}

std::uint64_t Joined(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

// nullopt if the system can't tell.
std::optional<FileStamp> StampOf(const FileHandle& file) {
    BY_HANDLE_FILE_INFORMATION information;
    if (GetFileInformationByHandle(file.Get(), &information) == 0) {
        return std::nullopt;
    }
    std::uint64_t volume = information.dwVolumeSerialNumber;
    std::array<std::uint64_t, 2> number{Joined(information.nFileIndexHigh, information.nFileIndexLow), 0};
    // Newer file systems have longer numbers.
    FILE_ID_INFO id;
    if (GetFileInformationByHandleEx(file.Get(), FileIdInfo, &id, sizeof id) != 0) {
        volume = id.VolumeSerialNumber;
        std::memcpy(number.data(), &id.FileId, sizeof number);
    }
    const FILETIME& changed = information.ftLastWriteTime;
    return FileStamp{{volume, number},
                     Joined(information.nFileSizeHigh, information.nFileSizeLow),
                     static_cast<std::int64_t>(Joined(changed.dwHighDateTime, changed.dwLowDateTime))};
}

class WindowsReadableFile final : public ReadableFile {
public:
    explicit WindowsReadableFile(FileHandle file) : m_file(std::move(file)) {}

    std::size_t Read(char* buffer, std::size_t capacity) override {
        std::size_t count = 0;
        if (m_error == ERROR_SUCCESS && !ReadSome(m_file, buffer, capacity, count)) {
            m_error = GetLastError();
            return 0;
        }
        return count;
    }

    bool HasFailed(std::string* why) const override {
        return m_error != ERROR_SUCCESS && !Fail(m_error, why);
    }

    std::optional<FileStamp> Stamp() const override { return StampOf(m_file); }

private:
    FileHandle m_file;
    DWORD m_error = ERROR_SUCCESS;
};

// The file to be replaced: the one that the path leads to, every link followed. It need not exist.
struct Target {
    WideString m_path;
    // Empty where the target does not exist.
    FileHandle m_file;
    DWORD m_attributes = 0;
};

// Why a file with these attributes is not replaced, or ERROR_SUCCESS. The read-only mark counts even where
// access rights allow writing.
DWORD RefusalOf(DWORD attributes) {
    if (IsFolder(attributes)) {
        return DirectoryNotSupported;
    }
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

// The error, or ERROR_SUCCESS. If nothing exists at the path, it is ERROR_FILE_NOT_FOUND, and the target's
// path is set.
DWORD OpenTarget(const std::string& path, Target& target) {
    const DWORD error = ToSystemPath(path, target.m_path);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    // Opening a device can have an effect on it.
    if (target.m_path.starts_with(OLESTR("\\\\.\\"))) {
        return ERROR_NOT_SUPPORTED;
    }
    target.m_file = OpenExisting(target.m_path, GENERIC_WRITE | READ_CONTROL, FILE_ATTRIBUTE_NORMAL);
    if (!target.m_file.IsOpen()) {
        return OpenError(target.m_path);
    }
    if (GetFileType(target.m_file.Get()) != FILE_TYPE_DISK) {
        return ERROR_NOT_SUPPORTED;
    }
    BY_HANDLE_FILE_INFORMATION information;
    if (GetFileInformationByHandle(target.m_file.Get(), &information) == 0) {
        return GetLastError();
    }
    target.m_attributes = information.dwFileAttributes;
    WideString final = FinalPath(target.m_file);
    // Another writer may have moved it aside just now.
    if (!final.empty() && !IsAside(NameOf(final))) {
        target.m_path = std::move(final);
    } else if (IsLink(AttributesOf(target.m_path))) {
        // Without a link, a file system that can't tell final paths does no harm.
        return ERROR_NOT_SUPPORTED;
    }
    return RefusalOf(target.m_attributes);
}

// Makes the path that of the missing file to which a link leads: the system creates the file, and removes it
// when it is closed. Any other path stays.
DWORD FollowDanglingLink(WideString& path) {
    if (!IsLink(AttributesOf(path))) {
        return ERROR_SUCCESS;
    }
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, ShareEverything, nullptr,
                                      CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!file.IsOpen()) {
        return GetLastError();
    }
    path = FinalPath(file);
    return path.empty() ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
}

WideString NewPathBeside(const WideString& target, const char* ending) {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return PathBeside(target, NewNameBeside(NameOf(target), GetCurrentProcessId(), now.QuadPart, ending));
}

// Removes what writers of this target left when they were killed. A writer has its temporary file open for
// writing, so one that can be opened without sharing that was left behind.
void RemoveAbandoned(const WideString& target) {
    const WideString pattern = PathBeside(target, PrefixBeside(NameOf(target)) + "-*" + TemporaryEnding);
    WIN32_FIND_DATAW found;
    const HANDLE first = FindFirstFileW(pattern.c_str(), &found);
    if (first == INVALID_HANDLE_VALUE) {
        return;
    }
    const std::unique_ptr<void, decltype(&FindClose)> list(first, FindClose);
    do {
        const WideString path = FolderOf(target) + found.cFileName;
        const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ | DELETE,
                                          FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                          FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    } while (FindNextFileW(list.get(), &found) != 0);
}

// Gets the access list of a file, for the one that replaces it; empty if the file system has no such lists.
// Returns the error, or ERROR_SUCCESS: without the list the new file might be open to more people.
DWORD AccessListOf(const FileHandle& file, std::vector<BYTE>& list) {
    DWORD size = 0;
    for (;;) {
        if (GetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, list.data(), size, &size) != 0) {
            return ERROR_SUCCESS;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER || size <= list.size()) {
            list.clear();
            return error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION ? ERROR_SUCCESS : error;
        }
        list.resize(size);
    }
}

// Renames an open file; the error, or ERROR_SUCCESS. The class decides how: with the newer one, the file can
// replace one that is open.
DWORD Rename(const FileHandle& file, const WideString& path, FILE_INFO_BY_HANDLE_CLASS how, DWORD flags) {
    const std::size_t bytes = path.size() * sizeof(WCHAR);
    // The structure has room for the terminator.
    std::vector<BYTE> buffer(sizeof(FILE_RENAME_INFO) + bytes);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    // The first member holds the flags of the newer class, or the boolean of the older one.
    std::memcpy(info, &flags, sizeof flags);
    info->FileNameLength = static_cast<DWORD>(bytes);
    std::memcpy(info->FileName, path.data(), bytes);
    const auto size = static_cast<DWORD>(buffer.size());
    return SetFileInformationByHandle(file.Get(), how, info, size) != 0 ? ERROR_SUCCESS : GetLastError();
}

class WindowsAtomicFile final : public AtomicFile {
public:
    explicit WindowsAtomicFile(WideString target) : m_target(std::move(target)) {}
    ~WindowsAtomicFile() override { Remove(); }

    // With the rights and the attributes of the target, if it exists.
    bool Open(const Target& target, std::string* why) {
        // The other attributes are the file system's own, or mean something else to the call.
        constexpr DWORD Kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                               FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_ENCRYPTED;
        std::vector<BYTE> accessList;
        DWORD error = target.m_file.IsOpen() ? AccessListOf(target.m_file, accessList) : ERROR_SUCCESS;
        if (error != ERROR_SUCCESS) {
            return Fail(error, why);
        }
        SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), accessList.data(), FALSE};
        RemoveAbandoned(m_target);
        constexpr int MostAttempts = 100;
        error = ERROR_FILE_EXISTS;
        for (int attempt = 0; attempt < MostAttempts && error == ERROR_FILE_EXISTS; ++attempt) {
            WideString name = NewPathBeside(m_target, TemporaryEnding);
            // For a moment it is open under the target's name, where it must not keep others out.
            m_file = FileHandle(CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, ShareEverything,
                                            accessList.empty() ? nullptr : &security, CREATE_NEW,
                                            target.m_attributes & Kept, nullptr));
            if (m_file.IsOpen()) {
                m_temporary = std::move(name);
                return true;
            }
            error = GetLastError();
        }
        return Fail(error, why);
    }

    bool Write(std::string_view bytes, std::string* why) override {
        while (m_error == ERROR_SUCCESS && !bytes.empty()) {
            DWORD written = 0;
            const auto most = static_cast<DWORD>(std::min(bytes.size(), MostBytesAtOnce));
            if (WriteFile(m_file.Get(), bytes.data(), most, &written, nullptr) == 0) {
                m_error = GetLastError();
            }
            m_digest.Add(bytes.substr(0, written));
            bytes.remove_prefix(written);
        }
        return m_error == ERROR_SUCCESS || Fail(m_error, why);
    }

    bool Commit(std::string* why) override { return Finish(nullptr, why); }
    bool CommitOver(FileVersion& seen, std::string* why) override { return Finish(&seen, why); }

private:
    bool Finish(FileVersion* seen, std::string* why) {
        if (m_error == ERROR_SUCCESS && FlushFileBuffers(m_file.Get()) == 0) {
            m_error = GetLastError();
        }
        if (m_error == ERROR_SUCCESS && seen != nullptr && !seen->Matches(TargetNow(), why)) {
            Remove();
            return false;
        }
        if (m_error == ERROR_SUCCESS) {
            m_error = seen != nullptr && seen->IsOfNothing() ? CreateNew() : ReplaceTarget();
        }
        if (m_error == ERROR_SUCCESS && seen != nullptr) {
            *seen = Written();
        }
        Remove();
        if (m_error == ERROR_SUCCESS) {
            return true;
        }
        Fail(m_error, why);
        if (why != nullptr && !m_aside.empty()) {
            *why += "; the old file is " + DisplayPath(m_aside);
        }
        return false;
    }

    FileVersion TargetNow() const {
        FileHandle file = OpenExisting(m_target, GENERIC_READ, FILE_FLAG_SEQUENTIAL_SCAN);
        if (!file.IsOpen()) {
            return GetLastError() == ERROR_FILE_NOT_FOUND ? FileVersion() : FileVersion(std::nullopt, 0);
        }
        WindowsReadableFile target(std::move(file));
        return FileVersion::Of(target);
    }

    // The time of the last change is final only once no writer has the file open. A file that took the name
    // in between has another identity.
    FileVersion Written() {
        std::optional<FileStamp> stamp = StampOf(m_file);
        m_file.Close();
        const FileHandle file = OpenExisting(m_target, FILE_READ_ATTRIBUTES, FILE_ATTRIBUTE_NORMAL);
        const std::optional<FileStamp> now = file.IsOpen() ? StampOf(file) : std::nullopt;
        if (stamp && now && now->m_identity == stamp->m_identity) {
            stamp->m_changed = now->m_changed;
        }
        return {stamp, m_digest.Value()};
    }

    // The error, or ERROR_SUCCESS.
    DWORD CreateNew() {
        const DWORD error = Rename(m_file, m_target, FileRenameInfo, FALSE);
        if (error == ERROR_SUCCESS) {
            m_temporary.clear();
        }
        return error;
    }

    // The error, or ERROR_SUCCESS.
    DWORD ReplaceTarget() {
        // Something else may be there by now.
        const DWORD refusal = RefusalOf(AttributesOf(m_target));
        if (refusal != ERROR_SUCCESS) {
            return refusal;
        }
        // In one step, even while others read the target. If the file system knows only the older way: in one
        // step if nobody has the target open, else in two.
        DWORD error = Rename(m_file, m_target, RenameInfoEx,
                             FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS);
        if (error != ERROR_SUCCESS) {
            error = Rename(m_file, m_target, FileRenameInfo, TRUE);
        }
        if (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
            error == ERROR_ALREADY_EXISTS) {
            error = ReplaceOpenTarget(error);
        }
        if (error == ERROR_SUCCESS) {
            m_temporary.clear();
        }
        return error;
    }

    // An open file that can't be replaced can still be renamed; error is why it was not replaced. The old
    // file gets an ending that nobody removes: if the process ends here, it is the only complete file.
    DWORD ReplaceOpenTarget(DWORD error) {
        const WideString aside = NewPathBeside(m_target, AsideEnding);
        if (MoveFileExW(m_target.c_str(), aside.c_str(), 0) == 0) {
            // The words for this error say that the target is open elsewhere.
            return GetLastError() == ERROR_SHARING_VIOLATION ? ERROR_SHARING_VIOLATION : error;
        }
        const DWORD failed = Rename(m_file, m_target, FileRenameInfo, FALSE);
        if (failed != ERROR_SUCCESS) {
            if (MoveFileExW(aside.c_str(), m_target.c_str(), 0) == 0) {
                m_aside = aside;
            }
            return failed;
        }
        DeleteFileW(aside.c_str());
        return ERROR_SUCCESS;
    }

    void Remove() noexcept {
        m_file.Close();
        if (!m_temporary.empty()) {
            DeleteFileW(m_temporary.c_str());
            m_temporary.clear();
        }
    }

    WideString m_target;
    // The path of the old file if it could not be moved back to its own name.
    WideString m_aside;
    FileHandle m_file;
    WideString m_temporary;
    ContentDigest m_digest;
    DWORD m_error = ERROR_SUCCESS;
};

}  // namespace

std::optional<FileIdentity> FileIdentity::Of(const std::string& path) {
    WideString wide;
    if (ToSystemPath(path, wide) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    // Folders can't be opened this way. Exclusive use by others is no obstacle.
    const FileHandle file = OpenExisting(wide, FILE_READ_ATTRIBUTES, FILE_ATTRIBUTE_NORMAL);
    const std::optional<FileStamp> stamp = file.IsOpen() ? StampOf(file) : std::nullopt;
    return stamp ? std::optional(stamp->m_identity) : std::nullopt;
}

std::optional<FilePlace> FilePlace::Of(const std::string& path) {
    WideString wide;
    if (ToSystemPath(path, wide) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    {
        const FileHandle file(CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, ShareEverything, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        WideString final = file.IsOpen() ? FinalPath(file) : WideString();
        if (!final.empty() && !IsAside(NameOf(final))) {
            wide = std::move(final);
        }
    }
    const FileHandle folder(CreateFileW(FolderOf(wide).c_str(), FILE_READ_ATTRIBUTES, ShareEverything,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    const std::optional<FileStamp> stamp = folder.IsOpen() ? StampOf(folder) : std::nullopt;
    if (!stamp) {
        return std::nullopt;
    }
    FoldCase(wide);
    return FilePlace(stamp->m_identity, NameOf(wide));
}

ReadableFile::ReadableFile() = default;
ReadableFile::~ReadableFile() = default;

std::unique_ptr<ReadableFile> ReadableFile::Open(const std::string& path, std::string* why) {
    FileHandle file = OpenForReading(path, why);
    if (!file.IsOpen()) {
        return nullptr;
    }
    return std::make_unique<WindowsReadableFile>(std::move(file));
}

bool PathExists(const std::string& path) {
    WideString wide;
    return ToSystemPath(path, wide) == ERROR_SUCCESS &&
           GetFileAttributesW(wide.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsRegularFile(const std::string& path) {
    WideString wide;
    const DWORD attributes = ToSystemPath(path, wide) == ERROR_SUCCESS ? GetFileAttributesW(wide.c_str())
                                                                       : INVALID_FILE_ATTRIBUTES;
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0;
}

bool CanWriteFile(const std::string& path) {
    Target target;
    return OpenTarget(path, target) == ERROR_SUCCESS;
}

AtomicFile::AtomicFile() = default;
AtomicFile::~AtomicFile() = default;

std::unique_ptr<AtomicFile> AtomicFile::Create(const std::string& target, std::string* why) {
    Target location;
    DWORD error = OpenTarget(target, location);
    if (error == ERROR_FILE_NOT_FOUND) {
        error = FollowDanglingLink(location.m_path);
    }
    if (error != ERROR_SUCCESS) {
        Fail(error, why);
        return nullptr;
    }
    auto file = std::make_unique<WindowsAtomicFile>(std::move(location.m_path));
    if (!file->Open(location, why)) {
        return nullptr;
    }
    return file;
}

}  // namespace quillet::platform
