#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "platform/tick_counter.h"

namespace opane {

/// Ends the calls of a thread before their time: it is one of the thread's services (services.h). From cancel() on, a
/// running call sends nothing new and each of its waits ends at once, so that it fails as with a silent module; so do
/// all later calls, until reset(). What must be seen to its end is: docs/bounds.md, "A call that is cancelled".
///
/// Nobody cancels: nothing is different.
class Cancellation {
public:
    /// @throws RuntimeError 7 (out of memory) when the system has no event to give
    Cancellation();
    ~Cancellation();
    Cancellation(const Cancellation&) = delete;
    Cancellation& operator=(const Cancellation&) = delete;

    /// Cancels, and wakes the wait that is running. From any thread, and from a signal handler.
    void cancel() noexcept;

    /// Cancels by itself when strictly more than limitMs have gone by. From the thread whose calls it ends, between
    /// them.
    void cancelAfter(TickCounter& ticks, std::int32_t limitMs);

    /// Takes it back, and the limit with it. From the thread whose calls it ends, between them.
    void reset();

    /// Whether cancel() was called or the limit has gone by.
    bool cancelled() const;

    /// How long cancelled() may still say no at the most, milliseconds; nothing without a limit.
    std::optional<std::int32_t> leftMs() const;

    /// Waits for limitMs milliseconds, or until it is cancelled. Runs no host events.
    void pause(std::int32_t limitMs) const;

    /// What a system's wait looks at beside its own business: a descriptor that turns readable, a handle that is set.
    std::intptr_t event() const { return event_; }

private:
    struct Limit {
        TickCounter* ticks;
        std::uint32_t start;
        std::int32_t limitMs;
    };

    std::atomic<bool> asked_ = false;
    std::optional<Limit> limit_;
    const std::intptr_t event_;
};

}  // namespace opane
