// The high-resolution performance counter.
#pragma once

#include "Quillet/platform/Export.h"

namespace quillet::platform {

// Seconds since an arbitrary moment, never going back.
QUILLET_API double CounterSeconds();

}  // namespace quillet::platform
