// Case mapping by a table. The system's own mapping depends on the version of Windows and leaves out
// everything above the Basic Multilingual Plane.
#include "Quillet/platform/CaseMapping.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace quillet::platform {
namespace {

// Code points from the first to the last, one step apart, that are mapped by the same distance.
struct CaseRange {
    char32_t m_first;
    char32_t m_last;
    std::uint32_t m_step;
    std::int32_t m_distance;
};

// The ranges of each mapping ascend and do not overlap.
#include "Quillet/platform/windows/CaseTable.inc"

template <std::size_t Count>
char32_t Map(const CaseRange (&ranges)[Count], char32_t c) {
    const auto range = std::lower_bound(std::begin(ranges), std::end(ranges), c,
                                        [](const CaseRange& it, char32_t code) { return it.m_last < code; });
    if (range == std::end(ranges) || c < range->m_first || (c - range->m_first) % range->m_step != 0) {
        return c;
    }
    return static_cast<char32_t>(static_cast<std::int32_t>(c) + range->m_distance);
}

}  // namespace

char32_t LowerOf(char32_t c) {
    return Map(ToLower, c);
}

char32_t UpperOf(char32_t c) {
    return Map(ToUpper, c);
}

char32_t FoldOf(char32_t c) {
    return Map(ToFolded, c);
}

}  // namespace quillet::platform
