// Numbers as they lie in the bytes of a file. Nothing here checks bounds: the caller has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace quillet::access {

using ByteView = std::span<const std::uint8_t>;

// The number of a page of the file, the header's being 0.
using PageNumber = std::uint32_t;

inline std::uint16_t LittleU16(ByteView bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

inline std::uint32_t LittleU24(ByteView bytes, std::size_t offset) {
    return LittleU16(bytes, offset) | std::uint32_t{bytes[offset + 2]} << 16;
}

inline std::uint32_t LittleU32(ByteView bytes, std::size_t offset) {
    return LittleU16(bytes, offset) | std::uint32_t{LittleU16(bytes, offset + 2)} << 16;
}

inline std::uint64_t LittleU64(ByteView bytes, std::size_t offset) {
    return LittleU32(bytes, offset) | std::uint64_t{LittleU32(bytes, offset + 4)} << 32;
}

inline float LittleFloat(ByteView bytes, std::size_t offset) {
    const std::uint32_t bits = LittleU32(bytes, offset);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline double LittleDouble(ByteView bytes, std::size_t offset) {
    const std::uint64_t bits = LittleU64(bytes, offset);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline constexpr std::size_t BitsOfByte = 8;

inline bool BitOf(ByteView bytes, std::size_t bit) {
    return (bytes[bit / BitsOfByte] >> (bit % BitsOfByte) & 1) != 0;
}

// Where a row lies: a page, and the place of the row in that page's directory.
struct RowPointer {
    PageNumber m_page = 0;
    std::uint8_t m_row = 0;

    static constexpr std::size_t Size = 4;

    static RowPointer Read(ByteView bytes, std::size_t offset) {
        return {LittleU24(bytes, offset + 1), bytes[offset]};
    }

    bool operator==(const RowPointer&) const = default;
};

}  // namespace quillet::access
