// Conversion between UTF-8 and UTF-16.
#pragma once

#include <string>
#include <string_view>

#include "Quillet/platform/Text.h"

namespace quillet {

using platform::WideString;
using platform::WideView;

inline bool IsAscii(std::string_view text) {
    unsigned char all = 0;
    for (const char unit : text) {
        all |= static_cast<unsigned char>(unit);
    }
    return all < 0x80;
}

// Whether every byte belongs to a well-formed sequence (no overlong forms, no surrogates, up to U+10FFFF).
bool IsValidUtf8(std::string_view text);

// The length of the well-formed beginning of text, in bytes.
std::size_t ValidUtf8Length(std::string_view text);

// Appends text to target; each malformed byte becomes U+FFFD.
void AppendWide(std::string_view text, WideString& target);

// Appends text to target; each lone surrogate becomes U+FFFD.
void AppendUtf8(WideView text, std::string& target);

// Whether a surrogate in the text has no other that it forms a pair with.
bool HasLoneSurrogate(WideView text);

// Appends one code point (not a surrogate, up to U+10FFFF).
void AppendCodePoint(char32_t codePoint, std::string& target);

// Reads the code point at position and moves position past it; a lone surrogate is returned as it is.
inline char32_t NextCodePoint(WideView text, std::size_t& position) {
    const char32_t first = static_cast<char16_t>(text[position++]);
    if (first < 0xD800 || first > 0xDBFF || position == text.size()) {
        return first;
    }
    const char32_t second = static_cast<char16_t>(text[position]);
    if (second < 0xDC00 || second > 0xDFFF) {
        return first;
    }
    ++position;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

inline bool IsSurrogate(char32_t codePoint) {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

}  // namespace quillet
