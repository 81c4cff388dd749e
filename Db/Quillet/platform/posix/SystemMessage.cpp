// Messages without a desktop: one line on standard error.
#include "Quillet/platform/SystemMessage.h"

#include <unicode/ustring.h>

#include <cstdio>
#include <limits>
#include <string>

namespace quillet::platform {
namespace {

constexpr UChar32 ReplacementCharacter = 0xFFFD;

std::string ToUtf8(WideView text) {
    constexpr std::size_t MostBytesPerUnit = 3;
    constexpr std::size_t MostUnits = std::numeric_limits<std::int32_t>::max() / MostBytesPerUnit;
    text = text.substr(0, MostUnits);
    std::string bytes(text.size() * MostBytesPerUnit, '\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(bytes.data(), static_cast<std::int32_t>(bytes.size()), &length, text.data(),
                       static_cast<std::int32_t>(text.size()), ReplacementCharacter, nullptr, &status);
    bytes.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
    return bytes;
}

}  // namespace

void ShowSystemMessage(WideView text, WideView caption) {
    std::string line = ToUtf8(caption);
    if (!line.empty()) {
        line += ": ";
    }
    line += ToUtf8(text);
    line += '\n';
    // One write, so that lines of several threads do not mix.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace quillet::platform
