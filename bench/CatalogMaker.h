// Catalogs for benchmarks: the same bytes at every call.
#pragma once

#include <string>

namespace bench {

// Writes a catalog of four tables of 12 fields (a text key, two integers, a text, eight doubles) to path: the
// first table with firstRows rows, the three others with otherRows each. 250,000 rows each give about 160 MB.
void MakeMixedCatalog(const std::string& path, int firstRows, int otherRows);

// Writes a catalog with one table of 12 doubles.
void MakeNumericCatalog(const std::string& path, int rows);

}  // namespace bench
