#include "Quillet/platform/CodePage.h"

#include <string>

namespace quillet::platform {
namespace {

constexpr WCHAR Malformed = 0xFFFD;

}  // namespace

std::optional<CodePage> CodePage::Find(unsigned number) {
    const eCodePageKind kind = KindOfCodePage(number);
    if (kind == eCodePageKind::Unknown) {
        return std::nullopt;
    }
    return CodePage(number, kind == eCodePageKind::SingleByte);
}

CodePage::CodePage(unsigned number, bool isSingleByte) : m_number(number), m_isSingleByte(isSingleByte) {
    if (!m_isSingleByte) {
        return;
    }
    std::string bytes;
    for (std::size_t byte = 0; byte < Bytes; ++byte) {
        bytes += static_cast<char>(byte);
    }
    WideString text;
    AppendDecoded(number, bytes, text);
    text.resize(Bytes, Malformed);
    for (std::size_t byte = 0; byte < Bytes; ++byte) {
        m_characters[byte] = text[byte] == Malformed ? static_cast<WCHAR>(byte) : text[byte];
    }
}

void CodePage::Append(std::string_view bytes, WideString& text) const {
    if (!m_isSingleByte) {
        AppendDecoded(m_number, bytes, text);
        return;
    }
    const std::size_t start = text.size();
    text.resize(start + bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text[start + i] = m_characters[static_cast<unsigned char>(bytes[i])];
    }
}

}  // namespace quillet::platform
