// Through the system's own call.
#pragma once

#include <utility>

#include "support/RunProgram.h"
#include "support/WindowsProcess.h"

namespace quillet::test {

// The locale is the user's, whatever the environment says.
constexpr bool EnvironmentHasLocale = false;

// File attributes apply to every user, so the user is not changed.
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
        status = StartedProcess(std::move(line), outputFile, errorsFile).Status();
    }
    return {status, ReadBytes(output), ReadBytes(errors)};
}

}  // namespace quillet::test
