#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/cancellation.h"
#include "platform/host_dialogs.h"
#include "platform/regional_text.h"
#include "platform/tick_counter.h"

namespace opane {

class SerialControl;

/// What a thread uses of the world outside. A new thread has the system's; a ServicesScope replaces some of it.
struct Services {
    /// Makes the serial control of a new link. Empty: on the system's serial ports.
    std::function<std::unique_ptr<SerialControl>()> makeSerialControl;
    TickCounter* tickCounter = &systemTickCounter();
    /// The thread's local date and time, for the log.
    Calendar calendar = systemLocalTime;
    /// What ends calls before their time; null when nothing does. Whoever sets it keeps it alive.
    Cancellation* cancellation = nullptr;
    /// Runs the host's pending events once; empty when the host has none. It must not throw.
    std::function<void()> eventHook;
    MessageBoxHandler messageBox;  ///< empty: the system's way
    FileDialogHandler fileDialog;  ///< empty: the system's way
    /// Gives the device of a COM port number, or an empty name for none. When empty, devices are the system's own.
    std::function<std::string(std::int16_t)> portMap;
};

/// The calling thread's set.
const Services& services();

/// Replaces services of the calling thread for as long as it lives; the others stay as they were. Scopes end in the
/// reverse order of their beginning, on the thread that made them, and after the objects that use them.
class ServicesScope {
public:
    ServicesScope();
    ~ServicesScope();
    ServicesScope(const ServicesScope&) = delete;
    ServicesScope& operator=(const ServicesScope&) = delete;

    Services* operator->() { return &current_; }

private:
    Services current_;
    const Services* outer_;
};

}  // namespace opane
