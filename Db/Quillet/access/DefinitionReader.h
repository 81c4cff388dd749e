// The bytes of a table definition, in order, over all of its pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Quillet/access/Pager.h"

namespace quillet::access {

// A page is read when its bytes are asked for, so damage beyond them does no harm.
class DefinitionReader {
public:
    // Throws Error unless the page is a definition.
    DefinitionReader(Pager& pager, PageNumber first);

    // Continues at the offset from the definition's first byte.
    void Seek(std::size_t offset) { m_position = offset; }

    // The next bytes, until the next call. Throws Error if the definition has no more.
    ByteView Take(std::size_t size);
    std::uint8_t U8() { return Take(1)[0]; }
    std::uint16_t U16() { return LittleU16(Take(2), 0); }
    std::uint32_t U32() { return LittleU32(Take(4), 0); }

    // Those read so far.
    const std::vector<PageNumber>& Pages() const { return m_pages; }

private:
    void Append(PageNumber number, std::size_t skipped);

    Pager& m_pager;
    std::vector<std::uint8_t> m_bytes;
    std::vector<PageNumber> m_pages;
    PageNumber m_next = 0;
    std::size_t m_position = 0;
};

}  // namespace quillet::access
