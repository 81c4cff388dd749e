// Why a catalog was not saved, in words.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"

namespace quillet::tool {

// Why the last save failed, by the entries that it left in the log: each table that could not be written,
// with the row and the field as far as they are known; otherwise the error of the save, without the path.
std::vector<std::string> ExplainSaveErrors(DbDatabase& database, const std::vector<DbLogEntry>& entries);

}  // namespace quillet::tool
