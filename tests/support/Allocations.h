// Between the plan and the functions that replace the system's. Private to both.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace quillet::test {

// Counts an allocation of so many bytes, 0 if unknown; false if it must fail. The caller is an address in the
// code that asks for memory.
bool MayAllocate(std::size_t size, const void* caller) noexcept;

// Keeps the number of live blocks.
void AddLiveBlocks(std::ptrdiff_t count) noexcept;

// Counts the block of an allocation, null if it failed, and returns it.
inline void* Counted(void* block) noexcept {
    AddLiveBlocks(block != nullptr ? 1 : 0);
    return block;
}

// The result of an allocation that must fail.
inline void* OutOfMemory() noexcept {
    errno = ENOMEM;
    return nullptr;
}

// The rest is implemented by the port.

// After its return, allocations call MayAllocate.
void InterposeAllocations();

// A number that no other running thread has, and never 0. Allocates nothing.
std::uintptr_t ThisThread() noexcept;

// Whether the caller is one of those that Callers::Ours means.
bool IsOurs(const void* caller) noexcept;

}  // namespace quillet::test
