// Messages in a modal box.
#include "Quillet/platform/SystemMessage.h"

namespace quillet::platform {

void ShowSystemMessage(WideView text, WideView caption) {
    MessageBoxW(nullptr, WideString(text).c_str(), WideString(caption).c_str(), MB_OK);
}

}  // namespace quillet::platform
