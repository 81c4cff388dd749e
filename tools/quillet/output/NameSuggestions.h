// Help with names that were not found, and names as a list.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// How a name is spelt where it will be used.
using Spelling = std::string (*)(const std::string&);

// A hint for a name that is not among the known ones: "did you mean 'IPE'?" if some are similar, otherwise
// "there are IPE, HEA, ... and 7 more". The suggested names are written with the given spelling, by default
// unchanged.
std::string SuggestNames(const std::string& wanted, const std::vector<std::string>& known,
                         Spelling spelling = nullptr);

// Whether one may be a misspelling of the other, ignoring case.
bool AreSimilar(const std::string& wanted, const std::string& known);

// "'a', 'b' and 'c'", with the word before the last.
std::string JoinQuoted(const std::vector<std::string>& names, const std::string& last);

// "a, b, c".
std::string JoinNames(const std::vector<std::string>& names);

}  // namespace quillet::tool
