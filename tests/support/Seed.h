// The random numbers of tests.
#pragma once

#include <gtest/gtest.h>

namespace quillet::test {

// The seed of a test: the same in every run, and another one for each seed of a shuffled run
// (--gtest_shuffle).
inline unsigned Seed(unsigned fixed) {
    return fixed + static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed());
}

}  // namespace quillet::test
