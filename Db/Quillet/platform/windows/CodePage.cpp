// Code pages by the system's own conversion.
#include "Quillet/platform/CodePage.h"

namespace quillet::platform {

eCodePageKind KindOfCodePage(unsigned codePage) {
    CPINFO information;
    // Small numbers are not code pages but names such as "that of the system".
    if (codePage <= CP_SYMBOL || GetCPInfo(codePage, &information) == 0) {
        return eCodePageKind::Unknown;
    }
    return information.MaxCharSize == 1 ? eCodePageKind::SingleByte : eCodePageKind::MultiByte;
}

void AppendDecoded(unsigned codePage, std::string_view bytes, WideString& text) {
    const std::size_t start = text.size();
    // No byte of these encodings gives more than one unit.
    text.resize(start + bytes.size());
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()),
                                           text.data() + start, static_cast<int>(bytes.size()));
    text.resize(start + static_cast<std::size_t>(length));
}

}  // namespace quillet::platform
