// Case mapping and encoding of UTF-16 text: Unicode's simple case mapping, independent of the locale.
#pragma once

#include <string>
#include <string_view>

#include "Quillet/platform/Automation.h"

namespace quillet::platform {

using WideString = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

// Maps every code point to lower case by Unicode's simple mapping; lone surrogates stay as they are.
QUILLET_API void MakeLower(WideString& text);

// Maps every code point to upper case by Unicode's simple mapping; lone surrogates stay as they are.
QUILLET_API void MakeUpper(WideString& text);

// Replaces every code point by its simple case folding; texts that CompareNoCase finds equal, and only they,
// become the same.
void FoldCase(WideString& text);

// Compares by code point after simple case folding: negative, 0 or positive.
QUILLET_API int CompareNoCase(WideView left, WideView right);

}  // namespace quillet::platform
