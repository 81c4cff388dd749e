// Base64 text of byte arrays (RFC 4648 alphabet) with the line breaks of the catalog file.
#pragma once

#include <string>
#include <vector>

#include "Quillet/base/CComVariant.h"

namespace quillet {

// The bytes of a byte array, as many as its upper bound plus one says; those past its end count as zero.
std::vector<BYTE> BytesOf(const CComVariant& value);

// Appends the text of what BytesOf gives: carriage return, line feed and blank after every 19 full groups of
// four characters, never after a padded one.
void AppendBase64(const CComVariant& bytes, std::string& out);

// Replaces value by the byte array (lower bound 0) that the text encodes. Characters outside the alphabet are
// skipped; the text ends at its padding, and an incomplete group without padding is dropped.
void DecodeBase64(WideView text, CComVariant& value);

}  // namespace quillet
