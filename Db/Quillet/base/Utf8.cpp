#include "Quillet/base/Utf8.h"

#include <cstdint>
#include <cstring>

namespace quillet {

namespace {

constexpr char32_t Malformed = 0xFFFFFFFF;
constexpr char32_t Replacement = 0xFFFD;

bool IsAsciiWord(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return (word & 0x8080808080808080U) == 0;
}

std::size_t SkipAscii(std::string_view text, std::size_t position) {
    while (position + sizeof(std::uint64_t) <= text.size() && IsAsciiWord(text.data() + position)) {
        position += sizeof(std::uint64_t);
    }
    while (position < text.size() && static_cast<unsigned char>(text[position]) < 0x80) {
        ++position;
    }
    return position;
}

// Decodes the sequence at position. A malformed one moves position by one byte.
char32_t Decode(std::string_view text, std::size_t& position) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(position);
    std::size_t length = 0;
    char32_t codePoint = 0;
    char32_t least = 0;
    if (lead < 0x80) {
        ++position;
        return lead;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1FU;
        least = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        codePoint = lead & 0x0FU;
        least = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07U;
        least = 0x10000;
    }
    if (length == 0 || position + length > text.size()) {
        ++position;
        return Malformed;
    }
    for (std::size_t i = 1; i < length; ++i) {
        const unsigned char trail = byteAt(position + i);
        if ((trail & 0xC0U) != 0x80) {
            ++position;
            return Malformed;
        }
        codePoint = (codePoint << 6) | (trail & 0x3FU);
    }
    if (codePoint < least || codePoint > 0x10FFFF || IsSurrogate(codePoint)) {
        ++position;
        return Malformed;
    }
    position += length;
    return codePoint;
}

}  // namespace

bool IsValidUtf8(std::string_view text) {
    return ValidUtf8Length(text) == text.size();
}

std::size_t ValidUtf8Length(std::string_view text) {
    std::size_t position = 0;
    while ((position = SkipAscii(text, position)) < text.size()) {
        const std::size_t start = position;
        if (Decode(text, position) == Malformed) {
            return start;
        }
    }
    return text.size();
}

void AppendWide(std::string_view text, WideString& target) {
    target.reserve(target.size() + text.size());
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t plainEnd = SkipAscii(text, position);
        target.append(text.begin() + static_cast<std::ptrdiff_t>(position),
                      text.begin() + static_cast<std::ptrdiff_t>(plainEnd));
        position = plainEnd;
        if (position == text.size()) {
            break;
        }
        char32_t codePoint = Decode(text, position);
        if (codePoint == Malformed) {
            codePoint = Replacement;
        }
        if (codePoint < 0x10000) {
            target.push_back(static_cast<WCHAR>(codePoint));
        } else {
            codePoint -= 0x10000;
            target.push_back(static_cast<WCHAR>(0xD800 + (codePoint >> 10)));
            target.push_back(static_cast<WCHAR>(0xDC00 + (codePoint & 0x3FF)));
        }
    }
}

bool HasLoneSurrogate(WideView text) {
    for (std::size_t i = 0; i < text.size();) {
        if (IsSurrogate(NextCodePoint(text, i))) {
            return true;
        }
    }
    return false;
}

void AppendUtf8(WideView text, std::string& target) {
    target.reserve(target.size() + text.size());
    std::size_t position = 0;
    while (position < text.size()) {
        const char32_t codePoint = NextCodePoint(text, position);
        AppendCodePoint(IsSurrogate(codePoint) ? Replacement : codePoint, target);
    }
}

void AppendCodePoint(char32_t codePoint, std::string& target) {
    const auto trail = [&](int shift) { return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        target.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        target.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        target.push_back(trail(0));
    } else if (codePoint < 0x10000) {
        target.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        target.push_back(trail(6));
        target.push_back(trail(0));
    } else {
        target.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        target.push_back(trail(12));
        target.push_back(trail(6));
        target.push_back(trail(0));
    }
}

}  // namespace quillet
