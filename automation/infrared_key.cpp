#include "automation/infrared_key.h"

#include <algorithm>
#include <array>

namespace opane {
namespace {

constexpr std::int32_t kNoKey = 0xFFFF;
constexpr std::int32_t kToggleFlag = 0x800;

/// Keys 1 to 9 without the toggle flag.
constexpr std::array<std::int32_t, 9> kKeys{0x7F3, 0x7C3, 0x7D4, 0x7D6, 0x7DF, 0x7EF, 0x7DE, 0x7EE, 0x7F2};

}  // namespace

std::optional<InfraredKey> decodeInfraredKey(std::int32_t code) {
    if (code == kNoKey)
        return InfraredKey{0, 0};
    const auto* const found = std::find(kKeys.begin(), kKeys.end(), code & ~kToggleFlag);
    if (found == kKeys.end())
        return std::nullopt;
    return InfraredKey{static_cast<std::int16_t>(found - kKeys.begin() + 1),
                       static_cast<std::int16_t>((code & kToggleFlag) != 0 ? 1 : 0)};
}

}  // namespace opane
