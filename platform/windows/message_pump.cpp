#include "platform/message_pump.h"

#include "platform/services.h"
#include "platform/windows/system_headers.h"

namespace opane {
namespace {

/// The most of one yield, so that a window that never runs dry (a paint handler that validates nothing) cannot hold it.
constexpr int kMostMessages = 1000;

void dispatchMessages() {
    MSG message;
    for (int i = 0; i < kMostMessages && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0; ++i) {
        if (message.message == WM_QUIT) {
            // The host's own loop is to end by it. Looked at now, so that no wait takes it for a new message.
            PostQuitMessage(static_cast<int>(message.wParam));
            GetQueueStatus(QS_ALLINPUT);
            return;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

void yieldToHost() {
    // A copy: the hook may end the scope's owner, and must not be destroyed while it runs.
    if (const auto hook = services().eventHook)
        hook();
    else
        dispatchMessages();
}

bool hostHasEvents() {
    return static_cast<bool>(services().eventHook);
}

}  // namespace opane
