// What the command line says.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillet::tool {

// A command with its arguments, ready to run; it returns the exit status.
using Command = std::function<int()>;

// Reads the arguments after the program's name. Throws UsageError for what is wrong in them. A question for
// help or the version is a command that answers it.
Command ParseArguments(const std::vector<std::string>& arguments);

}  // namespace quillet::tool
