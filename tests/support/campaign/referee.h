#pragma once

#include <algorithm>

#include "support/campaign/watched_link.h"

namespace opane::test::campaign {

/// The longest time of one exchange, whatever the module does, in milliseconds (docs/bounds.md): five attempts, each
/// with a resynchronisation.
constexpr std::int64_t longestExchange(std::int64_t timeoutMs, bool onBus) {
    constexpr std::int64_t kLongestFrame = 6 + 255 + 1;
    constexpr std::int64_t kLateTick = 2;
    const std::int64_t longestWait = std::max<std::int64_t>(timeoutMs, 1000) + kLateTick;
    return (onBus ? 2 : 1) * 5 * (kLongestFrame * longestWait + 125 * (100 + kLateTick));
}

struct Arrival {
    Micros at;
    std::uint8_t byte;
};

struct Judgement {
    std::string complaint{};  ///< empty: all was right
    bool borderline = false;  ///< a byte came so near to its deadline that both outcomes are right; not judged
    bool resynchronised = false;
    std::size_t sends = 0;
    bool result = false;
    bool raised = false;
};

/// Judges an exchange by the bytes that were on the line and by docs/wire.md alone: works out what had to be sent,
/// logged, returned and how long it had to take, and compares. Shares no code with the library.
/// @param line  every byte that was ever on its way to the host, in the order of arrival
Judgement judge(const Request& request, const LinkBefore& before, const std::vector<Arrival>& line, const Seen& seen);

}  // namespace opane::test::campaign
