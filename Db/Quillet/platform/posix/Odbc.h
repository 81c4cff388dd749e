// ODBC of unixODBC. Its headers take the names of the Windows types from whoever has them.
#pragma once

#include "Quillet/platform/Automation.h"

#define ALREADY_HAVE_WINDOWS_TYPE
#define FAR
#define SQL_API

using HWND = void*;
using SQLHWND = HWND;
using SQLSCHAR = signed char;
using RETCODE = short;
using LPSTR = char*;
using LPWSTR = WCHAR*;

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
