// Catalogs for benchmarks: the same bytes at every call.
#pragma once

#include <string>

namespace bench {

// What the cells of a catalog look like.
enum class Cells {
    // As in printed catalogs: up to six digits, plain texts.
    Plain,
    // 15 to 17 digits, exponents, texts beyond ASCII, references.
    Awkward,
};

// Writes a catalog of four tables of 12 fields (a text, an integer, eight doubles, an integer, a text) to
// path: the first table with firstRows rows, the three others with otherRows each. 250,000 rows each give
// about 177 MB of plain cells.
void MakeMixedCatalog(const std::string& path, int firstRows, int otherRows, Cells cells = Cells::Plain);

// The same with a comment in the last row, which only the document's own parser reads.
void MakeOddCatalog(const std::string& path, int firstRows, int otherRows);

// Writes a catalog with one table of 12 doubles.
void MakeNumericCatalog(const std::string& path, int rows);

}  // namespace bench
