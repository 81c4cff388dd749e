// What a command says at its end.
#pragma once

#include <string>

#include "Settings.h"
#include "output/Sink.h"

namespace quillet::tool {

// Reports in one line on standard output what a command did; with another format than text, prints nothing.
// Create it before the last step of the command, so that no memory is needed after that step.
class Report {
public:
    // A warning, if there is one, goes to standard error.
    Report(const Settings& settings, const std::string& line, const std::string& warning = {});

    // Prints it. Throws Failure if writing to standard output fails. No further call is allowed.
    void Print();

private:
    std::string m_warning;
    StandardOutput m_output;
};

}  // namespace quillet::tool
