// Sort keys by ICU.
#include "platform/SortKeys.h"

#include <unicode/unorm2.h>

#include "platform/posix/Locale.h"

namespace quillet::platform {
namespace {

bool IsNormalized(const UNormalizer2* normalizer, WideView text, UErrorCode& status) {
    return unorm2_isNormalized(normalizer, text.data(), static_cast<std::int32_t>(text.size()), &status) != 0;
}

}  // namespace

bool AppendSortKey(WideView text, std::string& key) {
    constexpr std::size_t BytesPerUnitAtFirst = 4;
    constexpr std::size_t BytesAtFirst = 16;
    const UCollator* const collator = Locale::For(LOCALE_USER_DEFAULT).Collator(false);
    if (collator == nullptr) {
        return false;
    }
    // A null pointer is no text to the collator, not even an empty one.
    const OLECHAR* const units = text.data() == nullptr ? u"" : text.data();
    const std::size_t start = key.size();
    std::size_t room = BytesAtFirst + BytesPerUnitAtFirst * text.size();
    for (;;) {
        key.resize(start + room);
        const auto size = static_cast<std::size_t>(ucol_getSortKey(
            collator, units, static_cast<std::int32_t>(text.size()),
            reinterpret_cast<std::uint8_t*>(key.data()) + start, static_cast<std::int32_t>(room)));
        if (size <= room) {
            key.resize(start + size);
            return size > 0;
        }
        room = size;
    }
}

// The collator takes texts as normalized. Of others it may find texts equal that have different keys.
bool EqualsOnlyByKey(WideView text) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* const composed = unorm2_getNFCInstance(&status);
    const UNormalizer2* const decomposed = unorm2_getNFDInstance(&status);
    if (U_FAILURE(status)) {
        return false;
    }
    const bool isNormalized = IsNormalized(composed, text, status) || IsNormalized(decomposed, text, status);
    return U_SUCCESS(status) && isNormalized;
}

}  // namespace quillet::platform
