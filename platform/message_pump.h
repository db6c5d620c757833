#pragma once

namespace opane {

/// Runs the host's pending events once on the calling thread and returns: its event hook; on Windows, when it has set
/// none, its window messages. A host event may call the library again or release its object.
void yieldToHost();

/// Whether the calling thread has an event hook, so that a wait must come back to it every millisecond. Window messages
/// need none of that: they end a wait of the serial control.
bool hostHasEvents();

}  // namespace opane
