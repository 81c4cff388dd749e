// A table of a database as records.
#pragma once

class DBACCESS_VECTOR;
class DbTableInfo;

namespace quillet {

// Replaces the records of out by the table's rows, as DbDatabase::GetTable says. The flag and the remarks of
// out stay unchanged.
void CopyRecords(const DbTableInfo& table, DBACCESS_VECTOR& out);

}  // namespace quillet
