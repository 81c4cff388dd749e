// What a port supplies for Collation.h.
#pragma once

#include <string>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

// Appends the system's sort key of the text by the collation that VarCmp uses for the user's default locale.
// False, with nothing appended, if the system has none.
bool AppendSortKey(WideView text, std::string& key);

// For a text with other characters than plain ones: whether every text that VarCmp finds equal to it has the
// same sort key.
bool EqualsOnlyByKey(WideView text);

}  // namespace quillet::platform
