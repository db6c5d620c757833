#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/serial_control.h"
#include "platform/serial_settings.h"
#include "shared/runtime_error.h"
#include "support/peer.h"
#include "support/virtual_time.h"

namespace opane::test {

/// What a line in memory shows to a test.
struct MemoryLine {
    VirtualTime& time;
    Peer* peer;
    std::vector<std::string> portEvents{};  ///< "open 1 9600,N,8,1", "close"
    std::int16_t missingPort = 0;           ///< this port number does not open
    int waits = 0;                          ///< how often a wait began
    std::string steps{};                    ///< what was asked of it: "all read write one wait read "
};

/// A serial control on a line in memory, in virtual time.
class MemorySerialControl final : public SerialControl {
public:
    explicit MemorySerialControl(MemoryLine& line) : line_(line) {}

    std::int16_t InputMode() const override { return 1; }
    void InputMode(std::int16_t intInputMode) override { line_.steps += intInputMode == 1 ? "binary " : "text "; }
    std::int16_t CommPort() const override { return port_; }
    void CommPort(std::int16_t intCommPort) override {
        if (open_)
            throw RuntimeError(ErrorNumber::portIsOpen, "the port is open");
        port_ = intCommPort;
    }
    std::string Settings() const override { return settings_; }
    void Settings(const std::string& strSettings) override {
        settingsBaudRate(strSettings);
        settings_ = strSettings;
    }
    bool PortOpen() const override { return open_; }
    void PortOpen(bool blnOpen) override {
        if (blnOpen && port_ == line_.missingPort)
            throw RuntimeError(ErrorNumber::invalidPort, "no such port");
        open_ = blnOpen;
        line_.portEvents.push_back(blnOpen ? "open " + std::to_string(port_) + " " + settings_ : "close");
        if (blnOpen)
            line_.peer->baudRate(settingsBaudRate(settings_));
        received_.clear();
    }
    std::int16_t InputLen() const override { return inputLen_; }
    void InputLen(std::int16_t intInputLen) override {
        line_.steps += intInputLen == 0 ? "all " : "one ";
        inputLen_ = intInputLen;
    }

    std::span<const std::uint8_t> Input() override {
        line_.steps += "read ";
        requireDevice();
        const ByteArray arrived = line_.peer->takeOutput(line_.time.micros);
        received_.insert(received_.end(), arrived.begin(), arrived.end());
        const auto end = inputLen_ == 0 || received_.empty() ? received_.end() : received_.begin() + 1;
        taken_.assign(received_.begin(), end);
        received_.erase(received_.begin(), end);
        return taken_;
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        line_.steps += "write ";
        requireDevice();
        line_.peer->receive(arrbytOutput, line_.time.micros);
    }
    bool WaitForInput(std::int32_t limitMs) override {
        ++line_.waits;
        line_.steps += "wait ";
        if (!received_.empty() || line_.peer->gone())
            return true;
        const auto next = line_.peer->nextOutputAt();
        const std::int64_t limit = line_.time.micros + std::int64_t{limitMs} * 1000;
        line_.time.micros = std::max(line_.time.micros, next ? std::min(*next, limit) : limit);
        return next && *next <= line_.time.micros;
    }

private:
    void requireDevice() {
        if (!open_)
            throw RuntimeError(ErrorNumber::portNotOpen, "the port is not open");
        if (line_.peer->gone()) {
            open_ = false;
            throw RuntimeError(ErrorNumber::deviceIo, "the device vanished");
        }
    }

    MemoryLine& line_;
    std::int16_t port_ = 1;
    std::string settings_ = "9600,N,8,1";
    bool open_ = false;
    std::int16_t inputLen_ = 0;
    ByteArray received_;
    ByteArray taken_;
};

}  // namespace opane::test
