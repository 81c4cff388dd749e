// Growth of cost: each benchmark runs for a count and for eight times as many. A linear cost is eight times
// as high.
#pragma once

#include "Measure.h"

// The statement measures Count items, under the benchmark's name followed by Few and Many.
#define QUILLET_GROWTH(name, few, ...)         \
    void name##Few(benchmark::State& state) {  \
        constexpr int Count = few;             \
        __VA_ARGS__;                           \
    }                                          \
    void name##Many(benchmark::State& state) { \
        constexpr int Count = 8 * (few);       \
        __VA_ARGS__;                           \
    }                                          \
    QUILLET_BENCHMARK(name##Few);              \
    QUILLET_BENCHMARK(name##Many)
