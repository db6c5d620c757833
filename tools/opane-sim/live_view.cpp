#include "tools/opane-sim/live_view.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <sstream>
#include <string_view>

namespace opane::sim {
namespace {

constexpr int kPictureLines = kScreenHeight / 2 + 1;  // two pixel rows each, and the status line

bool fitsTerminal() {
    winsize size{};
    return ::isatty(STDOUT_FILENO) != 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 &&
           size.ws_row > kPictureLines && size.ws_col >= kScreenWidth;
}

/// Standard output without waiting, where it may make a writer wait: a terminal or a pipe. Nothing when it is neither.
FileDescriptor outputWithoutWaiting() {
    struct stat output {};
    const bool mayWait = ::fstat(STDOUT_FILENO, &output) == 0 && (S_ISFIFO(output.st_mode) || S_ISCHR(output.st_mode));
    return FileDescriptor(mayWait ? ::open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1);
}

/// Waits no longer than a moment for who does not read it: a terminal that has been stopped, or a pipe that is full,
/// must not hold the program.
bool isPrinted(std::string_view text, int output) {
    constexpr int kMomentMs = 200;
    while (!text.empty()) {
        const ssize_t put = ::write(output, text.data(), text.size());
        const bool mayPass = put < 0 && (errno == EAGAIN || errno == EINTR);
        pollfd room{output, POLLOUT, 0};
        if (put <= 0 && !(mayPass && ::poll(&room, 1, kMomentMs) > 0))
            return false;
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(put, 0)));
    }
    return true;
}

std::string statusLine(const simulator::SimulatedModule& module) {
    const auto& state = module.state();
    const auto backlight = simulator::backlightLevels(state);
    std::ostringstream line;
    line << std::uppercase;
    line << "node " << state.node << "  " << (state.bus == simulator::Bus::rs485 ? "RS485" : "RS232") << "  "
         << state.baudRate << " baud  backlight red " << int{backlight.red} << " green " << int{backlight.green}
         << "  key ";
    if (state.lastKey == simulator::kNoKey)
        line << "none";
    else
        line << std::hex << state.lastKey << std::dec;
    line << "  frames " << module.framesHeard() << (module.unplugged() ? "  unplugged" : "");
    return line.str();
}

}  // namespace

View::View(const simulator::SimulatedModule& module)
    : shown(simulator::shownScreen(module.state())),
      backlight(simulator::backlightLevels(module.state())),
      status(statusLine(module)),
      unplugged(module.unplugged()) {}

bool View::looksLike(const View& other) const {
    return shown == other.shown && backlight.red == other.backlight.red && backlight.green == other.backlight.green;
}

ScreenDrawing::ScreenDrawing() : inPlace_(fitsTerminal()), output_(outputWithoutWaiting()) {}

void ScreenDrawing::show(const View& view) {
    if (last_ && last_->looksLike(view) && (!inPlace_ || last_->status == view.status))
        return;
    constexpr const char* kEraseRestOfLine = "\x1b[K";
    std::string picture;
    if (last_ && inPlace_)
        picture = "\x1b[" + std::to_string(kPictureLines) + "A\r";
    picture += simulator::halfBlocks(view.shown) + view.status + (inPlace_ ? kEraseRestOfLine : "") + '\n';
    std::cout.flush();
    const int output = output_.get() < 0 ? STDOUT_FILENO : output_.get();
    last_ =
        isPrinted(picture, output) ? std::optional(view) : std::nullopt;  // the next one stands below one that was cut
}

void Snapshot::show(const View& view) {
    if (path_.empty() || (last_ && last_->looksLike(view)))
        return;
    simulator::writePng(path_, view.shown, view.backlight);
    last_ = view;
}

}  // namespace opane::sim
