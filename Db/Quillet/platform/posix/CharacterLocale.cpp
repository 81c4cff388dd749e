#include "Quillet/platform/CharacterLocale.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace quillet::platform {

namespace {

struct Language {
    std::u16string_view m_word;
    const char* m_locale;
};

constexpr std::array<Language, 8> Languages = {{
    {u"english", "en_US"},
    {u"french", "fr_FR"},
    {u"spanish", "es_ES"},
    {u"portuguese", "pt_PT"},
    {u"italian", "it_IT"},
    {u"romanian", "ro_RO"},
    {u"polish", "pl_PL"},
    {u"russian", "ru_RU"},
}};

// False where no such locale is installed.
bool Set(const char* name) {
    errno = 0;
    const bool isSet = std::setlocale(LC_CTYPE, name) != nullptr;
    if (!isSet && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return isSet;
}

// The C library's name of the language's locale; empty if none is installed. Leaves the locale set.
std::string SetInstalled(std::u16string_view word) {
    const auto* const found = std::find_if(Languages.begin(), Languages.end(),
                                           [&](const Language& language) { return language.m_word == word; });
    if (found == Languages.end()) {
        return {};
    }
    for (const char* encoding : {".UTF-8", ""}) {
        std::string name = std::string(found->m_locale) + encoding;
        if (Set(name.c_str())) {
            return name;
        }
    }
    return {};
}

// Sets the locale of the language. Looks for it in the system only if the language is not that of the last
// call: whole tables are in one language.
void SetLanguage(std::u16string_view word) {
    static std::u16string lastWord;
    static std::string lastName;
    if (word != lastWord) {
        std::u16string nextWord(word);
        lastName = SetInstalled(word);
        lastWord = std::move(nextWord);
    } else if (!lastName.empty()) {
        Set(lastName.c_str());
    }
}

}  // namespace

CharacterLocale::CharacterLocale(const WCHAR* language) {
    SetLanguage(language);
}

CharacterLocale::~CharacterLocale() {
    std::setlocale(LC_CTYPE, "C");
}

}  // namespace quillet::platform
