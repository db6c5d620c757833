#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace opane {

/// A zero-based array of bytes, as the commands take and return it.
using ByteArray = std::vector<std::uint8_t>;

/// Narrows a number to a frame byte.
/// @param name  what the number is, for the error's text
/// @throws RuntimeError 6 (overflow) when value is not 0..255
std::uint8_t frameByte(std::int32_t value, std::string_view name);

/// Narrows the result of position arithmetic to a 16-bit signed number.
/// @param name  what the number is, for the error's text
/// @throws RuntimeError 6 (overflow) when value is not -32768..32767
std::int16_t int16Value(std::int64_t value, std::string_view name);

}  // namespace opane
