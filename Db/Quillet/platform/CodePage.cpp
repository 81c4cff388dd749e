#include "Quillet/platform/CodePage.h"

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
    WideString text;
    for (std::size_t byte = 0; byte < Bytes; ++byte) {
        const char one = static_cast<char>(byte);
        text.clear();
        AppendDecoded(number, std::string_view(&one, 1), text);
        const bool isOpen = text.size() != 1 || text.front() == Malformed;
        m_characters[byte] = isOpen ? static_cast<WCHAR>(byte) : text.front();
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
