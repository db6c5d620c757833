#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "shared/frame_byte.h"

namespace opane {

/// Upper-case hexadecimal digits without prefix and leading zeros: 255 is "FF", 0 is "0".
std::string hexText(std::uint32_t value);
/// The same as exactly two digits.
std::string hexByteText(std::uint8_t value);

/// Bytes from two hexadecimal digits each, in either case, without separators; nothing when anything else is there.
std::optional<ByteArray> hexBytes(std::string_view text);

inline constexpr std::int16_t kLargestNumber = 0x7FFF;

/// A number from hexadecimal digits in either case, without sign, prefix or spaces; nothing when anything else is there
/// or when it is above the largest. Without that, one beyond 16 bits is the largest number, which no command takes.
std::optional<std::int16_t> hexNumber(std::string_view text, std::int16_t largest = kLargestNumber);
/// A number from decimal digits, with "-" before them or not; nothing when anything else is there. One beyond 16 bits
/// is the nearest that fits, which no command takes.
std::optional<std::int16_t> decimalNumber(std::string_view text);

/// Characters, not bytes, of a UTF-8 text.
std::size_t characterCount(std::string_view text);

}  // namespace opane
