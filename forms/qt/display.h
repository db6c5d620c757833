#pragma once

#include <string>

namespace opane::qt {

/// Why no window can be shown, in words for a person; empty when nothing speaks against it. To be asked before the
/// QApplication is made, which ends the process when there is no display.
std::string missingDisplay();

/// Gives what ends the process from within Qt, such as a display that refuses the connection, a message and an exit
/// status in place of an abort. What Qt only warns of goes to standard error.
/// @param program  named before the message
void exitOnFatalMessages(const char* program, int status);

}  // namespace opane::qt
