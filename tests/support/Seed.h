// The random numbers of tests.
#pragma once

#include <gtest/gtest.h>

namespace quillet::test {

// The seed of a test: the same in every run, and another one for each seed of a shuffled run
// (--gtest_shuffle).
inline unsigned Seed(unsigned fixed) {
    return testing::GTEST_FLAG(shuffle)
               ? fixed + static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())
               : fixed;
}

}  // namespace quillet::test
