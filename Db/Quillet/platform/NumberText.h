// Numbers to text and back under the user's default locale: what VariantChangeType gives for the same value,
// by the shortest way that the system has, where it can without allocation.
#pragma once

#include <cstddef>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

// No number's text is longer.
constexpr std::size_t MaxNumberText = 64;

// Writes the text of an integer (VT_I2, VT_I4) or a float (VT_R4, VT_R8) as UTF-8 and returns its length; 0
// for other types. Throws std::bad_alloc where the system needs memory for it and is out of it.
std::size_t NumberToText(const VARIANT& number, char (&text)[MaxNumberText]);

// Reads a value of the type (VT_I4, VT_R4, VT_R8 or VT_BOOL). On failure number stays as it was. Out of
// memory it returns E_OUTOFMEMORY or throws std::bad_alloc; neither says anything about the text.
HRESULT TextToNumber(WideView text, VARTYPE type, VARIANT* number);

// The character between the whole and the fraction of a number, as it was when the library was loaded
// or when it was first asked for.
WCHAR DecimalSeparator();

}  // namespace quillet::platform
