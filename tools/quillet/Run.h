// The whole program but its beginning, as a function that tests can call.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// Does what the arguments after the program's name ask for and returns the exit status: 0 done, 1 failed, 2
// the command line is wrong. Every failure leaves one line on standard error. Out of memory is such a
// failure, and its line needs none.
int RunCommandLine(const std::vector<std::string>& arguments);

// The line and the exit status of a program that is out of memory. Allocates nothing.
int EndOutOfMemory() noexcept;

}  // namespace quillet::tool
