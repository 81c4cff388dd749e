// Through the shell.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/RunProgram.h"

namespace quillet::test {

// The program takes its locale from the environment.
constexpr bool EnvironmentHasLocale = true;

inline std::string QuotedArgument(const std::string& argument) {
    std::string quoted = "'";
    for (const char letter : argument) {
        quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
    }
    return quoted + "'";
}

inline RunResult RunProgram(const std::vector<std::string>& arguments, const TemporaryFolder& folder,
                            const RunConditions& conditions) {
    const std::string output = Utf8(folder / "stdout");
    const std::string errors = Utf8(folder / "stderr");
    std::string line = conditions.m_locale.empty() ? "" : "LC_ALL=" + conditions.m_locale + " ";
    if (conditions.m_asOrdinaryUser && ::geteuid() == 0) {
        line += "setpriv --reuid=65534 --regid=65534 --clear-groups ";
    }
    line += QuotedArgument(QUILLET_PROGRAM);
    for (const std::string& argument : arguments) {
        line += " " + QuotedArgument(argument);
    }
    line += " </dev/null >" + QuotedArgument(conditions.m_outputTo.empty() ? output : conditions.m_outputTo) +
            " 2>" + QuotedArgument(errors);
    const int status = std::system(line.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadBytes(output), ReadBytes(errors)};
}

}  // namespace quillet::test
