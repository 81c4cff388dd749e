// Calls into ICU that must not mistake out of memory for anything else. Private to this port.
#pragma once

#include <unicode/utypes.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace quillet::platform {

inline void RequireMemory(UErrorCode status) {
    if (status == U_MEMORY_ALLOCATION_ERROR) {
        throw std::bad_alloc();
    }
}

// Call this before ICU opens anything: out of memory, some of its functions end the process and others
// remember the failure for good. Throws std::bad_alloc if there is too little memory for them.
inline void RequireMemory() {
    constexpr std::size_t Enough = std::size_t{1} << 20;
    void* volatile room = std::malloc(Enough);
    if (room == nullptr) {
        throw std::bad_alloc();
    }
    std::free(room);
}

// Returns what the call gives. Throws std::bad_alloc if ICU ran out of memory meanwhile, whatever the result:
// some of its functions report no errors, and others take data that they could not load for missing data. The
// C library sets errno for every allocation that fails.
template <typename Call>
auto WithMemory(const Call& call) {
    errno = 0;
    auto result = call();
    if (errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return result;
}

}  // namespace quillet::platform
