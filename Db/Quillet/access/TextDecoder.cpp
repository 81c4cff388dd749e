#include "Quillet/access/TextDecoder.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "Quillet/access/Error.h"

namespace quillet::access {
namespace {

constexpr unsigned WesternCodePage = 1252;

void AppendUnits(ByteView bytes, WideString& text) {
    const std::size_t start = text.size();
    const std::size_t units = bytes.size() / 2;
    text.resize(start + units);
    for (std::size_t i = 0; i < units; ++i) {
        text[start + i] = static_cast<WCHAR>(LittleU16(bytes, 2 * i));
    }
}

bool IsCompressed(ByteView bytes) {
    return bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE;
}

void AppendCompressed(ByteView bytes, WideString& text) {
    bool isOneByteEach = true;
    while (!bytes.empty()) {
        const auto part = static_cast<std::size_t>(std::ranges::find(bytes, 0) - bytes.begin());
        if (isOneByteEach) {
            text.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(part));
        } else {
            AppendUnits(bytes.first(part), text);
        }
        isOneByteEach = !isOneByteEach;
        bytes = bytes.subspan(std::min(part + 1, bytes.size()));
    }
}

}  // namespace

TextDecoder::TextDecoder(const Header& header) {
    if (!header.PageLayout().m_isJet3) {
        return;
    }
    const unsigned number = header.m_codePage == 0 ? WesternCodePage : header.m_codePage;
    m_codePage = platform::CodePage::Find(number);
    if (!m_codePage) {
        throw Error(Error::Refused,
                    "The file's texts are in the unknown code page " + std::to_string(number) + ".");
    }
}

void TextDecoder::AppendName(ByteView bytes, WideString& text) const {
    if (m_codePage) {
        m_codePage->Append({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, text);
    } else {
        AppendUnits(bytes, text);
    }
}

void TextDecoder::AppendValue(ByteView bytes, WideString& text) const {
    if (!m_codePage && IsCompressed(bytes)) {
        AppendCompressed(bytes.subspan(2), text);
    } else {
        AppendName(bytes, text);
    }
}

}  // namespace quillet::access
