// Handles of files, paths as the system takes them, and what it says when it refuses one. Private to this
// port.
#pragma once

#include <string>
#include <utility>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

constexpr DWORD ShareEverything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string ToUtf8(WideView wide);

// The system's words, without the line end and the full stop behind them.
std::string Reason(DWORD error);

// Reports the error, if asked; always false.
bool Fail(DWORD error, std::string* why);

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

// The path in full and without the limit of its length; the error, or ERROR_SUCCESS.
DWORD ToSystemPath(const std::string& path, WideString& wide);

// Of a system path: its folder with the separator, its last name, and the path of another name beside it.
WideString FolderOf(const WideString& path);
std::string NameOf(const WideString& path);
WideString PathBeside(const WideString& path, const std::string& name);

// The path as a person writes it.
std::string ForReading(const WideString& path);

// GetLastError tells why the file is not open. One that is replaced in two steps is there again in a moment:
// that is waited for, half a second at most.
Handle OpenExisting(const WideString& path, DWORD access, DWORD flags);

// Where the file stands once every link is followed; empty where the file system can't tell.
WideString FinalPath(const Handle& file);

}  // namespace quillet::platform
