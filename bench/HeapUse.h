// The heap memory in use by the process.
#pragma once

#include <cstddef>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace bench {

// Bytes in allocated blocks, including the allocator's overhead; 0 if the system does not tell.
inline std::size_t HeapInUse() {
#if defined(__GLIBC__)
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    return 0;
#endif
}

}  // namespace bench
