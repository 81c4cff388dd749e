// The one row of a table that describes the catalog as a whole.
#pragma once

#include "Quillet/Db_TableData.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until it is told what. Its cells are read and written as text; a table that a file gives
// other fields or no row has empty texts there, and takes none.
class FirstRow {
public:
    // Nothing for null.
    void Show(const DbTableData* data);

    // Both throw Failure where no table is.
    CString Text(uint64 field) const;
    void SetText(uint64 field, const CString& text) const;

private:
    // Null where the table has no such cell.
    DbTableRow* RowWith(uint64 field) const;

    Watch<DbTableData> m_data;
};

}  // namespace quillet::automation
