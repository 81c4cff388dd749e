#include "Quillet/rows/TextNumbers.h"

#include <cstring>

#include "Quillet/base/Utf8.h"

namespace quillet {

namespace {

// Begins the key of a text that has no UTF-8 form; its units follow as they are.
constexpr char UnitsFollow = '\xFF';

}  // namespace

std::uint32_t TextNumbers::NumberOf(WideView text) {
    m_text.clear();
    std::size_t position = 0;
    while (position < text.size()) {
        const char32_t codePoint = NextCodePoint(text, position);
        if (IsSurrogate(codePoint)) {
            m_text.assign(1, UnitsFollow);
            m_text.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR));
            break;
        }
        AppendCodePoint(codePoint, m_text);
    }
    return m_numbers.NumberOf(m_text, [this] { return std::string_view(m_texts.emplace_back(m_text)); });
}

WideView TextNumbers::Wide(std::uint32_t number, WideString& scratch) const {
    const std::string_view key = m_numbers.Keys()[number];
    scratch.clear();
    if (!key.empty() && key.front() == UnitsFollow) {
        scratch.resize((key.size() - 1) / sizeof(WCHAR));
        std::memcpy(scratch.data(), key.data() + 1, key.size() - 1);
    } else {
        AppendWide(key, scratch);
    }
    return scratch;
}

}  // namespace quillet
