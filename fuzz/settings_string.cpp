// The settings of a serial port, such as "9600,N,8,1".

#include <string>

#include "platform/serial_control.h"
#include "platform/serial_settings.h"
#include "require.h"
#include "shared/runtime_error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using opane::fuzz::require;
    const std::string text(reinterpret_cast<const char*>(data), size);
    bool isTaken = false;
    try {
        const std::int32_t baudRate = opane::settingsBaudRate(text);
        const std::string digits = text.substr(0, text.find(','));
        require(std::to_string(baudRate) == digits.substr(std::min(digits.find_first_not_of('0'), digits.size())),
                "the baud rate is another than the text's");
        isTaken = true;
    } catch (const opane::RuntimeError& error) {
        require(error.number() == opane::ErrorNumber::invalidProperty, "an error of another number");
    }
    const auto control = opane::makeSystemSerialControl();
    try {
        control->Settings(text);
        require(isTaken && control->Settings() == text, "settings that are none were taken");
    } catch (const opane::RuntimeError&) {
        require(control->Settings() == "9600,N,8,1", "refused settings did not leave the earlier ones");
    }
    return 0;
}
