#include "Quillet/platform/windows/FileHandle.h"

#include <array>

#include "Quillet/platform/FileNames.h"

namespace quillet::platform {
namespace {

// Gets a text from a call that returns its length without the terminator if it fits, the room it needs if
// not, and 0 on an error.
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

// The full path in the form that may be longer than MAX_PATH; device paths keep their own form.
WideString WithoutLimit(const WideString& full) {
    if (full.starts_with(OLESTR("\\\\?\\")) || full.starts_with(OLESTR("\\\\.\\"))) {
        return full;
    }
    if (full.starts_with(OLESTR("\\\\"))) {
        return OLESTR("\\\\?\\UNC\\") + full.substr(2);
    }
    return OLESTR("\\\\?\\") + full;
}

std::size_t NameStart(const WideString& path) {
    return path.find_last_of(OLESTR("\\/")) + 1;
}

// Whether an old file in this folder is moved aside just now, to be replaced by a new one.
bool IsReplacing(const WideString& folder) {
    WIN32_FIND_DATAW found;
    const HANDLE list =
        FindFirstFileW(PathBeside(folder, std::string(NamesBesideBegin) + "*" + AsideEnding).c_str(), &found);
    return list != INVALID_HANDLE_VALUE && FindClose(list) != 0;
}

}  // namespace

std::string ToUtf8(WideView wide) {
    std::string text(wide.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()),
                                           text.data(), static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string Reason(DWORD error) {
    std::array<WCHAR, 512> buffer;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
    std::string reason = ToUtf8(WideView(buffer.data(), length));
    reason.erase(reason.find_last_not_of(".\r\n ") + 1);
    return reason.empty() ? "system error " + std::to_string(error) : reason;
}

bool Fail(DWORD error, std::string* why) {
    if (why != nullptr) {
        *why = Reason(error);
    }
    return false;
}

WideString FolderOf(const WideString& path) {
    return path.substr(0, NameStart(path));
}

std::string NameOf(const WideString& path) {
    return ToUtf8(WideView(path).substr(NameStart(path)));
}

WideString PathBeside(const WideString& path, const std::string& name) {
    WideString beside = FolderOf(path);
    beside.append(name.begin(), name.end());
    return beside;
}

std::string DisplayPath(const WideString& path) {
    if (path.starts_with(OLESTR("\\\\?\\UNC\\"))) {
        return "\\\\" + ToUtf8(WideView(path).substr(8));
    }
    return ToUtf8(WideView(path).substr(path.starts_with(OLESTR("\\\\?\\")) ? 4 : 0));
}

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
    // A path of blanks only is invalid, though the system reports no error.
    if (full.empty()) {
        return ERROR_INVALID_NAME;
    }
    wide = WithoutLimit(full);
    return ERROR_SUCCESS;
}

FileHandle OpenExisting(const WideString& path, DWORD access, DWORD flags) {
    constexpr int MostAttempts = 100;
    constexpr DWORD MillisecondsBetween = 5;
    bool isLast = false;
    for (int attempt = 1;; ++attempt) {
        FileHandle file(
            CreateFileW(path.c_str(), access, ShareEverything, nullptr, OPEN_EXISTING, flags, nullptr));
        const DWORD error = file.IsOpen() ? ERROR_SUCCESS : GetLastError();
        if (error != ERROR_FILE_NOT_FOUND || isLast) {
            SetLastError(error);
            return file;
        }
        // If no file is aside, the replacement may be done by now.
        isLast = attempt == MostAttempts || !IsReplacing(FolderOf(path));
        Sleep(isLast ? 0 : MillisecondsBetween);
    }
}

WideString FinalPath(const FileHandle& file) {
    return TextOf([&](WCHAR* text, DWORD capacity) {
        return GetFinalPathNameByHandleW(file.Get(), text, capacity, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    });
}

}  // namespace quillet::platform
