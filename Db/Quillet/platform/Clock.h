// The high-resolution performance counter.
#pragma once

namespace quillet::platform {

// Seconds since an arbitrary moment, never going back.
double CounterSeconds();

}  // namespace quillet::platform
