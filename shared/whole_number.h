#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace opane {

/// A whole number as people and scripts write it: decimal, with zeros or "-" before it or not, or hexadecimal behind
/// "0x"; nothing when the text is anything else or the number has more than 64 bits.
std::optional<std::int64_t> wholeNumber(std::string_view text);

}  // namespace opane
