// Through the system's own call, since the shell knows the characters of one code page only.
#pragma once

#include <utility>

#include "base/Utf8.h"
#include "tools/RunProgram.h"

namespace quillet::test {

// The locale is that of the user, whatever a program puts into the environment of another.
constexpr bool EnvironmentHasLocale = false;

inline platform::WideString WideOf(const std::string& text) {
    platform::WideString wide;
    AppendWide(text, wide);
    return wide;
}

// Backslashes count as two before a quotation mark, and only there.
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

// A file that the program gets as one of its standard streams.
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

// The exit status; that of a program that can't be run where it could not be started.
inline int StatusOf(platform::WideString commandLine, const InheritedFile& output,
                    const InheritedFile& errors) {
    const InheritedFile input(L"NUL", GENERIC_READ, OPEN_EXISTING);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = output.Get();
    startup.hStdError = errors.Get();
    PROCESS_INFORMATION process;
    // A console, also one without a window, would be a program of its own and hold the streams for longer.
    if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, DETACHED_PROCESS, nullptr,
                       nullptr, &startup, &process) == 0) {
        ADD_FAILURE() << "the program can't be started: error " << GetLastError();
        return 126;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(status);
}

// Marks on files bind every user, so nobody else is taken.
inline RunResult RunProgram(const std::vector<std::string>& arguments, const TemporaryFolder& folder,
                            const RunConditions& conditions) {
    const std::filesystem::path output = folder / "stdout";
    const std::filesystem::path errors = folder / "stderr";
    platform::WideString line =
        QuotedArgument(std::filesystem::absolute(QUILLET_PROGRAM).make_preferred().native());
    for (const std::string& argument : arguments) {
        line += L" " + QuotedArgument(WideOf(argument));
    }
    int status = 0;
    {
        const InheritedFile outputFile(
            conditions.m_outputTo.empty() ? output : std::filesystem::path(WideOf(conditions.m_outputTo)),
            GENERIC_WRITE, CREATE_ALWAYS);
        const InheritedFile errorsFile(errors, GENERIC_WRITE, CREATE_ALWAYS);
        status = StatusOf(std::move(line), outputFile, errorsFile);
    }
    return {status, ReadBytes(output), ReadBytes(errors)};
}

}  // namespace quillet::test
