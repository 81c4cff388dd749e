// What a port supplies for Collation.h.
#pragma once

#include <string>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

// Appends the system's sort key of the text by the collation that VarCmp uses for the user's default locale.
// False, with nothing appended, where the system has none.
bool AppendSortKey(WideView text, std::string& key);

// Whether each text that VarCmp finds equal to this one, which has more than plain characters, has the same
// sort key.
bool EqualsOnlyByKey(WideView text);

}  // namespace quillet::platform
