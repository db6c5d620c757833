#include "canned_device.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace opane::bench {

CannedDevice::CannedDevice(std::size_t requestBytes, std::vector<std::uint8_t> answer)
    : requestBytes_(requestBytes),
      answer_(std::move(answer)),
      stop_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)),
      thread_([this] { serve(); }) {}

CannedDevice::~CannedDevice() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(stop_.get(), &one, sizeof one);
    thread_.join();
}

void CannedDevice::serve() {
    const std::array<std::uint8_t, 1> handshake{kHandshakeAnswer};
    std::size_t heard = 0;
    for (;;) {
        std::array<pollfd, 2> sources{{{terminal_.descriptor(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
        ::poll(sources.data(), sources.size(), -1);
        if ((sources[1].revents & POLLIN) != 0)
            return;
        const std::size_t got = terminal_.read().size();
        heard += got;
        if (heard == 1 && got == 1) {
            terminal_.write(handshake);
            heard = 0;
        } else if (heard >= requestBytes_) {
            terminal_.write(answer_);
            heard = 0;
        }
    }
}

}  // namespace opane::bench
