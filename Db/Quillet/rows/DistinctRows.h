// Rows without those that repeat another.
#pragma once

#include <vector>

#include "Quillet/rows/RowsView.h"

namespace quillet {

// The numbers, ascending, of the rows that are kept: each but those with a row kept before that has equal
// values in all the fields (positions of fields).
//
// Values are equal by operator== of variants: both null, or of one type and equal to the platform's
// comparison. Texts thus differ when only their case does, and may be equal where their characters differ.
// A value that is no number, and bytes, equal nothing. Empty cells equal one another; a row with too few
// cells has empty ones in place of the missing.
//
// Takes linear time, but for values that have to be compared with one another: texts without a collation key,
// and types of no catalog that compare equal to themselves.
std::vector<uint64> DistinctRows(const RowSelection& rows, const std::vector<uint64>& fields);

}  // namespace quillet
