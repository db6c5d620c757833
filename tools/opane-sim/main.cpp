#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <variant>

#include "simulator/module_server.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/simulated_module.h"
#include "tools/opane-sim/arguments.h"
#include "tools/opane-sim/live_view.h"

namespace opane::sim {
namespace {

using simulator::Descriptor;
using simulator::ModuleServer;
using simulator::PseudoTerminal;
using simulator::SimulatedModule;

constexpr int kWrongUsage = 2;
constexpr int kErrorRaised = 3;
constexpr std::chrono::milliseconds kQuiet{100};  // pictures wait until the host pauses,
constexpr std::chrono::seconds kLongestWait{1};   // but not longer than this

/// The signals we take are read from a descriptor; no thread that starts after this is interrupted by them.
Descriptor takeSignals() {
    sigset_t taken;
    sigemptyset(&taken);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGUSR1})
        sigaddset(&taken, number);
    ::pthread_sigmask(SIG_BLOCK, &taken, nullptr);
    return Descriptor(::signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK));
}

/// Says it once until it changes, so that a full disk does not fill the screen.
class Complaints {
public:
    void say(const std::string& text) {
        if (text != last_)
            std::cerr << "opane-sim: " << text << '\n';
        last_ = text;
    }

private:
    std::string last_;
};

class Session {
public:
    Session(const Arguments& arguments, Descriptor signals)
        : signals_(std::move(signals)),
          module_(arguments.module),
          terminal_(arguments.link),
          server_(module_, terminal_),
          snapshot_(arguments.snapshot),
          drawsScreen_(arguments.screen) {
        if (signals_.number() < 0 || changed_.number() < 0)
            throw std::runtime_error("the system gives no descriptors");
        for (const auto& order : arguments.faults)
            module_.fault(order);
        snapshot_.show(View(module_));
        server_.whenHeard([this] { note(); });
    }

    void serve() {
        printPath();
        std::exception_ptr failure;
        {
            std::jthread serving([&] {
                try {
                    server_.run();
                } catch (...) {
                    failure = std::current_exception();
                    failed_ = true;
                    note();
                }
            });
            const StopAtEnd stopBeforeJoining{server_};
            show();
            while (!failed_ && waitAndTakeSignal())
                if (pictureDueAt_ && Clock::now() >= *pictureDueAt_)
                    show();
        }
        if (failure)
            std::rethrow_exception(failure);
        const View last(module_);
        if (drawsScreen_)
            drawing_.show(last);
        snapshot_.show(last);
    }

private:
    using Clock = std::chrono::steady_clock;

    struct StopAtEnd {
        ModuleServer& server;
        ~StopAtEnd() { server.stop(); }
    };

    void note() const { ::eventfd_write(changed_.number(), 1); }

    /// False when the signal was one to end.
    bool waitAndTakeSignal() {
        int sleepMs = -1;  // until something happens
        if (pictureDueAt_) {
            const auto sleep = std::chrono::ceil<std::chrono::milliseconds>(*pictureDueAt_ - Clock::now());
            sleepMs = std::max(0, static_cast<int>(sleep.count()));
        }
        std::array<pollfd, 2> sources{{{signals_.number(), POLLIN, 0}, {changed_.number(), POLLIN, 0}}};
        ::poll(sources.data(), sources.size(), sleepMs);

        eventfd_t changes = 0;
        if (::eventfd_read(changed_.number(), &changes) == 0) {
            const auto now = Clock::now();
            if (!pictureDueAt_)
                latestPictureAt_ = now + kLongestWait;
            pictureDueAt_ = std::min(now + kQuiet, latestPictureAt_);
        }
        signalfd_siginfo signal{};
        if (::read(signals_.number(), &signal, sizeof signal) != sizeof signal)
            return true;
        if (signal.ssi_signo != SIGUSR1)
            return false;
        server_.withModule([](SimulatedModule& module) { module.replug(); });
        return true;
    }

    void show() {
        pictureDueAt_.reset();
        const View view = server_.withModule([](const SimulatedModule& module) { return View(module); });
        if (view.unplugged) {
            complaints_.say("unplugged; SIGUSR1 plugs it in again");
        } else if (unplugged_) {
            complaints_ = {};
            printPath();
        }
        unplugged_ = view.unplugged;
        if (drawsScreen_)
            drawing_.show(view);
        try {
            snapshot_.show(view);
        } catch (const std::runtime_error& error) {
            complaints_.say(error.what());
        }
    }

    void printPath() {
        std::cout << server_.devicePath() << std::endl;
        if (!std::cout)
            throw std::runtime_error("cannot write the device's path to standard output");
        drawing_.breakOff();
    }

    Descriptor signals_;
    Descriptor changed_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};  // the module has heard something
    std::atomic<bool> failed_ = false;
    std::optional<Clock::time_point> pictureDueAt_;
    Clock::time_point latestPictureAt_;
    bool unplugged_ = false;
    SimulatedModule module_;
    PseudoTerminal terminal_;
    ModuleServer server_;
    ScreenDrawing drawing_;
    Snapshot snapshot_;
    Complaints complaints_;
    bool drawsScreen_;
};

int run(const Arguments& arguments) {
    std::signal(SIGPIPE, SIG_IGN);  // a closed standard output is noticed when it is written to
    Descriptor signals = takeSignals();
    int blame = kWrongUsage;  // what cannot be set up is what the command line asked for
    try {
        Session session(arguments, std::move(signals));
        blame = kErrorRaised;
        session.serve();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "opane-sim: " << error.what() << '\n';
        return blame;
    }
}

}  // namespace
}  // namespace opane::sim

int main(int argc, char** argv) {
    const auto arguments = opane::sim::readArguments(argc, argv);
    if (const auto* exit = std::get_if<opane::sim::Exit>(&arguments))
        return exit->status;
    return opane::sim::run(std::get<opane::sim::Arguments>(arguments));
}
