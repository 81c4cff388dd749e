// Runs the program under test as a user would: by a command line, with what it printed and its exit status.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/TemporaryFolder.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace quillet::test {

struct RunResult {
    int m_status;
    std::string m_output;
    std::string m_errors;
};

#if defined(_WIN32)

inline std::string QuotedArgument(const std::string& argument) {
    std::string quoted = "\"";
    for (const char letter : argument) {
        quoted += letter == '"' ? "\\\"" : std::string(1, letter);
    }
    return quoted + "\"";
}

inline RunResult RunCommandLine(const std::string& commandLine, const TemporaryFolder& folder) {
    const std::filesystem::path output = folder / "stdout";
    const std::filesystem::path errors = folder / "stderr";
    // The shell takes off the outermost quotation marks.
    const int status = std::system(("\"" + commandLine + " <NUL >" + QuotedArgument(Utf8(output)) + " 2>" +
                                    QuotedArgument(Utf8(errors)) + "\"")
                                       .c_str());
    return {status, ReadBytes(output), ReadBytes(errors)};
}

constexpr bool HasEnvironmentLocale = false;

inline std::string WithLocale(const std::string&, const std::string& commandLine) {
    return commandLine;
}

inline std::string AsOrdinaryUser(const std::string& commandLine) {
    return commandLine;
}

#else

inline std::string QuotedArgument(const std::string& argument) {
    std::string quoted = "'";
    for (const char letter : argument) {
        quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
    }
    return quoted + "'";
}

inline RunResult RunCommandLine(const std::string& commandLine, const TemporaryFolder& folder) {
    const std::filesystem::path output = folder / "stdout";
    const std::filesystem::path errors = folder / "stderr";
    const int status = std::system(
        (commandLine + " </dev/null >" + QuotedArgument(Utf8(output)) + " 2>" + QuotedArgument(Utf8(errors)))
            .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadBytes(output), ReadBytes(errors)};
}

constexpr bool HasEnvironmentLocale = true;

inline std::string WithLocale(const std::string& locale, const std::string& commandLine) {
    return "LC_ALL=" + locale + " " + commandLine;
}

// The superuser may write everything, so the command is run for somebody else.
inline std::string AsOrdinaryUser(const std::string& commandLine) {
    return ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " + commandLine
                            : commandLine;
}

#endif

inline std::string CommandLineOf(const std::vector<std::string>& arguments) {
    std::string line = QuotedArgument(QUILLET_PROGRAM);
    for (const std::string& argument : arguments) {
        line += " " + QuotedArgument(argument);
    }
    return line;
}

}  // namespace quillet::test
