// The rows of one table.
#pragma once

#include <vector>

#include "Quillet/dbaccess/DBACCESS_RECORD.h"

// The records in the order in which the file delivered them (the vector that it is).
class QUILLET_API DBACCESS_VECTOR : public std::vector<DBACCESS_RECORD> {
public:
    using std::vector<DBACCESS_RECORD>::vector;

    // Whether the table had no rows when it was read: the vector is empty then, or holds one record that only
    // describes the columns.
    bool m_noRows = false;
    // Lines about the table for the report of an import.
    std::vector<quillet::CString> m_remarks;
};
