// What a new field brings to the rows of its table.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "Quillet/Db_Rows.h"

namespace quillet {

// The cells of a new field of the descriptor that rows follow: made where that may fail, inserted where
// nothing may.
class NewCells {
public:
    NewCells(DbRows& rows, uint64 fieldIndex);
    // Once; the rows must be those that they were before.
    void Insert();

private:
    DbRows& m_rows;
    uint64 m_index;
    // The columns of rows that were not made have been prepared.
    bool m_hasColumns = false;
    std::vector<std::pair<DbTableRow*, std::unique_ptr<DbFieldValue>>> m_cells;
};

}  // namespace quillet
