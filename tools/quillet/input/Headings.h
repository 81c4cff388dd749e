// Field names from the headings of an external table.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// A name for each heading that a catalog can save and a query can refer to. A heading that is such a name
// stays as it is; of headings that a catalog or a query can't distinguish, only the first does. Others keep
// their letters and digits, with underscores for the rest: 'h [mm]' becomes 'h_mm', a heading without any
// becomes 'field_3' (counted from 1), and a number at the end distinguishes equal ones: 'h_2'.
std::vector<std::string> SafeNames(const std::vector<std::string>& headings);

}  // namespace quillet::tool
