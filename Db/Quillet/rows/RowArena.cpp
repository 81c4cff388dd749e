#include "Quillet/rows/RowArena.h"

#include <algorithm>
#include <cstring>

namespace quillet {

namespace {

constexpr std::size_t Alignment = alignof(std::max_align_t);
constexpr std::size_t LargestBlock = std::size_t(1) << 20;

constexpr std::size_t Aligned(std::size_t bytes) {
    return (bytes + Alignment - 1) / Alignment * Alignment;
}

}  // namespace

void* RowArena::Allocate(std::size_t bytes) {
    bytes = Aligned(bytes);
    if (bytes != m_lastSize || m_hasReleased) {
        // The place for released pieces is made here, where it may fail.
        void*& released = m_released[bytes];
        m_lastSize = bytes;
        if (released != nullptr) {
            void* const piece = released;
            std::memcpy(&released, piece, sizeof released);
            return piece;
        }
    }
    if (bytes > m_left) {
        // Each block as large as all before, so that a small table takes little and a large one few blocks.
        AddBlock(std::max(bytes, std::min(m_total, LargestBlock)));
    }
    std::byte* const piece = m_free;
    m_free += bytes;
    m_left -= bytes;
    return piece;
}

void RowArena::Release(void* piece, std::size_t bytes) {
    void*& released = m_released.find(Aligned(bytes))->second;
    std::memcpy(piece, &released, sizeof released);
    released = piece;
    m_hasReleased = true;
}

void RowArena::AddBlock(std::size_t bytes) {
    m_blocks.push_back(std::make_unique_for_overwrite<std::byte[]>(bytes));
    m_free = m_blocks.back().get();
    m_left = bytes;
    m_total += bytes;
}

}  // namespace quillet
