// Usage maps: sets of pages, kept as a row of a data page. A small map has its bits in the row; a large one
// has there the numbers of pages that hold them.
#pragma once

#include <cstddef>
#include <vector>

#include "Quillet/access/DataPage.h"

namespace quillet::access {

class UsageMap {
public:
    struct Members {
        // Ascending.
        std::vector<PageNumber> m_pages;
        // How many pages the map names beyond the end of the file.
        std::size_t m_beyond = 0;
    };

    // Throws Error if the pointer leads to no map.
    UsageMap(Pager& pager, RowPointer pointer);

    // The pages in the set. Throws Error if a page of bits is none.
    Members Pages(Pager& pager) const;

private:
    void AddBits(ByteView bits, std::uint64_t firstPage, PageNumber pageCount, Members& members) const;

    LocatedRow m_place;
    ByteView m_row;
};

}  // namespace quillet::access
