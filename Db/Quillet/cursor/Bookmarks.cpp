#include "Quillet/cursor/Bookmarks.h"

namespace quillet {

std::optional<std::int32_t> Bookmarks::Find(uint64 number) const {
    const auto found = m_positions.find(number);
    return found == m_positions.end() ? std::nullopt : std::optional(found->second);
}

void Bookmarks::RowDeleted(std::int32_t before) {
    std::erase_if(m_positions, [&](const auto& bookmark) { return bookmark.second == before; });
    for (auto& [number, position] : m_positions) {
        if (position > before) {
            --position;
        }
    }
}

}  // namespace quillet
