// ODBC of unixODBC. With ALREADY_HAVE_WINDOWS_TYPE its headers leave the Windows types to us.
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
