// What compilers tell processors about memory.
#pragma once

namespace quillet::platform {

// Has the memory at an address, which need not be valid, on its way while other work is done.
inline void FetchAhead(const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    static_cast<void>(address);
#endif
}

}  // namespace quillet::platform
