// The tables of a catalog as records that can be written to an Access file.
#pragma once

#include "Quillet/dbaccess/DBACCESS_ALL.h"
#include "input/Catalog.h"

namespace quillet::tool {

// Every table but answers, in the order of the catalog. All records of a table have its fields with their
// types, a cell without a value as a zero or an empty text, as it is read. A table without rows has one
// record that describes its fields, and the flag for that. Throws Failure for a table without fields, and for
// a cell that is not a valid value of its field.
DBACCESS_ALL ReadRecords(Catalog& catalog);

}  // namespace quillet::tool
