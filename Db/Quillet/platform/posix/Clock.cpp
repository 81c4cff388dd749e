// The counter is the steady clock: wall clock corrections do not reach it.
#include "Quillet/platform/Clock.h"

#include <chrono>

namespace quillet::platform {

double CounterSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace quillet::platform
