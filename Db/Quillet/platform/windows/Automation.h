// The automation types and functions of the Windows SDK.
#pragma once

#include <windows.h>
// oleauto.h needs the types of windows.h.
#include <oleauto.h>

#include "Quillet/platform/Export.h"
