// How an Access file is opened through ODBC.
#pragma once

#include "Quillet/base/CString.h"
#include "Quillet/odbc/Connection.h"
#include "Quillet/odbc/DatabaseError.h"

namespace quillet {

inline constexpr char DefaultConnectFormat[] = "DBQ=%s;Driver={Microsoft Access Driver (*.mdb)}";

// Whether the error means that the driver is missing: none has the name, or it can't be loaded.
bool IsWithoutDriver(const odbc::DatabaseError& error);

// The format with the path in place of the first %s, in braces if the path needs them to stay one value. A
// path that can't be written in either way is refused.
CString ConnectString(const CString& format, const CString& path);

// Opens the file through the connection. If the format is the one above, a file that can't be an Access file
// is refused without asking the driver, and if no driver has its name, the driver's newer name is tried next.
// Failures are thrown as odbc::DatabaseError, by pointer.
void OpenAccessFile(odbc::Connection& connection, const CString& format, const CString& path,
                    unsigned long options);

}  // namespace quillet
