#include "output/PlainText.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace quillet::tool {

namespace {

unsigned char ByteAt(std::string_view text, std::size_t position) {
    return position < text.size() ? static_cast<unsigned char>(text[position])
                                  : static_cast<unsigned char>(0);
}

// Controls of the upper half: C2 80 to C2 9F.
bool IsUpperControl(unsigned char second) {
    return second >= 0x80 && second <= 0x9F;
}

// U+200E, U+200F, U+2028 to U+202E and U+2066 to U+2069, without their first byte E2.
bool IsLayoutControl(unsigned char second, unsigned char third) {
    return (second == 0x80 && (third == 0x8E || third == 0x8F || (third >= 0xA8 && third <= 0xAE))) ||
           (second == 0x81 && third >= 0xA6 && third <= 0xA9);
}

struct Control {
    unsigned m_codePoint;
    std::size_t m_bytes;
};

// The control character at a position; no bytes where there is none.
Control ControlAt(std::string_view text, std::size_t position) {
    const unsigned char first = ByteAt(text, position);
    const unsigned char second = ByteAt(text, position + 1);
    const unsigned char third = ByteAt(text, position + 2);
    if (first < 0x20 || first == 0x7F) {
        return {first, 1};
    }
    if (first == 0xC2 && IsUpperControl(second)) {
        return {second, 2};
    }
    if (first == 0xE2 && IsLayoutControl(second, third)) {
        return {0x2000U + (second & 0x3FU) * 0x40U + (third & 0x3FU), 3};
    }
    return {0, 0};
}

void AppendEscape(unsigned codePoint, std::string& out) {
    switch (codePoint) {
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default: {
            std::array<char, 16> escape;
            std::snprintf(escape.data(), escape.size(), "\\u{%x}", codePoint);
            out += escape.data();
        }
    }
}

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

void AppendVisible(std::string_view text, std::string& out) {
    for (std::size_t position = 0; position < text.size();) {
        const Control control = ControlAt(text, position);
        if (control.m_bytes == 0) {
            out += text[position++];
        } else {
            AppendEscape(control.m_codePoint, out);
            position += control.m_bytes;
        }
    }
}

std::string Visible(std::string_view text) {
    std::string visible;
    AppendVisible(text, visible);
    return visible;
}

std::size_t CountCodePoints(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string Shortened(std::string_view text, std::size_t codePoints) {
    std::size_t seen = 0;
    for (std::size_t position = 0; position < text.size(); ++position) {
        if (!IsContinuation(text[position]) && seen++ == codePoints) {
            return std::string(text.substr(0, position)) + "...";
        }
    }
    return std::string(text);
}

std::string Counted(std::size_t count, std::string_view thing) {
    return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t LongestInMessage = 60;
    return "'" + Shortened(text, LongestInMessage) + "'";
}

}  // namespace quillet::tool
