// How names and query texts are written.
#pragma once

#include "base/CString.h"

namespace quillet {

// The name without one closing bracket at its end and one opening bracket at its beginning.
CString WithoutBrackets(CString name);

// Lowers the text outside quoted stretches. A stretch opens with ', " or U+FF91 and closes at the next
// occurrence of the same character.
void LowerOutsideQuotes(CString& text);

}  // namespace quillet
