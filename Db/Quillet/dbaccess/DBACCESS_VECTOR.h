// The rows of one table.
#pragma once

#include <vector>

#include "Quillet/dbaccess/DBACCESS_RECORD.h"

// A vector of the records in the order in which the file delivered them.
class QUILLET_API DBACCESS_VECTOR : public std::vector<DBACCESS_RECORD> {
public:
    using std::vector<DBACCESS_RECORD>::vector;

    // Whether the table had no rows when it was read: the vector is then empty, or contains one record that
    // only describes the columns.
    bool m_noRows = false;
    // Lines about the table for the report of an import.
    std::vector<quillet::CString> m_remarks;
};
