// ODBC of the system: odbc32.
#pragma once

#include "Quillet/platform/Automation.h"

// These need the names of windows.h, which Automation.h includes.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
