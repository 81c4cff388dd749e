// Strings with their length in front: one block of malloc, four bytes of length, the bytes, a terminator.
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "Quillet/platform/Automation.h"

namespace {

using ByteLength = std::uint32_t;

// After an odd number of bytes the terminator is still a whole unit.
constexpr UINT TerminatorRoom = sizeof(OLECHAR) + 1;
constexpr UINT MaxBytes = std::numeric_limits<ByteLength>::max() - sizeof(ByteLength) - TerminatorRoom;
constexpr UINT MaxUnits = MaxBytes / sizeof(OLECHAR);

}  // namespace

BSTR SysAllocString(const OLECHAR* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::char_traits<OLECHAR>::length(text);
    return length > MaxUnits ? nullptr : SysAllocStringLen(text, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    if (length > MaxUnits) {
        return nullptr;
    }
    return SysAllocStringByteLen(reinterpret_cast<const char*>(text),
                                 length * static_cast<UINT>(sizeof(OLECHAR)));
}

BSTR SysAllocStringByteLen(const char* bytes, UINT length) {
    if (length > MaxBytes) {
        return nullptr;
    }
    const ByteLength prefix = length;
    auto* block = static_cast<char*>(std::malloc(sizeof prefix + std::size_t{length} + TerminatorRoom));
    if (block == nullptr) {
        return nullptr;
    }
    std::memcpy(block, &prefix, sizeof prefix);
    char* contents = block + sizeof prefix;
    if (bytes != nullptr) {
        std::memcpy(contents, bytes, length);
    }
    std::memset(contents + length, 0, TerminatorRoom);
    return reinterpret_cast<BSTR>(contents);
}

void SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(reinterpret_cast<char*>(text) - sizeof(ByteLength));
    }
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT SysStringByteLen(BSTR text) {
    if (text == nullptr) {
        return 0;
    }
    ByteLength bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
    return bytes;
}
