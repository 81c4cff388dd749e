// Sort keys by ICU.
#include "Quillet/platform/SortKeys.h"

#include "Quillet/platform/posix/IcuMemory.h"
#include "Quillet/platform/posix/Locale.h"

namespace quillet::platform {

bool AppendSortKey(const UCollator& collator, WideView text, std::string& key) {
    constexpr std::size_t BytesPerUnitAtFirst = 4;
    constexpr std::size_t BytesAtFirst = 16;
    // The collator does not take a null pointer, not even as an empty text.
    const OLECHAR* const units = text.data() == nullptr ? u"" : text.data();
    const std::size_t start = key.size();
    std::size_t room = BytesAtFirst + BytesPerUnitAtFirst * text.size();
    for (;;) {
        key.resize(start + room);
        const auto size = static_cast<std::size_t>(WithMemory([&] {
            return ucol_getSortKey(&collator, units, static_cast<std::int32_t>(text.size()),
                                   reinterpret_cast<std::uint8_t*>(key.data()) + start,
                                   static_cast<std::int32_t>(room));
        }));
        if (size <= room) {
            key.resize(start + size);
            return size > 0;
        }
        room = size;
    }
}

bool AppendSortKey(WideView text, std::string& key) {
    const UCollator* const collator = Locale::For(LOCALE_USER_DEFAULT).Collator(false);
    return collator != nullptr && AppendSortKey(*collator, text, key);
}

// The comparison asks for the keys before it calls texts equal.
bool EqualsOnlyByKey(WideView) {
    return true;
}

}  // namespace quillet::platform
