// How the cost of something grows: each benchmark is there for a count and for eight times as many. What is
// linear takes eight times as long.
#pragma once

#include "Measure.h"

// The statement measures Count of something, under the names of the benchmark with Few and Many behind it.
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
