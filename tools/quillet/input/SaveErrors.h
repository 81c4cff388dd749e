// Why a catalog was not saved, in words.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"

namespace quillet::tool {

// The lines that a failed save left in the log, where those that speak of the library's functions give way to
// the table, row and field that they are about. Others stay as they are.
std::vector<std::string> ExplainSaveErrors(DbDatabase& database, const std::vector<std::string>& lines);

}  // namespace quillet::tool
