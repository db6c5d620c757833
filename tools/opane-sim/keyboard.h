#pragma once

#include <termios.h>

#include <optional>
#include <string>

namespace opane::sim {

/// What is typed on standard input, or comes there through a pipe or a file.
///
/// A terminal gives every character at once and does not show it, from take() to release(); Ctrl-C stays what it is.
/// A terminal in which the program runs in the background is left alone, until take() finds it in the foreground.
class Keyboard {
public:
    Keyboard();  ///< before anything else is opened: a closed standard input stays unread
    ~Keyboard() { release(); }
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    void take();
    void release();  ///< the terminal is as it was before take()

    bool isTerminal() const { return isTerminal_; }

    /// Readable when something has been typed or the input has ended; -1 while there is nothing to wait for.
    int descriptor() const { return ended_ || (isTerminal_ && !taken_) ? -1 : 0; }

    /// What has been typed. Waits when nothing has; empty at the end of the input.
    std::string typed();

private:
    bool isTerminal_;
    bool ended_;
    bool taken_ = false;
    std::optional<termios> before_;  // nothing when the terminal was as we need it
};

}  // namespace opane::sim
