// Strings with their length in front: one block of malloc, four bytes of length, the units, a terminator.
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "platform/Automation.h"

namespace {

using ByteLength = std::uint32_t;

constexpr UINT MaxUnits = (std::numeric_limits<ByteLength>::max() - sizeof(ByteLength)) / sizeof(OLECHAR) - 1;

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
    const ByteLength bytes = length * static_cast<ByteLength>(sizeof(OLECHAR));
    auto* block = static_cast<char*>(std::malloc(sizeof(ByteLength) + bytes + sizeof(OLECHAR)));
    if (block == nullptr) {
        return nullptr;
    }
    std::memcpy(block, &bytes, sizeof bytes);
    auto* units = reinterpret_cast<BSTR>(block + sizeof(ByteLength));
    if (text != nullptr) {
        std::memcpy(units, text, bytes);
    }
    units[length] = 0;
    return units;
}

void SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(reinterpret_cast<char*>(text) - sizeof(ByteLength));
    }
}

UINT SysStringLen(BSTR text) {
    if (text == nullptr) {
        return 0;
    }
    ByteLength bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
    return static_cast<UINT>(bytes / sizeof(OLECHAR));
}
