// The C library's character type locale, switched around the making of a text.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet::platform {

// While an object lives, the character type locale (LC_CTYPE) of the process is the language's; then it is
// "C", whatever it was before. The language is an English word in lower case, such as "polish". Where the
// system has no locale of it, the locale stays as it is as long as the object lives. Not for two threads at a
// time.
class CharacterLocale {
public:
    explicit CharacterLocale(const WCHAR* language);
    CharacterLocale(const CharacterLocale&) = delete;
    CharacterLocale& operator=(const CharacterLocale&) = delete;
    ~CharacterLocale();
};

}  // namespace quillet::platform
