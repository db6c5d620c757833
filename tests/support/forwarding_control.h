#pragma once

#include <memory>
#include <span>
#include <string>
#include <utility>

#include "platform/serial_control.h"

namespace opane::test {

/// Hands everything on to another control.
class ForwardingControl : public SerialControl {
public:
    explicit ForwardingControl(std::unique_ptr<SerialControl> inner) : inner_(std::move(inner)) {}

    std::int16_t InputMode() const override { return inner_->InputMode(); }
    void InputMode(std::int16_t intInputMode) override { inner_->InputMode(intInputMode); }
    std::int16_t CommPort() const override { return inner_->CommPort(); }
    void CommPort(std::int16_t intCommPort) override { inner_->CommPort(intCommPort); }
    std::string Settings() const override { return inner_->Settings(); }
    void Settings(const std::string& strSettings) override { inner_->Settings(strSettings); }
    bool PortOpen() const override { return inner_->PortOpen(); }
    void PortOpen(bool blnOpen) override { inner_->PortOpen(blnOpen); }
    std::int16_t InputLen() const override { return inner_->InputLen(); }
    void InputLen(std::int16_t intInputLen) override { inner_->InputLen(intInputLen); }
    std::span<const std::uint8_t> Input() override { return inner_->Input(); }
    void Output(std::span<const std::uint8_t> arrbytOutput) override { inner_->Output(arrbytOutput); }
    bool WaitForInput(std::int32_t limitMs) override { return inner_->WaitForInput(limitMs); }

private:
    std::unique_ptr<SerialControl> inner_;
};

}  // namespace opane::test
