// Runs the program under test as a user would: by a command line, with what it printed and its exit status.
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
    // The locale of the environment, where it is in force; that of the test where it is empty.
    std::string m_locale;
    // The superuser may read and write everything. Where nobody else can be taken, the status is that of a
    // program that can't be run.
    bool m_asOrdinaryUser = false;
    // Where standard output goes; where it is empty, into the result.
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
