#pragma once

#include <algorithm>
#include <cstdint>

namespace opane::test::campaign {

// The longest times of docs/bounds.md, in milliseconds.

/// One wait for one byte: more than timeoutMs has to go by, on a counter of whole milliseconds.
constexpr std::int64_t longestWait(std::int64_t timeoutMs) {
    return std::max<std::int64_t>(0, timeoutMs) + 2;
}

constexpr std::int64_t longestHandshake(std::int64_t timeoutMs, bool onBus) {
    return (onBus ? 2 : 1) * longestWait(timeoutMs);
}

constexpr std::int64_t longestResynchronisation(bool onBus) {
    return 125 * longestHandshake(100, onBus);
}

/// One exchange, whatever the module does.
constexpr std::int64_t longestExchange(std::int64_t timeoutMs, bool onBus) {
    constexpr std::int64_t kLongestFrame = 6 + 255 + 1;
    const std::int64_t bytes = (onBus ? 2 : 1) * kLongestFrame;
    return 5 * (bytes * longestWait(std::max<std::int64_t>(timeoutMs, 1000)) + longestResynchronisation(onBus));
}

/// One exchange with a module that says nothing at all, on a bus not even the echo.
constexpr std::int64_t silentExchange(std::int64_t timeoutMs, bool onBus) {
    return (onBus ? 12 : 6) * longestWait(timeoutMs) + 125 * longestWait(100);
}

}  // namespace opane::test::campaign
