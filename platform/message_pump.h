#pragma once

namespace opane {

/// Runs the host's pending events once on the calling thread and returns: its event hook on POSIX, its window messages
/// on Windows. A host event may call the library again or release its object.
void yieldToHost();

/// Whether the calling thread has events of its own to run, so that a wait must come back to them every millisecond.
bool hostHasEvents();

}  // namespace opane
