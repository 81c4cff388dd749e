// The performance counter.
#include "Quillet/platform/Clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace quillet::test {
namespace {

using platform::CounterSeconds;

TEST(Clock, CounterSeconds_AskedOften_NeverGoesBack) {
    double last = CounterSeconds();
    for (int round = 0; round < 10000; ++round) {
        const double now = CounterSeconds();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(Clock, CounterSeconds_AcrossAPause_CountsSeconds) {
    const double before = CounterSeconds();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double passed = CounterSeconds() - before;
    EXPECT_GE(passed, 0.015);
    EXPECT_LT(passed, 20.0);
}

}  // namespace
}  // namespace quillet::test
