// Access files as the commands use them: why one can't be read, and how one is filled.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"
#include "Quillet/dbaccess/DBACCESS_ALL.h"

namespace quillet::tool {

// Whether the path ends as Access files do.
bool HasAccessEnding(const std::string& path);

// Why an Access file can't be read: what the driver says, or which driver is missing and what brings it.
// Empty where it can.
std::string WhyNoAccess(const std::string& path);

// What an Access file lacks of the rows that it says its tables have, one line for each table. A driver
// passes over what is cut off or damaged in silence.
std::vector<std::string> MissingRows(const std::string& path, DbDatabase& database);

// Puts tables into an existing Access file, in the place of those of their names; other tables stay. The work
// is done on a copy, which takes the place of the file only when all was written and nobody else has changed
// the file meanwhile. Throws Failure, and the file is as it was.
void FillAccessFile(const std::string& path, const DBACCESS_ALL& tables);

}  // namespace quillet::tool
