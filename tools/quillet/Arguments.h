// The parsed command line.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillet::tool {

// A command with its arguments, ready to run; it returns the exit status.
using Command = std::function<int()>;

// Reads the arguments after the program's name. Throws UsageError if they are wrong. A request for help or
// the version is a command that prints it.
Command ParseArguments(const std::vector<std::string>& arguments);

}  // namespace quillet::tool
