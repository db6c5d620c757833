#include "tools/opane-sim/session.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "simulator/readings.h"

namespace opane::sim {
namespace {

using simulator::EepromFile;
using simulator::ModuleServer;
using simulator::ModuleState;
using simulator::SimulatedModule;

constexpr std::chrono::milliseconds kQuiet{100};  // pictures and files wait until the host pauses,
constexpr std::chrono::seconds kLongestWait{1};   // but not longer than this

std::optional<EepromFile> eepromFile(const char* what, const std::string& path, std::size_t size) {
    if (path.empty())
        return std::nullopt;
    return std::optional<EepromFile>(std::in_place, what, path, size);
}

struct StopAtEnd {
    ModuleServer& server;
    ~StopAtEnd() { server.stop(); }
};

}  // namespace

void Complaints::say(const std::string& text) {
    if (text != last_)
        std::cerr << "opane-sim: " << text << '\n';
    last_ = text;
}

Session::Session(const Arguments& arguments, const FileDescriptor& signals, Keyboard& keyboard)
    : signals_(signals),
      keyboard_(keyboard),
      changed_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      systemEeprom_(eepromFile("the System EEPROM", arguments.systemEeprom, simulator::kSystemEepromSize)),
      userEeprom_(eepromFile("the User EEPROM", arguments.userEeprom, simulator::kUserEepromSize)),
      module_(arguments.module),
      terminal_(arguments.link),
      server_(module_, terminal_),
      snapshot_(arguments.snapshot),
      drawsScreen_(arguments.screen) {
    if (signals_.get() < 0 || changed_.get() < 0)
        throw std::runtime_error("the system gives no descriptors");
    for (const auto& reading : arguments.readings)
        simulator::setReading(module_.state(), reading);
    for (const auto& order : arguments.faults)
        module_.fault(order);
    if (arguments.key != 0)
        module_.pressKey(arguments.key);
    if (systemEeprom_)
        std::ranges::copy(systemEeprom_->contents(), module_.state().systemEeprom.begin());
    if (userEeprom_)
        std::ranges::copy(userEeprom_->contents(), module_.state().userEeprom.begin());
    keepEeproms();
    snapshot_.show(View(module_));
    server_.whenHeard([this] { note(); });
}

void Session::serve() {
    std::exception_ptr failure;
    try {
        serveUntilAsked();
    } catch (...) {
        failure = std::current_exception();
    }
    keepEeproms();
    if (failure)
        std::rethrow_exception(failure);
    const View last(module_);
    if (drawsScreen_)
        drawing_.show(last);
    snapshot_.show(last);
}

void Session::serveUntilAsked() {
    keyboard_.take();
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
        catchUp();
        while (!failed_ && waitForSomething())
            if (catchUpAt_ && Clock::now() >= *catchUpAt_)
                catchUp();
    }
    if (failure)
        std::rethrow_exception(failure);
}

// False when it is asked to end.
bool Session::waitForSomething() {
    int sleepMs = -1;  // until something happens
    if (catchUpAt_) {
        const auto sleep = std::chrono::ceil<std::chrono::milliseconds>(*catchUpAt_ - Clock::now());
        sleepMs = std::max(0, static_cast<int>(sleep.count()));
    }
    std::array<pollfd, 3> sources{{{signals_.get(), POLLIN, 0},
                                   {changed_.get(), POLLIN, 0},
                                   {keyboard_.descriptor(), POLLIN, 0}}};  // -1: passed over
    ::poll(sources.data(), sources.size(), sleepMs);
    noteChanges();
    return takeSignal() && (sources[2].revents == 0 || takeKeys());
}

bool Session::takeSignal() {
    signalfd_siginfo signal{};
    if (::read(signals_.get(), &signal, sizeof signal) != sizeof signal)
        return true;
    switch (signal.ssi_signo) {
        case SIGUSR1:
            server_.withModule([this](SimulatedModule& module) {
                replugged_ = replugged_ || module.unplugged();
                module.replug();
            });
            return true;
        case SIGTSTP:  // SIGCONT follows when we are continued
            keyboard_.release();
            ::raise(SIGSTOP);
            return true;
        case SIGCONT:
            keyboard_.take();
            drawing_.breakOff();
            note();
            return true;
        default:
            return false;
    }
}

bool Session::takeKeys() {
    constexpr char kEnd = 'q';
    for (const char typed : keyboard_.typed()) {
        if (typed == kEnd)
            return false;
        if (typed >= '1' && typed <= '9')
            press(typed - '0');
    }
    return true;
}

void Session::press(int key) {
    server_.withModule([&](SimulatedModule& module) { module.pressKey(key); });
    note();
    if (keyboard_.isTerminal() && !drawsScreen_)
        std::cerr << "key " << key << " pressed\n";
}

void Session::note() const {
    ::eventfd_write(changed_.get(), 1);
}

void Session::noteChanges() {
    eventfd_t changes = 0;
    if (::eventfd_read(changed_.get(), &changes) != 0)
        return;
    const auto now = Clock::now();
    if (!catchUpAt_)
        latestCatchUpAt_ = now + kLongestWait;
    catchUpAt_ = std::min(now + kQuiet, latestCatchUpAt_);
}

void Session::catchUp() {
    catchUpAt_.reset();
    const View view = server_.withModule([](const SimulatedModule& module) { return View(module); });
    if (view.unplugged) {
        complaints_.say("unplugged; SIGUSR1 plugs it in again");
    } else if (std::exchange(replugged_, false)) {
        complaints_ = {};
        printPath();
    }
    std::string troubles;
    const auto attempt = [&](auto&& keep) {
        try {
            keep();
        } catch (const std::runtime_error& error) {
            troubles += (troubles.empty() ? "" : "; ") + std::string(error.what());
        }
    };
    attempt([&] { keepEeproms(); });
    attempt([&] { snapshot_.show(view); });
    if (!troubles.empty())
        complaints_.say(troubles);
    if (drawsScreen_)  // last: it may wait for a terminal that has been stopped
        drawing_.show(view);
}

// Both, whatever becomes of the first.
void Session::keepEeproms() {
    const ModuleState state = server_.withModule([](const SimulatedModule& module) { return module.state(); });
    std::exception_ptr failure;
    const auto keep = [&](std::optional<EepromFile>& file, const auto& eeprom) {
        try {
            if (file)
                file->keep(eeprom);
        } catch (...) {
            failure = std::current_exception();
        }
    };
    keep(systemEeprom_, state.systemEeprom);
    keep(userEeprom_, state.userEeprom);
    if (failure)
        std::rethrow_exception(failure);
}

void Session::printPath() {
    std::cout << server_.devicePath() << std::endl;
    if (!std::cout)
        throw std::runtime_error("cannot write the device's path to standard output");
    drawing_.breakOff();
}

}  // namespace opane::sim
