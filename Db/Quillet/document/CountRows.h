// How many rows a catalog file has.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "Quillet/base/CString.h"

namespace quillet {

class CatalogScanner;

// The number of rows of each of the body's tables, by their lowered names, found without keeping the rows.
// Nothing for a file that can't be read, that has anything to complain about, or that holds anything that
// CatalogScanner does not know: then the tables have to be read. Throws only std::bad_alloc.
std::optional<std::map<CString, std::uint64_t>> CountRows(const CString& path);

// The same by a scanner that reads this file, and counts.
std::optional<std::map<CString, std::uint64_t>> CountRows(CatalogScanner& scanner);

}  // namespace quillet
