// Makes chosen allocations of a piece of code fail, inside the library too.
//
// On POSIX, this program's own malloc, calloc, realloc and their aligned variants replace the system's, so
// every allocation of the process is intercepted, including those of operator new and of other libraries. On
// Windows, the import tables of the program, the library and their shared C++ run-time are changed: calls of
// the C library's allocations and of the automation library's functions that return memory are intercepted,
// calls among system libraries are not.
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
    // Only calls from this program, the library, and the libraries that report failures to them. ODBC drivers
    // and the driver manager, which may end the process out of memory, are not affected, nor is ICU, which
    // needs memory to open a locale.
    Ours,
};

// During its lifetime, allocations of the thread that created it are counted, and the chosen ones fail as
// their function does: null, E_OUTOFMEMORY or std::bad_alloc. Other threads are not affected. There can be
// only one plan at a time.
//
// Before you let all allocations from some number on fail, run the code under test once to its end and once
// with allocation 1 failing: the C++ run-time allocates memory for a thread's exceptions when the first one
// is thrown, and ends the process if it gets none.
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

    // The number of allocations, including those that failed.
    std::size_t Counted() const;
    // How many bytes they asked for. On Windows only those of the C library are known.
    std::size_t CountedBytes() const;
    // Whether any failed.
    bool HasFailed() const;
};

// The number of live blocks of the process. Only differences are meaningful. On Windows, these are the blocks
// that the program, the library and the C++ run-time got from the C library, without those of the automation
// library.
std::ptrdiff_t LiveBlocks();

// The number after this one in a sweep over all numbers. On Windows, where a run takes longer, a sweep tries
// the first 200 and then every 17th.
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
