#pragma once

#include <filesystem>
#include <thread>
#include <utility>

#include "simulator/module_server.h"

namespace opane::simulator {

/// A simulated module on a pseudo-terminal, served by a thread of its own for as long as it lives.
class ServedModule {
public:
    /// @param link  a stable name for the device (see PseudoTerminal); empty: none
    explicit ServedModule(const ModuleOptions& options = {}, std::filesystem::path link = {})
        : module_(options), terminal_(std::move(link)), thread_([this] { server_.run(); }) {}
    ~ServedModule() {
        server_.stop();
        thread_.join();
    }
    ServedModule(const ServedModule&) = delete;
    ServedModule& operator=(const ServedModule&) = delete;

    /// The device that a host opens; another one after each replug.
    std::string devicePath() { return server_.devicePath(); }

    /// Runs use(module) between two services, and gives its result back.
    template <class Use>
    decltype(auto) withModule(Use&& use) {
        return server_.withModule(std::forward<Use>(use));
    }

private:
    SimulatedModule module_;
    PseudoTerminal terminal_;
    ModuleServer server_{module_, terminal_};
    std::thread thread_;
};

}  // namespace opane::simulator
