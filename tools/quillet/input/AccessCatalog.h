// Access files as catalogs: why one can't be read, and how one is written.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"
#include "Quillet/dbaccess/DBACCESS_ALL.h"

namespace quillet::tool {

// Whether the path has the extension of Access files.
bool HasAccessEnding(const std::string& path);

// Why an Access file can't be read: the driver's message, or which driver is missing and where to get it.
// Empty if it can be read.
std::string WhyNoAccess(const std::string& path);

// Rows that are missing from an Access file according to its own counts, one fault for each table. Drivers
// silently skip truncated or damaged parts.
std::vector<DbLogEntry> MissingRows(const std::string& path, DbDatabase& database);

// Writes tables to an existing Access file, replacing those of the same names; other tables stay. The work is
// done on a copy, which replaces the file only when everything was written and no other program has changed
// the file meanwhile. Throws Failure and leaves the file unchanged.
void FillAccessFile(const std::string& path, const DBACCESS_ALL& tables);

}  // namespace quillet::tool
