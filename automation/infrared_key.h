#pragma once

#include <cstdint>
#include <optional>

namespace opane {

/// A key of the remote control. The toggle flag changes with every press.
struct InfraredKey {
    std::int16_t number;  ///< 1 to 9; 0: no key has been received
    std::int16_t toggle;  ///< 0 or 1
};

/// The key of an infrared code; nothing for a code that is no key. docs/wire.md, "Infrared keys".
std::optional<InfraredKey> decodeInfraredKey(std::int32_t code);

}  // namespace opane
