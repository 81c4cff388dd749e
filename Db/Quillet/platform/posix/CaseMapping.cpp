// Case mapping by ICU's character properties.
#include "Quillet/platform/CaseMapping.h"

#include <unicode/uchar.h>

namespace quillet::platform {

char32_t LowerOf(char32_t c) {
    return static_cast<char32_t>(u_tolower(static_cast<UChar32>(c)));
}

char32_t UpperOf(char32_t c) {
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(c)));
}

char32_t FoldOf(char32_t c) {
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

}  // namespace quillet::platform
