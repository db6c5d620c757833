#pragma once

#include <optional>
#include <string>

#include "platform/host_dialogs.h"

namespace opane {

/// Shows a message box by the thread's handler (services.h); without one in the system's way: a box on Windows. On POSIX, and on Windows in a
/// program without a visible desktop, the text goes to the standard error stream and the answer is OK, so that a
/// library in a program without a screen never blocks.
MessageBoxAnswer showMessageBox(const std::string& text, const std::string& title, MessageBoxButtons buttons);

/// Shows a file dialog by the thread's handler; without one in the system's way: a dialog on Windows. On POSIX, and on Windows in a
/// program without a visible desktop, it is cancelled at once: a library in a program without a screen never blocks.
std::optional<std::string> showFileDialog(const FileDialogRequest& request);

}  // namespace opane
