#include "platform/console.h"

#include <poll.h>
#include <unistd.h>

namespace opane {

std::vector<std::string> programArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

bool standardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

bool isBrokenPipe(StandardStream stream) {
    pollfd end{static_cast<int>(stream), POLLOUT, 0};
    return poll(&end, 1, 0) > 0 && (end.revents & POLLERR) != 0;
}

Utf8Console::Utf8Console() : earlierCodePage_(0) {}

Utf8Console::~Utf8Console() = default;

}  // namespace opane
