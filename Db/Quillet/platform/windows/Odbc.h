// ODBC of the system: odbc32.
#pragma once

#include "Quillet/platform/Automation.h"

// They need the names of windows.h, which Automation.h brings.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
