#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/simulated_module.h"

namespace opane::simulator {

/// Serves one module on one pseudo-terminal in real time. Module and terminal belong to it from its construction to its
/// end: they are reached through it.
class ModuleServer {
public:
    ModuleServer(SimulatedModule& module, PseudoTerminal& terminal);

    /// Called on the serving thread, without the lock, when the module has heard something, and when it has been
    /// unplugged or plugged in again. Set before run().
    void whenHeard(std::function<void()> heard) { heard_ = std::move(heard); }

    /// Serves until stop(). One call at a time.
    /// @throws std::runtime_error when the system gives no new pseudo-terminal after a replug
    void run();

    /// Ends run(), or lets the next one return at once. From any thread or a signal handler.
    void stop();

    /// Runs use(module) while the module is not being served, and gives its result back. From any thread. The
    /// serving thread acts on a change soon after; after replug() it makes a new device and the link leads to it.
    template <class Use>
    decltype(auto) withModule(Use&& use) {
        const Waker wakeAtEnd{*this};
        const std::lock_guard lock(mutex_);
        return std::forward<Use>(use)(module_);
    }

    /// The device that a host opens; another one after each replug.
    std::string devicePath();

private:
    struct Waker {
        ModuleServer& server;
        ~Waker() { server.wake(); }
    };

    void wake();
    bool followPlug();
    void deliver();
    void waitForSomething();
    bool hear();
    std::optional<Micros> hearsAgainAt();

    SimulatedModule& module_;
    PseudoTerminal& terminal_;
    std::function<void()> heard_;
    std::mutex mutex_;  // module and terminal
    std::atomic<bool> stopping_ = false;
    FileDescriptor wakeUp_;  // an eventfd
};

}  // namespace opane::simulator
