// What a port supplies for MessageBox.h: the system's own way to show a message.
#pragma once

#include "Quillet/platform/Text.h"

namespace quillet::platform {

void ShowSystemMessage(WideView text, WideView caption);

}  // namespace quillet::platform
