#pragma once

#include <string>

#include "platform/host_dialogs.h"

namespace opane {

/// The thread's handler (services.h); without one the system's way: a box on Windows. On POSIX, and on Windows in a
/// program without a visible desktop, the text goes to the standard error stream and the answer is OK, so that a
/// library in a program without a screen never blocks.
MessageBoxAnswer showMessageBox(const std::string& text, const std::string& title, MessageBoxButtons buttons);

}  // namespace opane
