#include "platform/message_pump.h"

#include "platform/services.h"

namespace opane {

void yieldToHost() {
    // A copy: the hook may end the scope's owner, and must not be destroyed while it runs.
    if (const auto hook = services().eventHook)
        hook();
}

bool hostHasEvents() {
    return static_cast<bool>(services().eventHook);
}

}  // namespace opane
