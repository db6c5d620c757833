#include "module_farm.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <limits>
#include <stdexcept>

#include "simulator/pseudo_terminal.h"
#include "simulator/simulated_module.h"

namespace opane::bench {
namespace {

using simulator::Micros;

constexpr Micros kNothingDue = std::numeric_limits<Micros>::max();
/// From one sweep over the modules to the next, in microseconds: so late do bytes come at the most, and never early.
/// Waking for each byte of each module would take as much of the machine as the hosts do.
constexpr Micros kRest = 150;

Micros now() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

timespec timespecOf(Micros time) {
    return {static_cast<time_t>(time / 1'000'000), static_cast<long>(time % 1'000'000 * 1000)};
}

/// One module. The simulator's own server spends a thread and a watch on each, which a system does not give by
/// hundreds.
struct Farmed {
    Farmed(int baudRate, bool paced)
        : module({.baudRate = baudRate, .pace = paced}),
          master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        std::array<char, 64> path{};
        if (master.get() < 0 || grantpt(master.get()) != 0 || unlockpt(master.get()) != 0 ||
            ptsname_r(master.get(), path.data(), path.size()) != 0)
            _exit(1);
        name = path.data();
        slave = FileDescriptor(open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios mode{};
        tcgetattr(slave.get(), &mode);
        cfmakeraw(&mode);
        tcsetattr(slave.get(), TCSANOW, &mode);
    }

    void hear() {
        std::array<std::uint8_t, 4096> bytes{};
        const auto count = read(master.get(), bytes.data(), bytes.size());
        if (count > 0)
            module.receive(std::span(bytes.data(), static_cast<std::size_t>(count)), now());
    }
    void say() {
        const auto bytes = module.takeOutput(now());
        [[maybe_unused]] const auto written = bytes.empty() ? 0 : write(master.get(), bytes.data(), bytes.size());
    }

    simulator::SimulatedModule module;
    FileDescriptor master;
    FileDescriptor slave;
    std::string name;
};

[[noreturn]] void serve(int modules, int baudRate, bool paced, int pathPipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_TIMERSLACK, 1);        // nanosecond
    setpriority(PRIO_PROCESS, 0, -20);  // where it may
    std::deque<Farmed> farm;
    const int poll = epoll_create1(EPOLL_CLOEXEC);
    std::string paths;
    for (int i = 0; i < modules; ++i) {
        Farmed& farmed = farm.emplace_back(baudRate, paced);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = static_cast<std::uint64_t>(i);
        epoll_ctl(poll, EPOLL_CTL_ADD, farmed.master.get(), &event);
        paths += farmed.name + '\n';
    }
    if (write(pathPipe, paths.data(), paths.size()) < 0)
        _exit(1);
    close(pathPipe);
    // One after the other in memory: it is gone through at each sweep.
    std::vector<Micros> due(farm.size(), kNothingDue);
    for (Micros sweptAt = 0;;) {
        const timespec rested = timespecOf(sweptAt + kRest);
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &rested, nullptr);
        const Micros next = *std::min_element(due.begin(), due.end());
        const timespec limit = timespecOf(std::clamp<Micros>(next - now(), 0, 1'000'000));
        std::array<epoll_event, 64> events{};
        const int ready = epoll_pwait2(poll, events.data(), static_cast<int>(events.size()), &limit, nullptr);
        for (int i = 0; i < ready; ++i) {
            const std::size_t heard = events.at(static_cast<std::size_t>(i)).data.u64;
            farm[heard].hear();
            due[heard] = farm[heard].module.nextOutputAt().value_or(kNothingDue);
        }
        sweptAt = now();
        for (std::size_t i = 0; i < due.size(); ++i) {
            if (due[i] > sweptAt)
                continue;
            farm[i].say();
            due[i] = farm[i].module.nextOutputAt().value_or(kNothingDue);
        }
    }
}

}  // namespace

ModuleFarm::ModuleFarm(int modules, int baudRate, bool paced) {
    int pathPipe[2];
    if (pipe(pathPipe) != 0)
        throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) {
        close(pathPipe[0]);
        serve(modules, baudRate, paced, pathPipe[1]);
    }
    close(pathPipe[1]);
    std::string paths;
    char chunk[4096];
    for (ssize_t got = 0; (got = read(pathPipe[0], chunk, sizeof chunk)) > 0;)
        paths.append(chunk, static_cast<std::size_t>(got));
    close(pathPipe[0]);
    for (std::size_t begin = 0, end = 0; (end = paths.find('\n', begin)) != std::string::npos; begin = end + 1)
        devices_.push_back(paths.substr(begin, end - begin));
    if (devices_.size() != static_cast<std::size_t>(modules))
        throw std::runtime_error("the system gives no " + std::to_string(modules) + " pseudo-terminals");
}

ModuleFarm::~ModuleFarm() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

clockid_t ModuleFarm::processorClock() const {
    clockid_t clock = CLOCK_MONOTONIC;
    clock_getcpuclockid(process_, &clock);
    return clock;
}

}  // namespace opane::bench
