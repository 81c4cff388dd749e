// Why a catalog was not saved, in words.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"

namespace quillet::tool {

// The entries that a failed save left in the log, as text. Those that speak of the library's functions give
// way to the table, row and field that they are about.
std::vector<std::string> ExplainSaveErrors(DbDatabase& database, const std::vector<DbLogEntry>& entries);

}  // namespace quillet::tool
