// The published C interface of ODBC with its Unicode calls: SQLWCHAR is WCHAR, one UTF-16 code unit.
#pragma once

#include <type_traits>

#if defined(_WIN32)
#include "Quillet/platform/windows/Odbc.h"
#else
#include "Quillet/platform/posix/Odbc.h"
#endif

static_assert(std::is_same_v<SQLWCHAR, WCHAR>, "texts go to the driver manager as they are");
