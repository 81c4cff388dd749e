// Names in brackets, and texts in quotes.
#pragma once

#include "Quillet/base/CString.h"

namespace quillet {

// The marks that open and close a text in quotes.
constexpr WideView QuoteMarks = OLESTR("'\"\uFF91");

// The name without one closing bracket at its end and one opening bracket at its beginning.
CString WithoutBrackets(CString name);

// The text without one quote mark (', " or U+FF91) at its beginning and one at its end; they need not match,
// and either may be missing.
CString WithoutQuotes(const CString& text);

}  // namespace quillet
