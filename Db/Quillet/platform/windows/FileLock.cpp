// The lock is a file beside the one it is for. Nobody else can open it for writing while it is held, and the
// system removes it with its last handle. A lock on the file itself would keep it from being replaced.
#include "Quillet/platform/FileLock.h"

#include <array>
#include <charconv>

#include "Quillet/platform/File.h"
#include "Quillet/platform/FileNames.h"
#include "Quillet/platform/windows/FileHandle.h"

namespace quillet::platform {
namespace {

class WindowsFileLock final : public FileLock {
public:
    explicit WindowsFileLock(FileHandle file) : m_file(std::move(file)) {}

private:
    FileHandle m_file;
};

// The path of the lock of a file; the error, or ERROR_SUCCESS.
DWORD LockPath(const std::string& path, WideString& lock) {
    WideString wide;
    const DWORD error = ToSystemPath(path, wide);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    const FileHandle file = OpenExisting(wide, FILE_READ_ATTRIBUTES, FILE_ATTRIBUTE_NORMAL);
    if (!file.IsOpen()) {
        return GetLastError();
    }
    // If the file system can't tell, a link has its own lock.
    const WideString final = FinalPath(file);
    const WideString& target = final.empty() ? wide : final;
    lock = PathBeside(target, PrefixBeside(NameOf(target)) + ".lock");
    return ERROR_SUCCESS;
}

FileHandle OpenLock(const WideString& lock) {
    return FileHandle(CreateFileW(lock.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ,
                                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE,
                                  nullptr));
}

// The holder writes its process number into the lock. nullopt if it has not yet done so, or is gone.
std::optional<std::uint64_t> HolderOf(const WideString& lock) {
    const FileHandle file = OpenExisting(lock, GENERIC_READ, FILE_ATTRIBUTE_NORMAL);
    std::array<char, 16> text;
    DWORD length = 0;
    std::uint64_t process = 0;
    const bool isRead =
        file.IsOpen() && ReadFile(file.Get(), text.data(), text.size(), &length, nullptr) != 0;
    const bool isNumber =
        isRead && std::from_chars(text.data(), text.data() + length, process).ec == std::errc();
    return isNumber ? std::optional(process) : std::nullopt;
}

}  // namespace

std::unique_ptr<FileLock> FileLock::Try(const std::string& path, Refusal& refusal) {
    WideString lock;
    const DWORD error = LockPath(path, lock);
    if (error != ERROR_SUCCESS) {
        Fail(error, &refusal.m_why);
        return nullptr;
    }
    FileHandle file = OpenLock(lock);
    // A lock that is released while another process reads its holder exists a moment longer and can't be
    // opened then.
    constexpr int MostAttempts = 5;
    constexpr DWORD MillisecondsBetween = 5;
    for (int attempt = 1; !file.IsOpen() && GetLastError() == ERROR_ACCESS_DENIED && attempt < MostAttempts;
         ++attempt) {
        Sleep(MillisecondsBetween);
        file = OpenLock(lock);
    }
    if (!file.IsOpen()) {
        const DWORD refused = GetLastError();
        refusal.m_isHeld = refused == ERROR_SHARING_VIOLATION;
        if (refusal.m_isHeld) {
            refusal.m_holder = HolderOf(lock);
        } else {
            Fail(refused, &refusal.m_why);
        }
        return nullptr;
    }
    const std::string process = std::to_string(GetCurrentProcessId());
    DWORD written = 0;
    static_cast<void>(
        WriteFile(file.Get(), process.data(), static_cast<DWORD>(process.size()), &written, nullptr));
    return std::make_unique<WindowsFileLock>(std::move(file));
}

}  // namespace quillet::platform
