// The positions that a cursor remembers.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "Quillet/platform/Automation.h"

namespace quillet {

// Positions by their numbers.
class Bookmarks {
public:
    // Remembers the position, unless the number is taken.
    void Add(uint64 number, std::int32_t position) { m_positions.emplace(number, position); }
    // Remembers the position, also if the number is taken.
    void Set(uint64 number, std::int32_t position) { m_positions[number] = position; }
    // Nothing for an unknown number.
    std::optional<std::int32_t> Find(uint64 number) const;
    void Clear() { m_positions.clear(); }

    // A row was deleted, and the cursor is at the row before it. Bookmarks of that row are dropped, those of
    // later rows move up, so those of the deleted row now refer to the row before it.
    void RowDeleted(std::int32_t before);

private:
    std::map<uint64, std::int32_t> m_positions;
};

}  // namespace quillet
