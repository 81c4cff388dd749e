// The whole program except main, as a function that tests can call.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// Runs the command in the arguments after the program's name and returns the exit status: 0 success, 1
// failure, 2 usage error. Every failure prints one line on standard error. Running out of memory is such a
// failure; printing its line needs no memory.
int RunCommandLine(const std::vector<std::string>& arguments);

// The line and the exit status of a program that is out of memory. Allocates nothing.
int EndOutOfMemory() noexcept;

}  // namespace quillet::tool
