// The automation types and functions of the Windows SDK.
#pragma once

// Names of the standard library are used below the SDK's headers.
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
// oleauto.h needs the types of windows.h.
#include <oleauto.h>

#include "platform/Export.h"
