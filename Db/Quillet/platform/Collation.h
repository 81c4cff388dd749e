// The order of texts as bytes, so that many texts are sorted or hashed without comparing them one by one.
#pragma once

#include <string>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

// What the key of a text tells about VarCmp of texts under the user's default locale, without flags.
enum class CollationKey {
    // There is no key: the text may equal any other.
    None,
    // Texts that VarCmp finds equal have equal keys. Texts with equal keys need not be equal.
    Equality,
    // As Equality. Moreover, comparing the keys of two such texts as unsigned bytes gives what VarCmp gives
    // for the texts.
    Order,
};

// Appends the text's key, or nothing if it has none. Texts of European letters, digits, usual signs, kana,
// common Chinese characters and Hangul syllables have a key for Order.
CollationKey AppendCollationKey(WideView text, std::string& key);

}  // namespace quillet::platform
