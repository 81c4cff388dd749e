// Base64 text of byte arrays (RFC 4648 alphabet) with the line breaks of the catalog file.
#pragma once

#include <string>

#include "base/CComVariant.h"

namespace quillet {

// Appends the text of a byte array: carriage return, line feed and blank after every 19 full groups of four
// characters, never after a padded one. As many bytes are taken as the upper bound plus one says; those past
// the array's end count as zero.
QUILLET_API void AppendBase64(const CComVariant& bytes, std::string& out);

// Replaces value by the byte array (lower bound 0) that the text stands for. Characters outside the alphabet
// are skipped; the text ends at its padding, and an incomplete group without padding is dropped.
QUILLET_API void DecodeBase64(WideView text, CComVariant& value);

}  // namespace quillet
