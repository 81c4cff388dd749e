// Between the plan and the functions that stand in front of the system's. Private to both.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace quillet::test {

// Counts an allocation of so many bytes, 0 where nobody knows; false where it is to fail. The caller is an
// address in the code that asks for memory.
bool MayAllocate(std::size_t size, const void* caller) noexcept;

// Keeps the number of live blocks.
void AddLiveBlocks(std::ptrdiff_t count) noexcept;

// What an allocation of that block gives, or one that failed.
inline void* Counted(void* block) noexcept {
    AddLiveBlocks(block != nullptr ? 1 : 0);
    return block;
}

// What an allocation that is to fail gives.
inline void* OutOfMemory() noexcept {
    errno = ENOMEM;
    return nullptr;
}

// The rest is the port's.

// From its return on, allocations pass by MayAllocate.
void InterposeAllocations();

// A number that no other running thread has, and never 0. Allocates nothing.
std::uintptr_t ThisThread() noexcept;

// Whether the caller is one of those that Callers::Ours means.
bool IsOurs(const void* caller) noexcept;

}  // namespace quillet::test
