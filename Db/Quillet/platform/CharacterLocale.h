// The C library's character type locale, switched while a text is made.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet::platform {

// While an object lives, the character type locale (LC_CTYPE) of the process is the language's; afterwards it
// is "C", whatever it was before. The language is an English word in lower case, such as "polish". If the
// system has no locale for it, the locale stays unchanged while the object lives. Two threads must not use
// this class at the same time.
class CharacterLocale {
public:
    explicit CharacterLocale(const WCHAR* language);
    CharacterLocale(const CharacterLocale&) = delete;
    CharacterLocale& operator=(const CharacterLocale&) = delete;
    ~CharacterLocale();
};

}  // namespace quillet::platform
