#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/cancellation.h"
#include "shared/runtime_error.h"

namespace opane {

/// Why the system refuses a serial device, or how it was lost. The serial control closes the port and makes its error
/// of it.
struct DeviceError {
    ErrorNumber number;
    std::string reason;
};

/// An open serial device of the system, for this program alone: raw bytes, 8 data bits, no parity, 1 stop bit, no
/// handshaking. Its end drops what waits in either direction and closes it; the RTS and DTR lines stay as they are.
/// Every operation throws DeviceError 57 (device I/O error) when the device has vanished or failed.
class SerialDevice {
public:
    SerialDevice() = default;
    virtual ~SerialDevice() = default;
    SerialDevice(const SerialDevice&) = delete;
    SerialDevice& operator=(const SerialDevice&) = delete;

    /// @param baudRate  a standard one
    virtual void setBaudRate(std::int32_t baudRate) = 0;

    /// Takes as many bytes as wait and fit; 0 when none waits. Never blocks.
    virtual std::size_t read(std::span<std::uint8_t> into) = 0;

    /// Queues bytes for transmission.
    /// @return how many the device has taken; 0 when it took none within a few milliseconds
    virtual std::size_t write(std::span<const std::uint8_t> bytes) = 0;

    /// Blocks until there is something to read, until the device has vanished (the next read says so) or for limitMs
    /// milliseconds, above 0. An event of the host may end it early, and so does the cancellation.
    /// @param cancellation  null: none
    /// @return whether there is something for read to take or to say
    virtual bool waitForInput(std::int32_t limitMs, const Cancellation* cancellation) = 0;
};

/// Whether that is one of the system's standard baud rates.
bool isStandardBaudRate(std::int32_t baudRate);

/// Opens a device.
/// @throws DeviceError 8002 (there is none, or it is no serial device), 8005 (in use), 70 (not allowed), 57 (it refuses
///         the settings)
std::unique_ptr<SerialDevice> openSerialDevice(const std::string& path, std::int32_t baudRate);

/// The system's name for the device of a COM port number.
std::string portDevicePath(std::int16_t comPort);

}  // namespace opane
