#include "platform/serial_control.h"

#include <algorithm>
#include <type_traits>
#include <vector>

#include "platform/environment.h"
#include "platform/serial_device.h"
#include "platform/serial_settings.h"
#include "platform/services.h"
#include "platform/tick_counter.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

/// Bytes taken from the system at one read.
constexpr std::size_t kReceiveBuffer = 1024;
/// The most that one read of everything takes, so that a device that never stops sending cannot hold it.
constexpr std::size_t kMostAtOnce = 65536;
/// How long the device may take nothing of what is to be sent, in milliseconds.
constexpr std::int32_t kOutputStallMs = 1000;

std::int32_t standardBaudRate(const std::string& strSettings) {
    const std::int32_t baudRate = settingsBaudRate(strSettings);
    if (!isStandardBaudRate(baudRate))
        throw RuntimeError(ErrorNumber::invalidProperty,
                           "baud rate " + std::to_string(baudRate) + " is none of this system's standard rates");
    return baudRate;
}

class SystemSerialControl final : public SerialControl {
public:
    std::int16_t InputMode() const override { return 1; }
    void InputMode(std::int16_t intInputMode) override {
        if (intInputMode != 1)
            throw RuntimeError(ErrorNumber::invalidProperty,
                               "input mode is " + std::to_string(intInputMode) + "; only 1 (binary) is offered");
    }

    std::int16_t CommPort() const override { return port_; }
    void CommPort(std::int16_t intCommPort) override {
        if (PortOpen())
            throw RuntimeError(ErrorNumber::portIsOpen, name() + " is open; its number is set while it is closed");
        port_ = intCommPort;
    }

    std::string Settings() const override { return settings_; }
    void Settings(const std::string& strSettings) override {
        const std::int32_t baudRate = standardBaudRate(strSettings);
        if (PortOpen())
            refusable([&] { device_->setBaudRate(baudRate); });
        settings_ = strSettings;
    }

    bool PortOpen() const override { return device_ != nullptr; }
    void PortOpen(bool blnOpen) override {
        if (blnOpen)
            open();
        else
            close();
    }

    std::int16_t InputLen() const override { return inputLen_; }
    void InputLen(std::int16_t intInputLen) override { inputLen_ = intInputLen; }

    std::span<const std::uint8_t> Input() override {
        requireOpen();
        if (inputLen_ == 0)
            return inputAll();
        if (waiting() == 0) {
            next_ = 0;
            received_.resize(kReceiveBuffer);
            received_.resize(readDevice(received_));
        }
        const std::size_t taken = std::min(waiting(), static_cast<std::size_t>(std::max<std::int16_t>(inputLen_, 1)));
        const std::span bytes(received_.data() + next_, taken);
        next_ += taken;
        return bytes;
    }

    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        requireOpen();
        TickCounter& ticks = *services().tickCounter;
        std::uint32_t lastProgress = ticks.now();
        while (!arrbytOutput.empty()) {
            const std::size_t taken = refusable([&] { return device_->write(arrbytOutput); });
            arrbytOutput = arrbytOutput.subspan(taken);
            if (taken > 0)
                lastProgress = ticks.now();
            else if (isPast(lastProgress, ticks.now(), kOutputStallMs))
                refuse({ErrorNumber::deviceIo, "the device takes no bytes"});
            else if (const Cancellation* const cancellation = services().cancellation;
                     cancellation != nullptr && cancellation->cancelled())
                return;
        }
    }

    bool WaitForInput(std::int32_t limitMs) override {
        if (!PortOpen() || limitMs <= 0 || waiting() > 0)
            return waiting() > 0;
        // Who waits although it is cancelled means to, and is not to be woken by it again and again.
        const Cancellation* const cancellation = services().cancellation;
        const bool mayEndIt = cancellation != nullptr && !cancellation->cancelled();
        return device_->waitForInput(limitMs, mayEndIt ? cancellation : nullptr);
    }

private:
    std::string name() const { return "COM port " + std::to_string(port_); }
    std::size_t waiting() const { return received_.size() - next_; }

    void requireOpen() const {
        if (!PortOpen())
            throw RuntimeError(ErrorNumber::portNotOpen,
                               name() + " is not open" + (lastFailure_.empty() ? "" : ": " + lastFailure_));
    }

    /// Keeps the reason for later texts, closes the port and raises the error.
    [[noreturn]] void refuse(const DeviceError& error) {
        close();
        lastFailure_ = error.reason;
        throw RuntimeError(error.number, name() + ": " + error.reason);
    }

    template <class Operation>
    std::invoke_result_t<Operation> refusable(Operation&& operation) {
        try {
            return operation();
        } catch (const DeviceError& error) {
            refuse(error);
        }
    }

    std::span<const std::uint8_t> inputAll() {
        received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(next_));
        next_ = 0;
        // A short read is not the last one: the system may fill its own buffer again from behind it.
        std::size_t got = 1;
        while (got > 0 && received_.size() < kMostAtOnce) {
            const std::size_t had = received_.size();
            received_.resize(had + kReceiveBuffer);
            got = readDevice(std::span(received_).subspan(had));
            received_.resize(had + got);
        }
        next_ = received_.size();
        return received_;
    }

    std::size_t readDevice(std::span<std::uint8_t> into) {
        return refusable([&] { return device_->read(into); });
    }

    void open() {
        if (PortOpen())
            throw RuntimeError(ErrorNumber::portAlreadyOpen, name() + " is open already");
        if (port_ < 1)
            refuse({ErrorNumber::invalidPort, "ports count from 1"});
        const std::string path = devicePath(port_);
        if (path.empty())
            refuse({ErrorNumber::invalidPort, "it is no port of this system (no device belongs to it)"});
        refusable([&] { device_ = openSerialDevice(path, settingsBaudRate(settings_)); });
        lastFailure_.clear();
    }

    void close() {
        received_.clear();
        next_ = 0;
        device_.reset();
    }

    std::int16_t port_ = 1;
    std::string settings_ = "9600,N,8,1";
    std::int16_t inputLen_ = 0;
    std::unique_ptr<SerialDevice> device_;  // null while the port is closed
    std::string lastFailure_;               // why the port is not open
    std::vector<std::uint8_t> received_;    // the receive buffer; next_ is the first byte that waits
    std::size_t next_ = 0;
};

}  // namespace

std::unique_ptr<SerialControl> makeSystemSerialControl() {
    return std::make_unique<SystemSerialControl>();
}

std::unique_ptr<SerialControl> makeSerialControl() {
    const auto maker = services().makeSerialControl;
    return maker ? maker() : makeSystemSerialControl();
}

std::string devicePath(std::int16_t comPort) {
    const auto map = services().portMap;
    return map ? map(comPort) : systemDevicePath(comPort);
}

std::string systemDevicePath(std::int16_t comPort) {
    const std::string named = environmentText("OPANE_COM" + std::to_string(comPort));
    return named.empty() ? portDevicePath(comPort) : named;
}

}  // namespace opane
