// Counting, the same on every system.
#include "support/AllocationPlan.h"

#include <atomic>

#include "support/Allocations.h"

namespace quillet::test {

namespace {

// Written by the arming thread; while armed, read and written by that thread only.
struct State {
    std::size_t failing = 0;
    Failing which = Failing::Once;
    Callers whose = Callers::All;
    std::size_t counted = 0;
    std::size_t bytes = 0;
    std::size_t failed = 0;
};

// Allocations come before constructors run.
constinit State s_state;
constinit std::atomic<std::uintptr_t> s_armedThread{0};
constinit std::atomic<std::ptrdiff_t> s_liveBlocks{0};

bool IsArmedHere() noexcept {
    const std::uintptr_t armed = s_armedThread.load(std::memory_order_relaxed);
    return armed != 0 && armed == ThisThread();
}

bool Fails(std::size_t number) noexcept {
    return s_state.failing != 0 &&
           (s_state.which == Failing::Once ? number == s_state.failing : number >= s_state.failing);
}

}  // namespace

bool MayAllocate(std::size_t size, const void* caller) noexcept {
    if (!IsArmedHere() || (s_state.whose == Callers::Ours && !IsOurs(caller))) {
        return true;
    }
    const bool fails = Fails(++s_state.counted);
    s_state.bytes += size;
    s_state.failed += fails ? 1 : 0;
    return !fails;
}

void AddLiveBlocks(std::ptrdiff_t count) noexcept {
    s_liveBlocks.fetch_add(count, std::memory_order_relaxed);
}

AllocationPlan::AllocationPlan(std::size_t failing, Failing which, Callers whose) {
    InterposeAllocations();
    s_state = {failing, which, whose, 0, 0, 0};
    s_armedThread = ThisThread();
}

AllocationPlan::~AllocationPlan() {
    Disarm();
}

void AllocationPlan::Disarm() {
    s_armedThread = 0;
}

std::size_t AllocationPlan::Counted() const {
    return s_state.counted;
}

std::size_t AllocationPlan::CountedBytes() const {
    return s_state.bytes;
}

bool AllocationPlan::HasFailed() const {
    return s_state.failed != 0;
}

std::ptrdiff_t LiveBlocks() {
    return s_liveBlocks;
}

std::size_t NextInSweep(std::size_t failing) {
#if defined(_WIN32)
    constexpr std::size_t Dense = 200;
    constexpr std::size_t Step = 17;
    return failing < Dense ? failing + 1 : failing + Step;
#else
    return failing + 1;
#endif
}

}  // namespace quillet::test
