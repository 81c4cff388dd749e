// Return codes of ODBC calls, and the diagnostics behind those that failed.
#pragma once

#include "Quillet/odbc/DatabaseError.h"
#include "Quillet/odbc/Handle.h"

namespace quillet::odbc {

// The diagnostics of the last call on the handle, one line for each record. Where there are none, the text
// says that the driver gave no reason.
DatabaseError LastFailure(const Handle& handle);

// Throws LastFailure by pointer.
[[noreturn]] void ThrowFailure(const Handle& handle);

// Throws LastFailure unless the call succeeded, with or without further information.
inline void Check(SQLRETURN result, const Handle& handle) {
    if (!SQL_SUCCEEDED(result)) {
        ThrowFailure(handle);
    }
}

}  // namespace quillet::odbc
