#include "shared/frame_byte.h"

#include <limits>
#include <string>

#include "shared/runtime_error.h"

namespace opane {

std::uint8_t frameByte(std::int32_t value, std::string_view name) {
    if (value < 0 || value > 255)
        throw RuntimeError(ErrorNumber::overflow,
                           std::string(name) + " is " + std::to_string(value) + "; a frame byte holds 0 to 255");
    return static_cast<std::uint8_t>(value);
}

std::int16_t int16Value(std::int64_t value, std::string_view name) {
    if (value < std::numeric_limits<std::int16_t>::min() || value > std::numeric_limits<std::int16_t>::max())
        throw RuntimeError(ErrorNumber::overflow, std::string(name) + " is " + std::to_string(value) +
                                                      "; a 16-bit number holds -32768 to 32767");
    return static_cast<std::int16_t>(value);
}

}  // namespace opane
