// A condition on one row.
#pragma once

#include "platform/Export.h"

class DbTableRow;

// Evaluates rows one at a time and keeps the result of the last one. A table descriptor owns its filters.
class QUILLET_API DbFilter {
public:
    virtual ~DbFilter();
    virtual void Evaluate(const DbTableRow& row) = 0;

protected:
    DbFilter();
    DbFilter(const DbFilter& other);
    DbFilter& operator=(const DbFilter& other);
};
