// Names of fields from the headings of a table that comes from outside.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// A name for each heading that a catalog can carry and a query can ask for. A heading that is such a name,
// and the first of those that a catalog or a query can't tell apart, stays as it is. Others keep their
// letters and digits, with underscores for the rest: 'h [mm]' becomes 'h_mm', a heading without any 'field_3'
// (counted from 1), and a number at the end tells equal ones apart: 'h_2'.
std::vector<std::string> SafeNames(const std::vector<std::string>& headings);

}  // namespace quillet::tool
