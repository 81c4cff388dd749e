// Return codes of ODBC calls, and the diagnostics of those that failed.
#pragma once

#include "Quillet/odbc/DatabaseError.h"
#include "Quillet/odbc/Handle.h"

namespace quillet::odbc {

// The diagnostics of the last call on the handle, one line for each record. If there are none, the text says
// that the driver gave no reason.
DatabaseError DiagnosticsOf(const Handle& handle);

// Throws them by pointer.
[[noreturn]] void ThrowDiagnostics(const Handle& handle);

// Throws the diagnostics unless the call succeeded, with or without further information.
inline void Check(SQLRETURN result, const Handle& handle) {
    if (!SQL_SUCCEEDED(result)) {
        ThrowDiagnostics(handle);
    }
}

}  // namespace quillet::odbc
