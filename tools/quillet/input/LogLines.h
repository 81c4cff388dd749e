// Which lines of a database's log tell of faults, and which of queries.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillet::tool {

// False for the lines by which a database only says what it did; whatever else it logs is a fault.
bool IsFault(std::string_view line);

// Whether the line says that the document is not laid out as that of a catalog.
bool IsInvalidFormat(std::string_view line);

// The line for a table whose rows could not all be read. The database logs it itself, unless it cuts tables
// out of the file.
std::string MalformedRows(const std::string& table);

// Whether the line tells what became of a query.
bool IsOfQuery(std::string_view line);

// Whether the lines that a query left say that its text was read as one, not as the name of a table.
bool IsQueryRead(const std::vector<std::string>& lines);

// What is wrong with a query, by the lines that it left.
std::string QueryComplaint(const std::vector<std::string>& lines);

}  // namespace quillet::tool
