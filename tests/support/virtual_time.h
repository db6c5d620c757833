#pragma once

#include <cstdint>

#include "platform/tick_counter.h"

namespace opane::test {

/// A clock that moves when it is told to, and a little at every reading of the counter, since a wait may do nothing but
/// read it.
class VirtualTime final : public TickCounter {
public:
    std::uint32_t now() override {
        micros += kReadingMicros;
        return static_cast<std::uint32_t>(micros / 1000);
    }
    void pause() override {}

    /// Milliseconds since a moment of this clock.
    double since(std::int64_t start) const { return static_cast<double>(micros - start) / 1000.0; }

    std::int64_t micros = 1'000'000;

private:
    static constexpr std::int64_t kReadingMicros = 5;
};

}  // namespace opane::test
