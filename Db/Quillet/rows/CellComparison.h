// The comparison of cells that orders rows.
#pragma once

#include "Quillet/Db_TableRow.h"

namespace quillet {

// Texts are equal without regard to case but ordered with it.
inline DbTableRow::eCmpResult CompareCells(const CComVariant& left, const CComVariant& right) {
    if (EqualIgnoringCase(left, right)) {
        return DbTableRow::CmpEqual;
    }
    return left > right ? DbTableRow::CmpGreater : DbTableRow::CmpLess;
}

}  // namespace quillet
