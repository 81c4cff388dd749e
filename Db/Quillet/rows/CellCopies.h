// Copies of the cells of many rows.
#pragma once

#include <vector>

#include "Quillet/rows/RowsView.h"

namespace quillet {

// Gives rows of another table, which are new and empty, the values and flags that the selection's rows store
// in the fields. The first goes to the visible position and the field that are given, the others follow.
void CopyCells(const RowSelection& from, const std::vector<uint64>& fields, RowsView& to, uint64 position,
               uint64 toField);

}  // namespace quillet
