// Matchers of texts by ECMAScript's regular expressions, the same on every system. A dot matches no line end.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace quillet::test {

// The pattern matches the whole text.
MATCHER_P(MatchesPattern, pattern,
          (negation ? "does not match the pattern " : "matches the pattern ") +
              testing::PrintToString(pattern)) {
    return std::regex_match(std::string(arg), std::regex(pattern));
}

// The pattern matches a part of the text.
MATCHER_P(ContainsPattern, pattern,
          (negation ? "does not contain the pattern " : "contains the pattern ") +
              testing::PrintToString(pattern)) {
    return std::regex_search(std::string(arg), std::regex(pattern));
}

}  // namespace quillet::test
