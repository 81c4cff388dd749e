// Numbers for equal keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace quillet {

// Gives equal keys the same number, counting from 0 in the order in which the keys first came. A key that is
// a view must outlive the object.
template <typename Key, typename Hash = std::hash<Key>>
class Numbering {
public:
    // No more keys than 32 bits can number.
    std::uint32_t NumberOf(const Key& key) {
        return NumberOf(key, [&key] { return key; });
    }
    // The same for a key that does not last; toKeep gives the one that is kept if it is new.
    template <typename ToKeep>
    std::uint32_t NumberOf(const Key& key, ToKeep toKeep) {
        if (m_keys.size() * LoadDivisor >= m_slots.size()) {
            Grow();
        }
        const std::uint64_t hash = Spread(Hash()(key));
        Slot& slot = m_slots[Find(hash, key)];
        if (slot.m_next == 0) {
            m_keys.push_back(toKeep());
            slot = {static_cast<std::uint32_t>(hash), static_cast<std::uint32_t>(m_keys.size())};
        }
        return slot.m_next - 1;
    }

    // The keys by number.
    const std::vector<Key>& Keys() const { return m_keys; }

private:
    static constexpr std::size_t FirstSlots = 64;
    // A table is at most half full.
    static constexpr std::size_t LoadDivisor = 2;
    static constexpr unsigned HighHalf = 32;

    // A part of the hash, and the number that follows the key's; 0 in a free slot.
    struct Slot {
        std::uint32_t m_hash;
        std::uint32_t m_next;
    };

    // The hash of a number may be that number; here all its bits have moved down.
    static std::uint64_t Spread(std::uint64_t hash) {
        constexpr std::uint64_t OddFactor = 0x9E3779B97F4A7C15;
        hash *= OddFactor;
        return hash ^ (hash >> HighHalf);
    }

    std::size_t Find(std::uint64_t hash, const Key& key) const {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t at = static_cast<std::uint32_t>(hash) & mask;
        while (m_slots[at].m_next != 0 && !(m_slots[at].m_hash == static_cast<std::uint32_t>(hash) &&
                                            m_keys[m_slots[at].m_next - 1] == key)) {
            at = (at + 1) & mask;
        }
        return at;
    }

    void Grow() {
        std::vector<Slot> slots(m_slots.empty() ? FirstSlots : m_slots.size() * 2);
        const std::size_t mask = slots.size() - 1;
        for (const Slot& slot : m_slots) {
            if (slot.m_next != 0) {
                std::size_t at = slot.m_hash & mask;
                while (slots[at].m_next != 0) {
                    at = (at + 1) & mask;
                }
                slots[at] = slot;
            }
        }
        m_slots.swap(slots);
    }

    std::vector<Slot> m_slots;
    std::vector<Key> m_keys;
};

}  // namespace quillet
