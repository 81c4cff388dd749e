// Modal messages to the user, through a handler that a host or a test can replace.
#pragma once

#include <functional>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

// Receives the text and the caption of a message; returns when the user has seen it.
using MessageHandler = std::function<void(WideView text, WideView caption)>;

// Replaces the handler and returns the previous one. An empty handler restores the system's own: a message
// box on Windows, lines on standard error elsewhere.
QUILLET_API MessageHandler SetMessageHandler(MessageHandler handler);

// Shows a plain message with an OK button and no owner window.
QUILLET_API void ShowMessage(WideView text, WideView caption);

}  // namespace quillet::platform
