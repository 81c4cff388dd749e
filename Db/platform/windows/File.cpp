// Files by handles. Paths go to the system in full and with the prefix that lifts the limit of their length.
// A file is replaced through a new one in the same folder, flushed and then renamed.
#include "platform/File.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/Text.h"

namespace quillet::platform {
namespace {

// Two names that some of the SDK's headers lack.
constexpr DWORD DirectoryNotSupported = 336;                               // ERROR_DIRECTORY_NOT_SUPPORTED
constexpr auto RenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);  // FileRenameInfoEx

constexpr DWORD ShareEverything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// No call to the system takes more at a time.
constexpr std::size_t MostBytesAtOnce = std::size_t{1} << 30;

std::string ToUtf8(WideView wide) {
    std::string text(wide.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()),
                                           text.data(), static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// The system's words, without the line end and the full stop behind them.
std::string Reason(DWORD error) {
    std::array<WCHAR, 512> buffer;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
    std::string reason = ToUtf8(WideView(buffer.data(), length));
    reason.erase(reason.find_last_not_of(".\r\n ") + 1);
    return reason.empty() ? "system error " + std::to_string(error) : reason;
}

// Reports the error, if asked; always false.
bool Fail(DWORD error, std::string* why) {
    if (why != nullptr) {
        *why = Reason(error);
    }
    return false;
}

class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE value) : m_value(value) {}
    Handle(Handle&& other) noexcept : m_value(std::exchange(other.m_value, INVALID_HANDLE_VALUE)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Handle() { Close(); }

    bool IsOpen() const { return m_value != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_value; }

    void Close() {
        if (IsOpen()) {
            CloseHandle(std::exchange(m_value, INVALID_HANDLE_VALUE));
        }
    }

private:
    HANDLE m_value = INVALID_HANDLE_VALUE;
};

// Asks for a text whose length the call tells: the length without the zero when it fits, the room it needs
// otherwise, 0 on an error.
template <typename Call>
WideString TextOf(Call call) {
    WideString text(MAX_PATH, 0);
    for (;;) {
        const DWORD length = call(text.data(), static_cast<DWORD>(text.size()));
        const bool fits = length < text.size();
        text.resize(length);
        if (fits) {
            return text;
        }
    }
}

// The full path in the form that may be longer than MAX_PATH; devices keep the form of theirs.
WideString WithoutLimit(const WideString& full) {
    if (full.starts_with(OLESTR("\\\\?\\")) || full.starts_with(OLESTR("\\\\.\\"))) {
        return full;
    }
    if (full.starts_with(OLESTR("\\\\"))) {
        return OLESTR("\\\\?\\UNC\\") + full.substr(2);
    }
    return OLESTR("\\\\?\\") + full;
}

// The error, or ERROR_SUCCESS.
DWORD ToSystemPath(const std::string& path, WideString& wide) {
    // A path is far shorter; the limit keeps the count an int.
    constexpr std::size_t LongestPath = 0x20000;
    if (path.empty()) {
        return ERROR_PATH_NOT_FOUND;
    }
    if (path.size() > LongestPath) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    if (path.find('\0') != std::string::npos) {
        return ERROR_INVALID_NAME;
    }
    wide.resize(path.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), static_cast<int>(path.size()),
                            wide.data(), static_cast<int>(wide.size()));
    if (length == 0) {
        return GetLastError();
    }
    wide.resize(static_cast<std::size_t>(length));
    const WideString full = TextOf(
        [&](WCHAR* text, DWORD capacity) { return GetFullPathNameW(wide.c_str(), capacity, text, nullptr); });
    if (full.empty()) {
        return GetLastError();
    }
    wide = WithoutLimit(full);
    return ERROR_SUCCESS;
}

Handle OpenExisting(const WideString& path, DWORD access, DWORD flags) {
    return Handle(CreateFileW(path.c_str(), access, ShareEverything, nullptr, OPEN_EXISTING, flags, nullptr));
}

// Why the path could not be opened: for a folder, that it is one.
DWORD OpenError(const WideString& path) {
    const DWORD error = GetLastError();
    const DWORD attributes = error == ERROR_ACCESS_DENIED ? GetFileAttributesW(path.c_str()) : 0;
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return isFolder ? DirectoryNotSupported : error;
}

Handle OpenForReading(const std::string& path, std::string* why) {
    WideString wide;
    const DWORD error = ToSystemPath(path, wide);
    if (error != ERROR_SUCCESS) {
        Fail(error, why);
        return Handle();
    }
    Handle file = OpenExisting(wide, GENERIC_READ, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file.IsOpen()) {
        Fail(OpenError(wide), why);
    }
    return file;
}

// False on an error; count is 0 at the end.
bool ReadSome(const Handle& file, char* buffer, std::size_t capacity, std::size_t& count) {
    DWORD read = 0;
    const auto most = static_cast<DWORD>(std::min(capacity, MostBytesAtOnce));
    const bool succeeded = ReadFile(file.Get(), buffer, most, &read, nullptr) != 0;
    count = read;
    // The end of a pipe is one too.
    return succeeded || GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_HANDLE_EOF;
}

class WindowsReadableFile final : public ReadableFile {
public:
    explicit WindowsReadableFile(Handle file) : m_file(std::move(file)) {}

    std::size_t Read(char* buffer, std::size_t capacity) override {
        std::size_t count = 0;
        return ReadSome(m_file, buffer, capacity, count) ? count : 0;
    }

private:
    Handle m_file;
};

// What is replaced: the file that the path leads to once every link is followed. It need not exist.
struct Target {
    WideString m_path;
    // Empty where the target does not exist.
    Handle m_file;
};

WideString FinalPath(const Handle& file) {
    return TextOf([&](WCHAR* text, DWORD capacity) {
        return GetFinalPathNameByHandleW(file.Get(), text, capacity, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    });
}

// Where a link leads to that points to nothing: the system makes the file, and removes it when it is closed.
DWORD FollowDanglingLink(WideString& path) {
    const Handle file(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, ShareEverything, nullptr, CREATE_NEW,
                                  FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!file.IsOpen()) {
        return GetLastError();
    }
    path = FinalPath(file);
    return path.empty() ? GetLastError() : ERROR_SUCCESS;
}

// The error, or ERROR_SUCCESS. The target is open for writing then, if it exists.
DWORD Locate(const std::string& path, Target& target) {
    const DWORD error = ToSystemPath(path, target.m_path);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    target.m_file = OpenExisting(target.m_path, GENERIC_WRITE | READ_CONTROL, FILE_ATTRIBUTE_NORMAL);
    if (!target.m_file.IsOpen()) {
        const DWORD reason = OpenError(target.m_path);
        if (reason != ERROR_FILE_NOT_FOUND) {
            return reason;
        }
        const bool isLink = GetFileAttributesW(target.m_path.c_str()) != INVALID_FILE_ATTRIBUTES;
        return isLink ? FollowDanglingLink(target.m_path) : ERROR_SUCCESS;
    }
    if (GetFileType(target.m_file.Get()) != FILE_TYPE_DISK) {
        return ERROR_NOT_SUPPORTED;
    }
    WideString final = FinalPath(target.m_file);
    if (final.empty()) {
        return GetLastError();
    }
    target.m_path = std::move(final);
    return ERROR_SUCCESS;
}

// Does not depend on the target's name, which may be as long as a name can be.
WideString TemporaryNameBeside(const WideString& target) {
    static std::atomic<unsigned> s_counter{0};
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    std::array<char, 64> name;
    const int length =
        std::snprintf(name.data(), name.size(), ".quillet-%lx-%x-%llx.tmp", GetCurrentProcessId(),
                      s_counter++, static_cast<unsigned long long>(now.QuadPart));
    WideString path = target.substr(0, target.find_last_of(OLESTR("\\/")) + 1);
    path.append(name.begin(), name.begin() + length);
    return path;
}

// The access list of a file, to make another one with; empty where the system does not tell.
std::vector<BYTE> AccessListOf(const Handle& file) {
    DWORD size = 0;
    GetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<BYTE> list(size);
    if (size != 0 &&
        GetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, list.data(), size, &size) == 0) {
        list.clear();
    }
    return list;
}

// Renames an open file. The class decides how: by the newer one the file takes the place of one that is open.
bool Rename(const Handle& file, const WideString& path, FILE_INFO_BY_HANDLE_CLASS how, DWORD flags) {
    const std::size_t bytes = path.size() * sizeof(WCHAR);
    // The structure has room for the zero.
    std::vector<BYTE> buffer(sizeof(FILE_RENAME_INFO) + bytes);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    // The flags of the newer class and the truth value of the older one are the first member.
    std::memcpy(info, &flags, sizeof flags);
    info->FileNameLength = static_cast<DWORD>(bytes);
    std::memcpy(info->FileName, path.data(), bytes);
    return SetFileInformationByHandle(file.Get(), how, info, static_cast<DWORD>(buffer.size())) != 0;
}

class WindowsAtomicFile final : public AtomicFile {
public:
    explicit WindowsAtomicFile(WideString target) : m_target(std::move(target)) {}
    ~WindowsAtomicFile() override { Remove(); }

    // The target it replaces is open, or none.
    bool Open(const Handle& old, std::string* why) {
        std::vector<BYTE> accessList;
        DWORD attributes = FILE_ATTRIBUTE_NORMAL;
        BY_HANDLE_FILE_INFORMATION information;
        if (old.IsOpen()) {
            accessList = AccessListOf(old);
            if (GetFileInformationByHandle(old.Get(), &information) != 0) {
                attributes = information.dwFileAttributes;
            }
        }
        SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), accessList.data(), FALSE};
        constexpr int MostAttempts = 100;
        for (int attempt = 0; attempt < MostAttempts; ++attempt) {
            WideString name = TemporaryNameBeside(m_target);
            m_file = Handle(
                CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                            accessList.empty() ? nullptr : &security, CREATE_NEW, attributes, nullptr));
            if (m_file.IsOpen()) {
                m_temporary = std::move(name);
                return true;
            }
            if (GetLastError() != ERROR_FILE_EXISTS) {
                break;
            }
        }
        return Fail(GetLastError(), why);
    }

    bool Write(std::string_view bytes, std::string* why) override {
        while (m_error == ERROR_SUCCESS && !bytes.empty()) {
            DWORD written = 0;
            const auto most = static_cast<DWORD>(std::min(bytes.size(), MostBytesAtOnce));
            if (WriteFile(m_file.Get(), bytes.data(), most, &written, nullptr) == 0) {
                m_error = GetLastError();
            }
            bytes.remove_prefix(written);
        }
        return m_error == ERROR_SUCCESS || Fail(m_error, why);
    }

    bool Commit(std::string* why) override {
        if (m_error == ERROR_SUCCESS) {
            m_error = Publish();
        }
        Remove();
        return m_error == ERROR_SUCCESS || Fail(m_error, why);
    }

private:
    // The error, or ERROR_SUCCESS.
    DWORD Publish() {
        if (FlushFileBuffers(m_file.Get()) == 0) {
            return GetLastError();
        }
        // In one step, also under readers; then, where the file system knows only the older way, in one step
        // if nobody has the target open.
        if (Rename(m_file, m_target, RenameInfoEx,
                   FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS) ||
            Rename(m_file, m_target, FileRenameInfo, TRUE)) {
            m_temporary.clear();
            return ERROR_SUCCESS;
        }
        return ReplaceOpenTarget();
    }

    // An open file lets itself be renamed where it can't be replaced.
    DWORD ReplaceOpenTarget() {
        const DWORD error = GetLastError();
        const WideString aside = TemporaryNameBeside(m_target);
        if (MoveFileExW(m_target.c_str(), aside.c_str(), 0) == 0) {
            return error;
        }
        if (!Rename(m_file, m_target, FileRenameInfo, FALSE)) {
            const DWORD failed = GetLastError();
            MoveFileExW(aside.c_str(), m_target.c_str(), 0);
            return failed;
        }
        m_temporary.clear();
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
    Handle m_file;
    WideString m_temporary;
    DWORD m_error = ERROR_SUCCESS;
};

}  // namespace

ReadableFile::ReadableFile() = default;
ReadableFile::~ReadableFile() = default;

std::unique_ptr<ReadableFile> ReadableFile::Open(const std::string& path, std::string* why) {
    Handle file = OpenForReading(path, why);
    if (!file.IsOpen()) {
        return nullptr;
    }
    return std::make_unique<WindowsReadableFile>(std::move(file));
}

bool CanWriteFile(const std::string& path) {
    Target target;
    return Locate(path, target) == ERROR_SUCCESS && target.m_file.IsOpen();
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::string* why) {
    const Handle file = OpenForReading(path, why);
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    constexpr std::size_t Block = std::size_t{64} * 1024;
    LARGE_INTEGER size{};
    GetFileSizeEx(file.Get(), &size);
    // One byte more than the size, so that a file which does not grow ends in the first block.
    std::string bytes(size.QuadPart > 0 ? static_cast<std::size_t>(size.QuadPart) + 1 : Block, '\0');
    std::size_t length = 0;
    for (;;) {
        if (length == bytes.size()) {
            bytes.resize(bytes.size() * 2);
        }
        std::size_t count = 0;
        if (!ReadSome(file, bytes.data() + length, bytes.size() - length, count)) {
            Fail(GetLastError(), why);
            return std::nullopt;
        }
        if (count == 0) {
            bytes.resize(length);
            return bytes;
        }
        length += count;
    }
}

AtomicFile::AtomicFile() = default;
AtomicFile::~AtomicFile() = default;

std::unique_ptr<AtomicFile> AtomicFile::Create(const std::string& target, std::string* why) {
    Target location;
    const DWORD error = Locate(target, location);
    if (error != ERROR_SUCCESS) {
        Fail(error, why);
        return nullptr;
    }
    auto file = std::make_unique<WindowsAtomicFile>(std::move(location.m_path));
    if (!file->Open(location.m_file, why)) {
        return nullptr;
    }
    return file;
}

}  // namespace quillet::platform
