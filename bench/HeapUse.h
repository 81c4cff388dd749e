// How much the process has taken from its heap.
#pragma once

#include <cstddef>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace bench {

// Bytes in blocks that are in use, the allocator's own overhead included; 0 where the system does not tell.
inline std::size_t HeapInUse() {
#if defined(__GLIBC__)
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    return 0;
#endif
}

}  // namespace bench
