// What must hold for any query text.
#pragma once

#include <string>

namespace quillet::test {

// Runs the text as a query on a small catalog of tables and query tables. Returns what is wrong with the
// answer; empty if nothing is. The bytes need not be valid UTF-8.
std::string FaultsOf(const std::string& query);

}  // namespace quillet::test
