// Sort keys by the system.
#include "Quillet/platform/SortKeys.h"

namespace quillet::platform {

bool AppendSortKey(WideView text, std::string& key) {
    if (text.empty()) {
        // The system makes no key of nothing. Characters without weight may be found equal to it.
        text = OLESTR("\u00AD");
    }
    const auto length = static_cast<int>(text.size());
    const auto map = [&](char* bytes, int capacity) {
        // The interface gives bytes through a pointer to characters.
        return LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_SORTKEY, text.data(), length,
                            reinterpret_cast<WCHAR*>(bytes), capacity);
    };
    const int size = map(nullptr, 0);
    const std::size_t start = key.size();
    key.resize(start + static_cast<std::size_t>(size));
    if (size > 0 && map(key.data() + start, size) == size) {
        return true;
    }
    key.resize(start);
    return false;
}

// The comparison of strings may end at a zero, the key does not.
bool EqualsOnlyByKey(WideView text) {
    return text.find(WCHAR(0)) == WideView::npos;
}

}  // namespace quillet::platform
