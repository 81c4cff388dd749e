// Texts in attributes, many at a time. AppendEscaped in Tree.h does the same for any text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace quillet::xml {

// No byte takes more when it is escaped.
constexpr std::size_t MostEscapedBytes = 6;

namespace escaping {

constexpr std::size_t BytesAtOnce = 16;

// No text that XML can carry has other control characters than those that are escaped.
constexpr bool NeedsEscape(unsigned char byte) {
    return byte < 0x20 || byte == '&' || byte == '<' || byte == '>' || byte == '"';
}

// A loop without branches and of fixed length, which compilers turn into few instructions.
template <std::size_t Bytes, typename Is>
bool AnyOf(const char* bytes, Is is) {
    unsigned char any = 0;
    for (std::size_t i = 0; i < Bytes; ++i) {
        any |= static_cast<unsigned char>(is(static_cast<unsigned char>(bytes[i])));
    }
    return any != 0;
}

inline char* WriteEntity(char byte, char* text) {
    const auto put = [&](std::string_view entity) { return text + entity.copy(text, entity.size()); };
    switch (byte) {
        case '&':
            return put("&amp;");
        case '<':
            return put("&lt;");
        case '>':
            return put("&gt;");
        case '"':
            return put("&quot;");
        case '\t':
            return put("&#9;");
        case '\n':
            return put("&#10;");
        default:
            return put("&#13;");
    }
}

}  // namespace escaping

// Whether XML 1.0 can carry a text, which must be valid UTF-8.
inline bool IsCarried(std::string_view text) {
    const auto isSuspect = [](unsigned char byte) { return byte < 0x20 || byte == 0xEF; };
    std::size_t at = 0;
    constexpr std::size_t BytesAtOnce = 64;
    while (at + BytesAtOnce <= text.size() && !escaping::AnyOf<BytesAtOnce>(text.data() + at, isSuspect)) {
        at += BytesAtOnce;
    }
    for (; at < text.size(); ++at) {
        const char byte = text[at];
        if (static_cast<unsigned char>(byte) < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
            return false;
        }
        // U+FFFE and U+FFFF.
        const std::string_view beginning = text.substr(at, 3);
        if (beginning == "\xEF\xBF\xBE" || beginning == "\xEF\xBF\xBF") {
            return false;
        }
    }
    return true;
}

// Writes a text that XML can carry with its markup escaped, and returns where it ends.
inline char* WriteEscaped(std::string_view value, char* text) {
    while (!value.empty()) {
        if (value.size() >= escaping::BytesAtOnce &&
            !escaping::AnyOf<escaping::BytesAtOnce>(value.data(), escaping::NeedsEscape)) {
            std::memcpy(text, value.data(), escaping::BytesAtOnce);
            text += escaping::BytesAtOnce;
            value.remove_prefix(escaping::BytesAtOnce);
            continue;
        }
        const std::size_t some = std::min(value.size(), escaping::BytesAtOnce);
        for (const char byte : value.substr(0, some)) {
            if (escaping::NeedsEscape(static_cast<unsigned char>(byte))) {
                text = escaping::WriteEntity(byte, text);
            } else {
                *text++ = byte;
            }
        }
        value.remove_prefix(some);
    }
    return text;
}

}  // namespace quillet::xml
