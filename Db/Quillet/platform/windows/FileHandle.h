// File handles, paths as the system takes them, and the system's words for an error. Private to this port.
#pragma once

#include <string>
#include <utility>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

constexpr DWORD ShareEverything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string ToUtf8(WideView wide);

// The system's words, without the trailing line end and full stop.
std::string Reason(DWORD error);

// Puts the reason into why, if given; always false.
bool Fail(DWORD error, std::string* why);

class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(HANDLE value) : m_value(value) {}
    FileHandle(FileHandle&& other) noexcept : m_value(std::exchange(other.m_value, INVALID_HANDLE_VALUE)) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~FileHandle() { Close(); }

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

// Makes the path absolute and lifts the limit of its length. Returns the error, or ERROR_SUCCESS.
DWORD ToSystemPath(const std::string& path, WideString& wide);

// For a system path: its folder with the separator, its last name, and the path of another name beside it.
WideString FolderOf(const WideString& path);
std::string NameOf(const WideString& path);
WideString PathBeside(const WideString& path, const std::string& name);

// The path as a user writes it.
std::string DisplayPath(const WideString& path);

// If the file is not open, GetLastError tells why. A file that is being replaced in two steps is missing for
// a moment; this waits for it, half a second at most.
FileHandle OpenExisting(const WideString& path, DWORD access, DWORD flags);

// The path of the file with every link followed; empty if the file system can't tell.
WideString FinalPath(const FileHandle& file);

}  // namespace quillet::platform
