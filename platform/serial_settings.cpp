#include "platform/serial_settings.h"

#include <charconv>

#include "shared/runtime_error.h"

namespace opane {

std::int32_t settingsBaudRate(const std::string& strSettings) {
    const char* const begin = strSettings.data();
    const char* const end = begin + strSettings.size();
    std::int32_t baudRate = 0;
    const auto [rest, error] = std::from_chars(begin, end, baudRate);
    const std::string frame(rest, end);
    if (error != std::errc{} || baudRate <= 0 || (frame != ",N,8,1" && frame != ",n,8,1"))
        throw RuntimeError(ErrorNumber::invalidProperty, "serial settings are \"" + strSettings +
                                                             "\"; expected a baud rate and 8 data bits, no parity, "
                                                             "1 stop bit, as in \"9600,N,8,1\"");
    return baudRate;
}

}  // namespace opane
