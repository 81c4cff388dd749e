// Help with names that were not found.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// How a name is written where it is to be used.
using Spelling = std::string (*)(const std::string&);

// What to tell somebody who asked for a name that is not among the known ones: "did you mean 'IPE'?" where
// some are near it, otherwise "there are IPE, HEA, ... and 7 more". The suggested names are spelled as asked;
// without a spelling they stand as they are.
std::string SuggestNames(const std::string& wanted, const std::vector<std::string>& known,
                         Spelling spelling = nullptr);

// Whether one may have been written for the other by mistake, without regard to case.
bool AreSimilar(const std::string& wanted, const std::string& known);

// "'a', 'b' and 'c'", with the word before the last.
std::string JoinQuoted(const std::vector<std::string>& names, const std::string& last);

// "a, b, c".
std::string JoinNames(const std::vector<std::string>& names);

}  // namespace quillet::tool
