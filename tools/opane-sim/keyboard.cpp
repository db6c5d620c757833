#include "tools/opane-sim/keyboard.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace opane::sim {
namespace {

// Of a terminal that is not the program's own nobody else is in the foreground.
bool inForeground() {
    const pid_t group = ::tcgetpgrp(STDIN_FILENO);
    return group < 0 || group == ::getpgrp();
}

}  // namespace

Keyboard::Keyboard() : isTerminal_(::isatty(STDIN_FILENO) != 0), ended_(::fcntl(STDIN_FILENO, F_GETFD) < 0) {}

void Keyboard::take() {
    taken_ = isTerminal_ && inForeground();
    termios mode{};
    if (!taken_ || ::tcgetattr(STDIN_FILENO, &mode) != 0 || (mode.c_lflag & ICANON) == 0)
        return;
    if (!before_)
        before_ = mode;
    mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    mode.c_cc[VMIN] = 1;
    mode.c_cc[VTIME] = 0;
    ::tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

void Keyboard::release() {
    if (before_ && inForeground())
        ::tcsetattr(STDIN_FILENO, TCSANOW, &*before_);
    before_.reset();
    taken_ = false;
}

std::string Keyboard::typed() {
    std::array<char, 256> text{};
    const ssize_t count = ::read(STDIN_FILENO, text.data(), text.size());
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN))
        ended_ = true;
    return {text.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

}  // namespace opane::sim
