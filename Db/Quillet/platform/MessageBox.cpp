// The handler, which takes the place of the system's own way to show a message.
#include "Quillet/platform/MessageBox.h"

#include <utility>

#include "Quillet/platform/SystemMessage.h"

namespace quillet::platform {
namespace {

MessageHandler& CurrentHandler() {
    static MessageHandler handler = ShowSystemMessage;
    return handler;
}

}  // namespace

MessageHandler SetMessageHandler(MessageHandler handler) {
    if (!handler) {
        handler = ShowSystemMessage;
    }
    return std::exchange(CurrentHandler(), std::move(handler));
}

void ShowMessage(WideView text, WideView caption) {
    // A handler may replace itself while it runs.
    const MessageHandler handler = CurrentHandler();
    handler(text, caption);
}

}  // namespace quillet::platform
