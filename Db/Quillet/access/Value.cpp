#include "Quillet/access/Value.h"

#include <algorithm>

namespace quillet::access {
namespace {

// Divides the number by ten in place and returns the remainder.
std::uint32_t DivideByTen(std::array<std::uint32_t, 4>& words) {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : words) {
        const std::uint64_t part = rest << 32 | word;
        word = static_cast<std::uint32_t>(part / 10);
        rest = part % 10;
    }
    return static_cast<std::uint32_t>(rest);
}

bool IsZero(const std::array<std::uint32_t, 4>& words) {
    return std::ranges::all_of(words, [](std::uint32_t word) { return word == 0; });
}

}  // namespace

std::string Numeric::ToText() const {
    std::string reversed;
    std::array<std::uint32_t, 4> words = m_words;
    do {
        if (m_scale != 0 && reversed.size() == m_scale) {
            reversed += '.';
        }
        reversed += static_cast<char>('0' + DivideByTen(words));
    } while (!IsZero(words) || reversed.size() <= m_scale);
    if (m_isNegative && !IsZero(m_words)) {
        reversed += '-';
    }
    std::ranges::reverse(reversed);
    return reversed;
}

}  // namespace quillet::access
