// What has to hold of any query text, however odd.
#pragma once

#include <string>

namespace quillet::test {

// Asks a small catalog of tables and query tables for the text, and says what is wrong with the way it
// answers; empty where nothing is. The bytes need not be valid UTF-8.
std::string FaultsOf(const std::string& query);

}  // namespace quillet::test
