// The performance counter of the system.
#include "Quillet/platform/Clock.h"

#include "Quillet/platform/Automation.h"

namespace quillet::platform {

namespace {

double SecondsPerTick() {
    LARGE_INTEGER ticksPerSecond;
    QueryPerformanceFrequency(&ticksPerSecond);
    return 1.0 / static_cast<double>(ticksPerSecond.QuadPart);
}

}  // namespace

double CounterSeconds() {
    static const double s_secondsPerTick = SecondsPerTick();
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    return static_cast<double>(ticks.QuadPart) * s_secondsPerTick;
}

}  // namespace quillet::platform
