// Text in the system's numbered encodings, as old files keep it.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

class CodePage {
public:
    // nullopt if the system does not know the number.
    static std::optional<CodePage> Find(unsigned number);

    // Appends the characters that the bytes stand for; malformed bytes become U+FFFD. A byte that a code page
    // of one byte a character leaves open, such as 0x81 in 1252, is the character of its own number.
    void Append(std::string_view bytes, WideString& text) const;

private:
    static constexpr std::size_t Bytes = 256;

    CodePage(unsigned number, bool isSingleByte);

    unsigned m_number;
    bool m_isSingleByte;
    // For code pages of one byte a character.
    std::array<WCHAR, Bytes> m_characters{};
};

enum class eCodePageKind { Unknown, SingleByte, MultiByte };

// For each port to supply: what the system knows of a code page, and the conversion of one that it knows.
eCodePageKind KindOfCodePage(unsigned codePage);
void AppendDecoded(unsigned codePage, std::string_view bytes, WideString& text);

}  // namespace quillet::platform
