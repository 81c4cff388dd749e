// All tables of one file.
#pragma once

#include <utility>
#include <vector>

#include "Quillet/base/CString.h"
#include "Quillet/dbaccess/DBACCESS_VECTOR.h"

// A vector of pairs of a table's name and its rows, in the order in which the tables were added.
class QUILLET_API DBACCESS_ALL : public std::vector<std::pair<quillet::CString, DBACCESS_VECTOR>> {
public:
    using std::vector<std::pair<quillet::CString, DBACCESS_VECTOR>>::vector;
};
