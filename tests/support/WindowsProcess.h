// Other programs, started by the system call, since the shell supports only the characters of one code page.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Quillet/base/CString.h"
#include "Quillet/platform/Text.h"

namespace quillet::test {

inline platform::WideString WideOf(const std::string& text) {
    return platform::WideString(CString(text).View());
}

// Backslashes must be doubled before a quotation mark, and only there.
inline platform::WideString QuotedArgument(const platform::WideString& argument) {
    platform::WideString quoted = L"\"";
    std::size_t backslashes = 0;
    for (const WCHAR letter : argument) {
        if (letter == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = letter == L'\\' ? backslashes + 1 : 0;
        quoted += letter;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

// A file for one of the program's standard streams.
class InheritedFile {
public:
    InheritedFile(const std::filesystem::path& path, DWORD access, DWORD disposition) {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        m_handle = CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                               disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
        EXPECT_NE(m_handle, INVALID_HANDLE_VALUE) << path;
    }
    InheritedFile(const InheritedFile&) = delete;
    InheritedFile& operator=(const InheritedFile&) = delete;
    ~InheritedFile() { CloseHandle(m_handle); }

    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

// A program started with files for its output. It keeps running when the object is destroyed.
class StartedProcess {
public:
    StartedProcess(const platform::WideString& commandLine, const InheritedFile& output,
                   const InheritedFile& errors) {
        const InheritedFile input(L"NUL", GENERIC_READ, OPEN_EXISTING);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input.Get();
        startup.hStdOutput = output.Get();
        startup.hStdError = errors.Get();
        PROCESS_INFORMATION process;
        DWORD error = Start(commandLine, startup, process);
        // On a busy machine, a Wine process sometimes ends before its program starts.
        for (int attempt = 1; error == ERROR_INTERNAL_ERROR && attempt < MostAttempts; ++attempt) {
            Sleep(MillisecondsBetweenAttempts);
            error = Start(commandLine, startup, process);
        }
        if (error != ERROR_SUCCESS) {
            ADD_FAILURE() << "the program can't be started: error " << error;
            return;
        }
        CloseHandle(process.hThread);
        m_handle = process.hProcess;
    }
    StartedProcess(const StartedProcess&) = delete;
    StartedProcess& operator=(const StartedProcess&) = delete;
    ~StartedProcess() { CloseHandle(m_handle); }

    HANDLE Handle() const { return m_handle; }
    bool IsRunning() const { return WaitForSingleObject(m_handle, 0) == WAIT_TIMEOUT; }
    // The exit status after the program has ended; that of a program that can't be run if it could not be
    // started.
    int Status() const {
        WaitForSingleObject(m_handle, INFINITE);
        DWORD status = 126;
        GetExitCodeProcess(m_handle, &status);
        return static_cast<int>(status);
    }

private:
    static constexpr int MostAttempts = 5;
    static constexpr DWORD MillisecondsBetweenAttempts = 200;

    // The system's error. The command line is taken by value, since the system may write into it.
    static DWORD Start(platform::WideString commandLine, STARTUPINFOW& startup,
                       PROCESS_INFORMATION& process) {
        // A console, even without a window, would be a separate program and keep the streams open for longer.
        const BOOL isStarted = CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE,
                                              DETACHED_PROCESS, nullptr, nullptr, &startup, &process);
        return isStarted != 0 ? ERROR_SUCCESS : GetLastError();
    }

    HANDLE m_handle = nullptr;
};

}  // namespace quillet::test
