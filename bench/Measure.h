// How a benchmark runs: a warm-up, then single timed runs, of which run.sh takes the best.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <stdexcept>

namespace bench {

inline void Require(bool held, const char* what) {
    if (!held) {
        throw std::runtime_error(what);
    }
}

// Runs once as a warm-up, then times one run for each repetition. Prepare returns the input of a run, and
// only Run is timed; its result is destroyed untimed.
template <typename Prepare, typename Run>
void Measure(benchmark::State& state, Prepare prepare, Run run) {
    static bool warm = false;
    if (!warm) {
        auto subject = prepare();
        run(subject);
        warm = true;
    }
    for (auto _ : state) {
        auto subject = prepare();
        const auto start = std::chrono::steady_clock::now();
        [[maybe_unused]] const auto result = run(subject);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(seconds.count());
    }
}

}  // namespace bench

#define QUILLET_BENCHMARK(function) \
    BENCHMARK(function)->Iterations(1)->Repetitions(5)->UseManualTime()->Unit(benchmark::kMillisecond)
