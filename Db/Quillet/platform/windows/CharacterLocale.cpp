#include "Quillet/platform/CharacterLocale.h"

#include <clocale>
#include <cwchar>

namespace quillet::platform {

// The C library knows the languages by these names.
CharacterLocale::CharacterLocale(const WCHAR* language) {
    _wsetlocale(LC_CTYPE, language);
}

CharacterLocale::~CharacterLocale() {
    std::setlocale(LC_CTYPE, "C");
}

}  // namespace quillet::platform
