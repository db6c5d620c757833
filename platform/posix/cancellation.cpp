#include "platform/cancellation.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "shared/runtime_error.h"

namespace opane {
namespace {

int makeEvent() {
    const int event = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (event < 0)
        throw RuntimeError(ErrorNumber::outOfMemory, "the system has no event for a cancellation to give");
    return event;
}

}  // namespace

Cancellation::Cancellation() : event_(makeEvent()) {}

Cancellation::~Cancellation() {
    close(static_cast<int>(event_));
}

void Cancellation::cancel() noexcept {
    const int before = errno;  // a signal handler leaves no trace in it
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(static_cast<int>(event_), &one, sizeof one);
    asked_ = true;  // last: a reset meanwhile would leave an event that every wait returns for
    errno = before;
}

void Cancellation::reset() {
    limit_.reset();
    asked_ = false;
    std::uint64_t taken = 0;
    [[maybe_unused]] const ssize_t got = read(static_cast<int>(event_), &taken, sizeof taken);
}

void Cancellation::pause(std::int32_t limitMs) const {
    if (cancelled())
        return;
    pollfd event{static_cast<int>(event_), POLLIN, 0};
    poll(&event, 1, std::min(limitMs, leftMs().value_or(limitMs)));
}

}  // namespace opane
