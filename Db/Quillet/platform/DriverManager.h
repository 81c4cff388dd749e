// What differs between the systems' ODBC driver managers.
#pragma once

#include <functional>
#include <string>

#include "Quillet/platform/Odbc.h"

namespace quillet::platform {

// The path of a file as the drivers of this system take it. Both are UTF-8.
std::string DriverPath(const std::string& path);

// Calls what makes a connection, from its handles on, so that the driver manager converts the connection's
// texts without loss, whatever the locale of the process is. An exception goes through.
void MakeConnection(const std::function<void()>& make);

// Connects as SQLDriverConnect does, without a window, such that every character of the UTF-8 connect string
// reaches the driver. To be called by what MakeConnection calls.
SQLRETURN ConnectDriver(SQLHDBC connection, const std::string& connectString, SQLUSMALLINT completion);

}  // namespace quillet::platform
