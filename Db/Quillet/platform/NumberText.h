// Numbers to text and back under the user's default locale. The results are those of VariantChangeType, found
// in the most direct way that the system has, without allocation where possible.
#pragma once

#include <cstddef>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

// No number's text is longer.
constexpr std::size_t MaxNumberText = 64;

// Writes the text of an integer (VT_I2, VT_I4) or a float (VT_R4, VT_R8) as UTF-8 and returns its length; 0
// for other types. Throws std::bad_alloc if the system needs memory for it and has none.
std::size_t NumberToText(const VARIANT& number, char (&text)[MaxNumberText]);

// Reads a value of the type (VT_I4, VT_R4, VT_R8 or VT_BOOL). On failure number stays unchanged. Out of
// memory it returns E_OUTOFMEMORY or throws std::bad_alloc; neither says anything about the text.
HRESULT TextToNumber(WideView text, VARTYPE type, VARIANT* number);

// Whether a text of digits, a decimal point and an exponent gives the nearest double, however many digits
// there are.
extern const bool GivesNearestDouble;

// The user's decimal separator as it was when the library was loaded or at the first call.
WCHAR DecimalSeparator();

}  // namespace quillet::platform
