#pragma once

#include <cstdint>

namespace opane {

/// Milliseconds since an arbitrary moment; 32 bits, wraps after 49.7 days.
class TickCounter {
public:
    TickCounter() = default;
    virtual ~TickCounter() = default;
    TickCounter(const TickCounter&) = delete;
    TickCounter& operator=(const TickCounter&) = delete;

    virtual std::uint32_t now() = 0;

    /// Gives the processor away for about a millisecond, between two readings of a wait that does nothing else.
    virtual void pause() = 0;
};

/// The system's counter; lives as long as the process.
TickCounter& systemTickCounter();

/// Whether a wait of limitMs that began at start is over: strictly more than limitMs has gone by. A difference, so it
/// stays right when the counter wraps. A negative limit is over at once.
constexpr bool isPast(std::uint32_t start, std::uint32_t now, std::int32_t limitMs) {
    return limitMs < 0 || now - start > static_cast<std::uint32_t>(limitMs);
}

/// How much of that wait is left, milliseconds: 0 or less when it is over.
constexpr std::int64_t leftOf(std::uint32_t start, std::uint32_t now, std::int32_t limitMs) {
    return std::int64_t{limitMs} - static_cast<std::int64_t>(now - start) + 1;
}

}  // namespace opane
