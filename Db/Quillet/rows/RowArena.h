// Memory for the rows of a table.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace quillet {

// Hands out pieces of large blocks, so that a table is built and destroyed without asking the heap for every
// row. Released pieces are handed out again; the blocks go when the arena goes. Pieces are aligned for any
// object.
class RowArena {
public:
    RowArena() = default;
    RowArena(const RowArena&) = delete;
    RowArena& operator=(const RowArena&) = delete;

    // Throws std::bad_alloc.
    void* Allocate(std::size_t bytes);
    // The piece must have been allocated with the same number of bytes. Can't fail.
    void Release(void* piece, std::size_t bytes);

private:
    void AddBlock(std::size_t bytes);

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::byte* m_free = nullptr;
    std::size_t m_left = 0;
    std::size_t m_total = 0;
    // The piece of each size that was released last; each holds the address of the one before.
    std::map<std::size_t, void*> m_released;
    // The size for which there is room in that map, so that one after the other of a size asks once.
    std::size_t m_lastSize = 0;
    bool m_hasReleased = false;
};

}  // namespace quillet
