// Runs the program under test as a user would, with a command line. The result has its output and its exit
// status.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace quillet::test {

struct RunResult {
    int m_status;
    std::string m_output;
    std::string m_errors;
};

struct RunConditions {
    // The locale for the environment, where programs use it; the test's own if it is empty.
    std::string m_locale;
    // The superuser may read and write everything. If no other user is available, the status is that of a
    // program that can't be run.
    bool m_asOrdinaryUser = false;
    // The target of standard output; the result if it is empty.
    std::string m_outputTo;
};

inline RunResult RunProgram(const std::vector<std::string>& arguments, const TemporaryFolder& folder,
                            const RunConditions& conditions = {});

}  // namespace quillet::test

#if defined(_WIN32)
#include "support/RunProgramOnWindows.h"
#else
#include "support/RunProgramOnPosix.h"
#endif
