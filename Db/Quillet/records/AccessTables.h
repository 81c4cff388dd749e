// The tables of an Access file as records.
#pragma once

#include <cstddef>
#include <functional>

#include "Quillet/dbaccess/DBACCESS_ALL.h"

namespace quillet {

// Called after each table: how many tables are done, how many there are, the last of them, and whether all of
// it was read or written. It must not throw.
using TableListener =
    std::function<void(std::size_t done, std::size_t count, const CString& table, bool isWhole)>;

// The listener of the process; none at first.
TableListener& ListenerForTables();

// See DbSerializer::Load.
bool ReadAccessTables(const CString& path, DBACCESS_ALL& all);

// See DbSerializer::Save.
void WriteAccessTables(const CString& path, const DBACCESS_ALL& all);

}  // namespace quillet
