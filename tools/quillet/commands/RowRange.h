// The requested rows of a table.
#pragma once

#include <cstddef>
#include <limits>

namespace quillet::tool {

struct RowRange {
    std::size_t m_offset = 0;
    std::size_t m_limit = std::numeric_limits<std::size_t>::max();
};

}  // namespace quillet::tool
