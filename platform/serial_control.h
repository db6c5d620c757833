#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace opane {

/// A serial port as the link sees it: raw bytes, 8 data bits, no parity, 1 stop bit, no handshaking. The control never
/// switches the RTS or DTR lines. It belongs to one thread.
///
/// A device that vanishes or fails in use raises RuntimeError 57 (device I/O error) at the read or write that notices
/// it, and leaves the port closed; opening it again works once the device is back.
class SerialControl {
public:
    SerialControl() = default;
    virtual ~SerialControl() = default;
    SerialControl(const SerialControl&) = delete;
    SerialControl& operator=(const SerialControl&) = delete;

    /// 1: Input gives bytes. The only mode there is.
    /// @throws RuntimeError 380 (invalid property value) for any other mode
    virtual std::int16_t InputMode() const = 0;
    virtual void InputMode(std::int16_t intInputMode) = 0;

    /// COM port number from 1; 1 on a new control. Which device it is: devicePath().
    /// Any number is taken; whether there is such a port, opening it tells.
    /// @throws RuntimeError 8000 (port is open) while the port is open
    virtual std::int16_t CommPort() const = 0;
    virtual void CommPort(std::int16_t intCommPort) = 0;

    /// Baud rate, parity, data bits and stop bits, as in "9600,N,8,1", which a new control has. The baud rate is one
    /// of the system's standard ones, the rest is always N, 8 and 1. Written while the port is open, it takes effect
    /// at once.
    /// @throws RuntimeError 380 (invalid property value) when the text is refused; the earlier settings stay. 57 when
    ///         the open device does not take them; the port is closed then
    virtual std::string Settings() const = 0;
    virtual void Settings(const std::string& strSettings) = 0;

    /// True opens the port for this control alone, False closes it and drops what waits in either direction.
    /// @throws RuntimeError 8005 (already open, here or elsewhere), 8002 (no such port), 70 (not allowed), 57 (the
    ///         device refuses the settings); the port is closed then, and the reason is part of later texts of error 8018
    virtual bool PortOpen() const = 0;
    virtual void PortOpen(bool blnOpen) = 0;

    /// 1: a read gives at most that one byte; 0: a read gives all that waits. 0 on a new control.
    virtual std::int16_t InputLen() const = 0;
    virtual void InputLen(std::int16_t intInputLen) = 0;

    /// Takes received bytes out of the receive buffer; empty when none waits. Never blocks.
    /// @return bytes that stay valid until the next call on this control
    /// @throws RuntimeError 8018 (port not open), 57 (the device vanished)
    virtual std::span<const std::uint8_t> Input() = 0;

    /// Queues the bytes for transmission, in order and in one write where the system takes it. Blocks only while the
    /// device takes nothing because the system's transmit buffer is full, at most 1 s at a stretch; what it has not
    /// taken when the thread's cancellation ends the wait is dropped.
    /// @throws RuntimeError 8018 (port not open), 57 (the device vanished, or took nothing for 1 s)
    virtual void Output(std::span<const std::uint8_t> arrbytOutput) = 0;

    /// Blocks until a byte waits, until the device has vanished (the next Input says so) or for limitMs milliseconds,
    /// whichever comes first; an event of the host and the thread's cancellation may end it early. Not at all when the
    /// port is closed or limitMs is 0 or less.
    /// @return whether there is something for Input to take or to say
    virtual bool WaitForInput(std::int32_t limitMs) = 0;
};

/// A closed control on the system's serial ports.
std::unique_ptr<SerialControl> makeSystemSerialControl();

/// A closed control, made in the thread's way (services.h).
std::unique_ptr<SerialControl> makeSerialControl();

/// The device of a COM port number by the thread's port map; else what the environment variable OPANE_COM<n> names,
/// else the system's own: /dev/ttyS<n-1> on POSIX, \\.\COM<n> on Windows. Empty when the map has none.
std::string devicePath(std::int16_t comPort);

/// The system's own way from a COM port number to a device, without the thread's map.
std::string systemDevicePath(std::int16_t comPort);

}  // namespace opane
