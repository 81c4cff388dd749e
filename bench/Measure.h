// How a benchmark runs: each run is measured once; run.py starts it in a process of its own, several times in
// turn with its peer, and takes the medians.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <string>

#if defined(__unix__)
#include <sys/resource.h>
#endif

namespace bench {

inline void Require(bool held, const char* what) {
    if (!held) {
        throw std::runtime_error(what);
    }
}

// The most memory that the process has used, in bytes; 0 if the system does not tell.
inline double PeakMemory() {
#if defined(__unix__)
    constexpr double Kilo = 1024;
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return Kilo * static_cast<double>(usage.ru_maxrss);
#else
    return 0;
#endif
}

// Prepare returns the input of a run, and only Run is timed; its result is destroyed untimed.
template <typename Prepare, typename Run>
void Measure(benchmark::State& state, Prepare prepare, Run run) {
    for (auto _ : state) {
        auto subject = prepare();
        const std::clock_t processor = std::clock();
        const auto start = std::chrono::steady_clock::now();
        [[maybe_unused]] const auto result = run(subject);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        state.counters["cpu_seconds"] = static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC;
        state.counters["peak_bytes"] = PeakMemory();
        state.SetIterationTime(seconds.count());
    }
}

// Adds a benchmark that is measured once.
template <typename Run>
benchmark::internal::Benchmark& Add(const std::string& name, Run run) {
    return *benchmark::RegisterBenchmark(name.c_str(), run)
                ->Iterations(1)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
}

// Adds a benchmark that is measured for a count and for eight times as many: a linear cost is eight times as
// high.
template <typename Run>
void AddGrowth(const std::string& name, int few, Run run) {
    Add(name + "/few", [=](benchmark::State& state) { run(state, few); });
    Add(name + "/many", [=](benchmark::State& state) { run(state, 8 * few); });
}

// Runs what the arguments of the program ask for.
inline void RunAdded(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace bench
