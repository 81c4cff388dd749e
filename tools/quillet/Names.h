// Help with names that were not found.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// What to tell somebody who asked for a name that is not among the known ones: "did you mean 'IPE'?" where
// some are near it, otherwise "there are IPE, HEA, ... and 7 more".
std::string SuggestNames(const std::string& wanted, const std::vector<std::string>& known);

// "a, b, c".
std::string JoinNames(const std::vector<std::string>& names);

}  // namespace quillet::tool
