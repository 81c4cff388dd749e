#include "Quillet/Db_Filter.h"

DbFilter::DbFilter() = default;
DbFilter::DbFilter(const DbFilter&) = default;
DbFilter& DbFilter::operator=(const DbFilter&) = default;
DbFilter::~DbFilter() = default;
