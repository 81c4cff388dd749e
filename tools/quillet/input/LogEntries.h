// Which entries of a database's log tell of faults, and which of queries.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_LogEntry.h"

namespace quillet::tool {

// Whether the entry tells of something wrong with the file or its tables.
bool IsFault(const DbLogEntry& entry);

// Whether the entry tells what became of a query.
bool IsOfQuery(const DbLogEntry& entry);

// Whether the entries that a query left say that its text was read as one, not as the name of a table.
bool IsQueryRead(const std::vector<DbLogEntry>& entries);

// What is wrong with a query, by the entries that it left.
std::string QueryComplaint(const std::vector<DbLogEntry>& entries);

}  // namespace quillet::tool
