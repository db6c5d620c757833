#include "simulator/module_server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <stdexcept>

namespace opane::simulator {
namespace {

// A sleeper wakes up some tens of microseconds late; the rest of the way to the next byte is waited awake.
constexpr Micros kAwakeBeforeDue = 80;

// How far a host may write ahead of a paced line; then the rest waits in the terminal, and with it the host, as at a
// serial port whose buffer is full.
constexpr Micros kMostAhead = 1'000'000;

Micros now() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

timespec duration(Micros micros) {
    return {static_cast<time_t>(micros / 1'000'000), static_cast<long>(micros % 1'000'000 * 1000)};
}

}  // namespace

ModuleServer::ModuleServer(SimulatedModule& module, PseudoTerminal& terminal)
    : module_(module), terminal_(terminal), wakeUp_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (wakeUp_.get() < 0)
        throw std::runtime_error("the system gives no event descriptor");
}

void ModuleServer::run() {
    ::prctl(PR_SET_TIMERSLACK, 1);  // nanosecond, of this thread
    while (!stopping_.exchange(false)) {
        const bool plugged = followPlug();
        deliver();
        if (plugged && heard_)
            heard_();
        waitForSomething();
        if (hear() && heard_)
            heard_();
    }
}

void ModuleServer::stop() {
    stopping_ = true;
    wake();
}

std::string ModuleServer::devicePath() {
    const std::lock_guard lock(mutex_);
    return terminal_.path();
}

void ModuleServer::wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp_.get(), &one, sizeof one);
}

// Whether the device has gone or come.
bool ModuleServer::followPlug() {
    const std::lock_guard lock(mutex_);
    if (module_.unplugged() != terminal_.isOpen())
        return false;
    if (module_.unplugged())
        terminal_.close();
    else
        terminal_.reopen();
    return true;
}

void ModuleServer::deliver() {
    const std::lock_guard lock(mutex_);
    if (!terminal_.isOpen())
        return;
    module_.hostBaudRate(terminal_.hostBaudRate());
    const auto arrived = module_.takeOutput(now());
    if (!arrived.empty())
        terminal_.write(arrived);
}

void ModuleServer::waitForSomething() {
    std::optional<Micros> dueAt;
    {
        const std::lock_guard lock(mutex_);
        dueAt = module_.nextOutputAt();
    }
    const auto hearsAt = hearsAgainAt();
    std::array<pollfd, 3> sources{{{wakeUp_.get(), POLLIN, 0},
                                   {hearsAt ? -1 : terminal_.descriptor(), POLLIN, 0},  // -1: passed over
                                   {terminal_.leavings(), POLLIN, 0}}};
    if (hearsAt)
        dueAt = std::min(*hearsAt, dueAt.value_or(*hearsAt));
    const timespec sleep = duration(std::max<Micros>(0, dueAt.value_or(0) - now() - kAwakeBeforeDue));
    const int ready = ::ppoll(sources.data(), sources.size(), dueAt ? &sleep : nullptr, nullptr);
    if (ready == 0)
        while (now() < *dueAt) {
        }

    std::uint64_t wakes = 0;
    [[maybe_unused]] const auto taken = ::read(wakeUp_.get(), &wakes, sizeof wakes);
}

bool ModuleServer::hear() {
    if (!terminal_.isOpen())
        return false;
    terminal_.noteLeavings();
    if (hearsAgainAt())
        return false;
    const auto bytes = terminal_.read();
    if (bytes.empty())
        return false;
    const std::lock_guard lock(mutex_);
    module_.hostBaudRate(terminal_.hostBaudRate());
    module_.receive(bytes, now());
    return true;
}

/// Nothing when it hears now.
std::optional<Micros> ModuleServer::hearsAgainAt() {
    const std::lock_guard lock(mutex_);
    const Micros at = module_.lineFreeAt() - kMostAhead;
    return at > now() ? std::optional(at) : std::nullopt;
}

}  // namespace opane::simulator
