#pragma once

#include <algorithm>
#include <cstdint>

namespace opane::test::campaign {

/// The longest time of one exchange, whatever the module does, in milliseconds: docs/bounds.md.
constexpr std::int64_t longestExchange(std::int64_t timeoutMs, bool onBus) {
    // More than a time-out has to go by, on a counter of whole milliseconds.
    const auto wait = [](std::int64_t limitMs) { return limitMs + 2; };
    constexpr std::int64_t kLongestFrame = 6 + 255 + 1;
    constexpr std::int64_t kHandshakes = 125;  // of one resynchronisation, 100 ms each
    const std::int64_t attempt =
        kLongestFrame * wait(std::max<std::int64_t>(timeoutMs, 1000)) + kHandshakes * wait(100);
    return 5 * (onBus ? 2 : 1) * attempt;
}

}  // namespace opane::test::campaign
