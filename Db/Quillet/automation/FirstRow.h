// The one row of a table that describes the catalog as a whole.
#pragma once

#include "Quillet/Db_TableData.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until Show is called. Its cells are read and written as text; if a file gave the table other
// fields or no row, missing cells read as empty, and writing them has no effect.
class FirstRow {
public:
    // Null shows nothing.
    void Show(const DbTableData* data);

    // Both throw MethodFailure if there is no table.
    CString Text(uint64 field) const;
    void SetText(uint64 field, const CString& text) const;

private:
    // Null if the table has no such cell.
    DbTableRow* RowWith(uint64 field) const;

    Watch<DbTableData> m_data;
};

}  // namespace quillet::automation
