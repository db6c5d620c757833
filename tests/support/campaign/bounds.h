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

/// What a module that refuses a command costs beside its five attempts, on a line with its own pace: an attempt that
/// follows a refused one straight away begins with the rest of the answer before it.
/// @param again  straight after another refused command
constexpr std::int64_t waitsOfARefusal(std::int64_t timeoutMs, bool onBus, bool again) {
    // Taken for the echo's length, the mark 0xAA announces 170 bytes and a checksum. Of them come the 2 that are left
    // of the echo, and the answer's 7, of which then the whole header is waited for.
    constexpr std::int64_t kMissingBytes = 170 + 1 - 2 - 7 + 6;
    const std::int64_t spoiltAttempts = (onBus ? 2 : 1) + (again ? 1 : 0);
    return spoiltAttempts * (onBus ? kMissingBytes : 1) * longestWait(timeoutMs);
}

}  // namespace opane::test::campaign
