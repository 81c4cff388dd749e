// Makes chosen allocations of a piece of code fail, inside the library too.
//
// On POSIX this program's own malloc, calloc, realloc and their aligned relatives stand in front of the
// system's, so every allocation of the process passes here, those of operator new and of other libraries
// included. On Windows the import tables of the program, the library and the C++ run-time that both share are
// changed: allocations of the C library and those of the automation library that hand out memory pass here,
// what system libraries do among themselves does not.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillet::test {

enum class Failing {
    Once,
    // That one and all later ones.
    FromThereOn,
};

enum class Callers {
    All,
    // Only calls from this program, the library, and the libraries that report a failure to them. ODBC
    // drivers and the driver manager, which may end the process out of memory, get theirs, and so does
    // ICU, which opens no locale without.
    Ours,
};

// While it lives, allocations of the thread that made it are counted, and those that it names fail as the
// function at hand does: null, E_OUTOFMEMORY or std::bad_alloc. No other thread is touched, and there is one
// plan at a time.
//
// Let the code under test run once to its end and once with allocation 1 failing before every allocation from
// some one on fails: the C++ run-time makes room for a thread's exceptions when the first is thrown, and
// where it gets none the process ends.
class AllocationPlan {
public:
    // Fails nothing; only counts.
    AllocationPlan() : AllocationPlan(0) {}
    // Fails allocation number failing, counted from 1.
    explicit AllocationPlan(std::size_t failing, Failing which = Failing::Once, Callers whose = Callers::All);
    AllocationPlan(const AllocationPlan&) = delete;
    AllocationPlan& operator=(const AllocationPlan&) = delete;
    ~AllocationPlan();

    // Ends counting and failing.
    void Disarm();

    // How many allocations there were, with those that failed.
    std::size_t Counted() const;
    // How many bytes they asked for. On Windows only those of the C library are known.
    std::size_t CountedBytes() const;
    // Whether any failed.
    bool HasFailed() const;
};

// How many blocks the process holds at the moment. Only differences mean something. On Windows these are the
// blocks of program, library and C++ run-time from the C library, without those of the automation library.
std::ptrdiff_t LiveBlocks();

// The number after this one in a sweep over all numbers. Under Windows, where a run takes longer, a sweep
// tries the first 200 and then every 17th.
std::size_t NextInSweep(std::size_t failing);

// Calls run(1), run(2), ... until it returns false, which means that no allocation failed. Returns how many
// did.
template <typename Run>
std::size_t SweepAllocations(const Run& run) {
    std::size_t failed = 0;
    for (std::size_t failing = 1; run(failing); failing = NextInSweep(failing)) {
        ++failed;
    }
    return failed;
}

}  // namespace quillet::test
