#include "tools/opane-sim/live_view.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>
#include <sstream>

namespace opane::sim {
namespace {

constexpr int kPictureLines = kScreenHeight / 2 + 1;  // two pixel rows each, and the status line

bool fitsTerminal() {
    winsize size{};
    return ::isatty(STDOUT_FILENO) != 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 &&
           size.ws_row > kPictureLines && size.ws_col >= kScreenWidth;
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
    line << "  frames " << module.frames().size() << (module.unplugged() ? "  unplugged" : "");
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

ScreenDrawing::ScreenDrawing() : inPlace_(fitsTerminal()) {}

void ScreenDrawing::show(const View& view) {
    if (last_ && last_->looksLike(view) && (!inPlace_ || last_->status == view.status))
        return;
    constexpr const char* kEraseRestOfLine = "\x1b[K";
    if (last_ && inPlace_)
        std::cout << "\x1b[" << kPictureLines << "A\r";
    std::cout << simulator::halfBlocks(view.shown) << view.status << (inPlace_ ? kEraseRestOfLine : "") << '\n'
              << std::flush;
    last_ = view;
}

void Snapshot::show(const View& view) {
    if (path_.empty() || (last_ && last_->looksLike(view)))
        return;
    simulator::writePng(path_, view.shown, view.backlight);
    last_ = view;
}

}  // namespace opane::sim
