#include "Quillet/Db_RowArena.h"

#include <algorithm>

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
    if (!m_released.empty()) {
        const auto found = m_released.find(bytes);
        if (found != m_released.end() && !found->second.empty()) {
            void* const piece = found->second.back();
            found->second.pop_back();
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
    m_released[Aligned(bytes)].push_back(piece);
}

void RowArena::Reserve(std::size_t bytes) {
    if (bytes > m_left) {
        AddBlock(std::min(std::max(bytes, m_total), LargestBlock));
    }
}

void RowArena::AddBlock(std::size_t bytes) {
    m_blocks.emplace_back(new std::byte[bytes]);
    m_free = m_blocks.back().get();
    m_left = bytes;
    m_total += bytes;
}

}  // namespace quillet
