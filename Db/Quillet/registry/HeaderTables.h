// The two tables that every catalog has: the header, table 0, and the properties, table 1.
#pragma once

namespace quillet {

class Registry;

constexpr const char* HeaderTable = "Header";
constexpr const char* PropertiesTable = "Properties";

// Each makes its table with its text fields and one row of empty texts, unless there is a table of the name.
void CreateHeaderTable(Registry& registry);
void CreatePropertiesTable(Registry& registry);

}  // namespace quillet
