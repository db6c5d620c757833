#pragma once

#include <functional>
#include <string>

namespace opane {

enum class MessageBoxButtons { ok, okCancel };
enum class MessageBoxAnswer { ok, cancel };

/// Shows a modal box on the calling thread and gives the button that closed it. Texts are UTF-8; a line break is
/// carriage return and line feed.
using MessageBoxHandler =
    std::function<MessageBoxAnswer(const std::string& text, const std::string& title, MessageBoxButtons buttons)>;

/// The thread's handler (services.h); without one the system's way: a box on Windows. On POSIX, and on Windows in a
/// program without a visible desktop, the text goes to the standard error stream and the answer is OK, so that a
/// library in a program without a screen never blocks.
MessageBoxAnswer showMessageBox(const std::string& text, const std::string& title, MessageBoxButtons buttons);

}  // namespace opane
