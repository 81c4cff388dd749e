// Replaces the allocations of the C library, which can still be called by their second names, or of a
// sanitizer. There, operator new does not call malloc, so it is replaced too.
#include <link.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <string_view>

#include "support/Allocations.h"

#if defined(QUILLET_ASKS_SANITIZER)
#define SYSTEM_NAME(name) __interceptor_##name
#else
#define SYSTEM_NAME(name) __libc_##name
#endif
#define FOR_EVERYBODY __attribute__((visibility("default")))

extern "C" {
void* SYSTEM_NAME(malloc)(std::size_t size);
void* SYSTEM_NAME(calloc)(std::size_t count, std::size_t size);
void* SYSTEM_NAME(realloc)(void* block, std::size_t size);
void* SYSTEM_NAME(memalign)(std::size_t alignment, std::size_t size);
void SYSTEM_NAME(free)(void* block);
}

namespace quillet::test {

namespace {

struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

// The code of the libraries that Callers::Ours means.
struct OurCode {
    std::array<Range, 32> ranges;
    std::size_t count = 0;
};

constinit OurCode s_ourCode;

bool IsOurLibrary(std::string_view path) {
    constexpr std::array<std::string_view, 4> Names = {"libIQuillet", "libstdc++", "libpugixml", "libcsv"};
    // The program itself has an empty name.
    const std::string_view file = path.substr(path.find_last_of('/') + 1);
    return file.empty() || std::any_of(Names.begin(), Names.end(), [&](std::string_view name) {
               return file.substr(0, name.size()) == name;
           });
}

int AddCode(dl_phdr_info* library, std::size_t, void* context) {
    OurCode& code = *static_cast<OurCode*>(context);
    if (!IsOurLibrary(library->dlpi_name)) {
        return 0;
    }
    for (int i = 0; i < library->dlpi_phnum && code.count < code.ranges.size(); ++i) {
        const auto& segment = library->dlpi_phdr[i];
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0) {
            const std::uintptr_t begin = library->dlpi_addr + segment.p_vaddr;
            code.ranges[code.count++] = {begin, begin + segment.p_memsz};
        }
    }
    return 0;
}

}  // namespace

void InterposeAllocations() {
    // The linker has done that; only the code of the libraries must be found.
    if (s_ourCode.count == 0) {
        dl_iterate_phdr(AddCode, &s_ourCode);
    }
}

std::uintptr_t ThisThread() noexcept {
    static constinit thread_local char s_mark = 0;
    return reinterpret_cast<std::uintptr_t>(&s_mark);
}

bool IsOurs(const void* caller) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    for (std::size_t i = 0; i < s_ourCode.count; ++i) {
        if (address >= s_ourCode.ranges[i].begin && address < s_ourCode.ranges[i].end) {
            return true;
        }
    }
    return false;
}

}  // namespace quillet::test

using quillet::test::AddLiveBlocks;
using quillet::test::Counted;
using quillet::test::MayAllocate;
using quillet::test::OutOfMemory;

extern "C" {

FOR_EVERYBODY void* malloc(std::size_t size) noexcept {
    return MayAllocate(size, __builtin_return_address(0)) ? Counted(SYSTEM_NAME(malloc)(size))
                                                          : OutOfMemory();
}

FOR_EVERYBODY void* calloc(std::size_t count, std::size_t size) noexcept {
    return MayAllocate(count * size, __builtin_return_address(0)) ? Counted(SYSTEM_NAME(calloc)(count, size))
                                                                  : OutOfMemory();
}

FOR_EVERYBODY void* realloc(void* block, std::size_t size) noexcept {
    if (!MayAllocate(size, __builtin_return_address(0))) {
        return OutOfMemory();
    }
    void* const moved = SYSTEM_NAME(realloc)(block, size);
    AddLiveBlocks((block == nullptr && moved != nullptr ? 1 : 0) - (block != nullptr && size == 0 ? 1 : 0));
    return moved;
}

FOR_EVERYBODY void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return MayAllocate(size, __builtin_return_address(0)) ? Counted(SYSTEM_NAME(memalign)(alignment, size))
                                                          : OutOfMemory();
}

FOR_EVERYBODY void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return MayAllocate(size, __builtin_return_address(0)) ? Counted(SYSTEM_NAME(memalign)(alignment, size))
                                                          : OutOfMemory();
}

FOR_EVERYBODY int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    if (!MayAllocate(size, __builtin_return_address(0))) {
        return ENOMEM;
    }
    void* const made = Counted(SYSTEM_NAME(memalign)(alignment, size));
    if (made == nullptr) {
        return ENOMEM;
    }
    *block = made;
    return 0;
}

FOR_EVERYBODY void free(void* block) noexcept {
    AddLiveBlocks(block != nullptr ? -1 : 0);
    SYSTEM_NAME(free)(block);
}
}

#if defined(QUILLET_ASKS_SANITIZER)

namespace {

void* New(std::size_t size, const void* caller) noexcept {
    return MayAllocate(size, caller) ? Counted(SYSTEM_NAME(malloc)(size)) : nullptr;
}

void* New(std::size_t size, std::align_val_t alignment, const void* caller) noexcept {
    return MayAllocate(size, caller)
               ? Counted(SYSTEM_NAME(memalign)(static_cast<std::size_t>(alignment), size))
               : nullptr;
}

// As the C++ run-time does, with the program's new-handler.
template <typename... Arguments>
void* NewOrThrow(Arguments... arguments) {
    for (;;) {
        if (void* const block = New(arguments...)) {
            return block;
        }
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) {
            throw std::bad_alloc();
        }
        handler();
    }
}

}  // namespace

#define CALLER __builtin_return_address(0)

FOR_EVERYBODY void* operator new(std::size_t size) {
    return NewOrThrow(size, CALLER);
}
FOR_EVERYBODY void* operator new[](std::size_t size) {
    return NewOrThrow(size, CALLER);
}
FOR_EVERYBODY void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return New(size, CALLER);
}
FOR_EVERYBODY void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return New(size, CALLER);
}
FOR_EVERYBODY void* operator new(std::size_t size, std::align_val_t alignment) {
    return NewOrThrow(size, alignment, CALLER);
}
FOR_EVERYBODY void* operator new[](std::size_t size, std::align_val_t alignment) {
    return NewOrThrow(size, alignment, CALLER);
}
FOR_EVERYBODY void operator delete(void* block) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete[](void* block) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete(void* block, std::size_t) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete[](void* block, std::size_t) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete(void* block, std::align_val_t) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete[](void* block, std::align_val_t) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    free(block);
}
FOR_EVERYBODY void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    free(block);
}

#endif
