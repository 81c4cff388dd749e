// Which lines of a database's log tell of faults.
#pragma once

#include <string>
#include <string_view>

namespace quillet::tool {

// False for the lines by which a database only says what it did; whatever else it logs is a fault.
bool IsFault(std::string_view line);

// Whether the line says that the document is not laid out as that of a catalog.
bool IsInvalidFormat(std::string_view line);

// The line for a table whose rows could not all be read. The database logs it itself, unless it cuts tables
// out of the file.
std::string MalformedRows(const std::string& table);

}  // namespace quillet::tool
