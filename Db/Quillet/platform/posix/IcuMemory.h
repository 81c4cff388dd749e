// Calls into ICU that must not take a lack of memory for anything else. Private to this port.
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

// To be called before ICU opens anything: some of its functions end the process where they get no memory, and
// others remember for good that they got none. Throws std::bad_alloc where there is too little for them.
inline void RequireRoom() {
    constexpr std::size_t Enough = std::size_t{1} << 20;
    void* volatile room = std::malloc(Enough);
    if (room == nullptr) {
        throw std::bad_alloc();
    }
    std::free(room);
}

// What the call gives. Throws std::bad_alloc where ICU ran out of memory meanwhile, whatever came out: some
// of its functions report no errors, and others take data that they could not load for data that is not
// there. The C library leaves a mark of every allocation that fails.
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
