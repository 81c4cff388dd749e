// What differs between the systems' ODBC driver managers.
#pragma once

#include <functional>
#include <string>

#include "Quillet/platform/Odbc.h"

namespace quillet::platform {

// The path of a file as the drivers of this system take it. Both are UTF-8.
std::string DriverPath(const std::string& path);

// Calls make, which makes a connection from its handles on, such that the driver manager converts the
// connection's texts without loss, whatever the locale of the process is. Exceptions of make pass through.
void WithConnectionLocale(const std::function<void()>& make);

// Connects as SQLDriverConnect does, without a window, such that every character of the UTF-8 connect string
// reaches the driver. Must be called from within WithConnectionLocale.
SQLRETURN ConnectDriver(SQLHDBC connection, const std::string& connectString, SQLUSMALLINT completion);

}  // namespace quillet::platform
