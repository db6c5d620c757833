#pragma once

#include <signal.h>

#include <array>
#include <atomic>
#include <chrono>
#include <optional>
#include <string>

#include "simulator/eeprom_file.h"
#include "simulator/module_server.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/simulated_module.h"
#include "tools/opane-sim/arguments.h"
#include "tools/opane-sim/keyboard.h"
#include "tools/opane-sim/live_view.h"

namespace opane::sim {

/// The signals that a session takes. All of them end it, but SIGUSR1, which plugs the module in, and those of a shell
/// that stops and continues it.
inline constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGTSTP, SIGCONT};

/// Says it once until it changes, so that a full disk does not fill the screen.
class Complaints {
public:
    void say(const std::string& text);

private:
    std::string last_;
};

/// The program's one module, with all that is shown of it and kept of it.
class Session {
public:
    /// @param signals  where kSignals are read from; they must be blocked
    /// @throws std::exception that names what could not be read or made; then nothing is left behind
    Session(const Arguments& arguments, const FileDescriptor& signals, Keyboard& keyboard);

    /// Until it is asked to end.
    /// @throws std::exception that names what has failed; the EEPROMs have been kept all the same, when they could be
    void serve();

private:
    using Clock = std::chrono::steady_clock;

    void serveUntilAsked();
    bool waitForSomething();
    bool takeSignal();
    bool takeKeys();
    void press(int key);
    void note() const;
    void noteChanges();
    void catchUp();
    void keepEeproms();
    void printPath();

    const FileDescriptor& signals_;
    Keyboard& keyboard_;
    FileDescriptor changed_;  // an eventfd: the module has heard something, or the serving has failed
    std::atomic<bool> failed_ = false;
    std::optional<Clock::time_point> catchUpAt_;
    Clock::time_point latestCatchUpAt_;
    bool replugged_ = false;  // the new device is not told yet
    std::optional<simulator::EepromFile> systemEeprom_;
    std::optional<simulator::EepromFile> userEeprom_;
    simulator::SimulatedModule module_;
    simulator::PseudoTerminal terminal_;
    simulator::ModuleServer server_;
    ScreenDrawing drawing_;
    Snapshot snapshot_;
    Complaints complaints_;
    bool drawsScreen_;
};

}  // namespace opane::sim
