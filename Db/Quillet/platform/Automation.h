// OLE Automation data types and functions: VARIANT, BSTR, SAFEARRAY, their conversion and comparison,
// IUnknown and IDispatch. On Windows these are the SDK's; elsewhere the port declares the same names.
#pragma once

#include <cstdint>

#if defined(_WIN32)
#include "Quillet/platform/windows/Automation.h"
#else
#include "Quillet/platform/posix/Automation.h"
#endif

using uint64 = std::uint64_t;
