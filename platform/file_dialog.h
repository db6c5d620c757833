#pragma once

#include <optional>
#include <string>

#include "platform/host_dialogs.h"

namespace opane {

/// The thread's handler (services.h); without one the system's way: a dialog on Windows. On POSIX, and on Windows in a
/// program without a visible desktop, it is cancelled at once: a library in a program without a screen never blocks.
std::optional<std::string> showFileDialog(const FileDialogRequest& request);

}  // namespace opane
