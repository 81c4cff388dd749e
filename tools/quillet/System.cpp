#include "System.h"

#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
// shellapi.h needs the types of windows.h.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdlib>

#include "Quillet/base/Utf8.h"
#else
#include <unistd.h>
#endif

namespace quillet::tool {

// The stream is unbuffered.
void WriteToStandardError(std::string_view bytes) noexcept {
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

#if defined(_WIN32)

std::vector<std::string> ProgramArguments(int, char**) {
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        AppendUtf8(wide[i], arguments.emplace_back());
    }
    LocalFree(wide);
    return arguments;
}

void PrepareStandardStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    // The console outlives the program.
    static const UINT s_before = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(s_before); });
}

bool IsStandardOutputTerminal() {
    return _isatty(_fileno(stdout)) != 0;
}

bool IsStandardErrorTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

std::string ReadingDriverHint() {
    return "the 64-bit Microsoft Access Database Engine brings it";
}

std::string WritingDriverHint() {
    return "that of the 64-bit Microsoft Access Database Engine does";
}

#else

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    return argc < 1 ? std::vector<std::string>() : std::vector<std::string>(argv + 1, argv + argc);
}

void PrepareStandardStreams() {
}

bool IsStandardOutputTerminal() {
    return ::isatty(STDOUT_FILENO) != 0;
}

bool IsStandardErrorTerminal() {
    return ::isatty(STDERR_FILENO) != 0;
}

std::string ReadingDriverHint() {
    return "the package odbc-mdbtools brings one, which odbcinst registers under this name";
}

std::string WritingDriverHint() {
    return "that of the package odbc-mdbtools only reads, and none that writes is known outside Windows";
}

#endif

}  // namespace quillet::tool
