// The ascending order of rows.
#pragma once

#include <vector>

#include "Quillet/rows/RowsView.h"

namespace quillet {

// The numbers of the rows in ascending order of the fields (positions of fields).
//
// The order is the one that results when the rows are taken in turn and each is inserted where the binary
// search of DbTableData::SpatialIndex finds its place among those before: rows that compare equal stand where
// that search happens to meet one of them, and where the comparison is no consistent order (a null beside a
// value, values of different types, texts that are equal without case but have others between them), what the
// search does is the order.
//
// Takes n log n steps. Cells are compared only where one is not of its field's commonest type, or is a text
// without a collation key or NaN.
std::vector<uint64> OrderOfRows(const RowSelection& rows, const std::vector<uint64>& fields);

}  // namespace quillet
