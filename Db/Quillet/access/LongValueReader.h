// The bytes of memo and OLE values, which lie in the row, in a row of another page, or in a chain of them.
#pragma once

#include <cstdint>
#include <vector>

#include "Quillet/access/DataPage.h"
#include "Quillet/access/Pager.h"

namespace quillet::access {

class LongValueReader {
public:
    explicit LongValueReader(Pager& pager) : m_pager(pager) {}

    // The value that a row's field stands for, until the next call. Throws Error if its place is damaged. A
    // value of which less is there than the field states is returned as far as it goes.
    ByteView Read(ByteView field);

    // Whether the last value was shorter than stated.
    bool IsShort() const { return m_isShort; }

private:
    ByteView ReadPiece(RowPointer pointer);
    ByteView ReadChain(RowPointer pointer, std::size_t length);

    Pager& m_pager;
    bool m_isShort = false;
    // Keeps the bytes that were handed out.
    DataPage m_page;
    std::vector<std::uint8_t> m_joined;
};

}  // namespace quillet::access
