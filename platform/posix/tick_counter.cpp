#include "platform/tick_counter.h"

#include <time.h>

namespace opane {
namespace {

class MonotonicTickCounter final : public TickCounter {
public:
    std::uint32_t now() override {
        timespec moment{};
        clock_gettime(CLOCK_MONOTONIC, &moment);
        const auto milliseconds =
            static_cast<std::uint64_t>(moment.tv_sec) * 1000U + static_cast<std::uint64_t>(moment.tv_nsec) / 1'000'000U;
        return static_cast<std::uint32_t>(milliseconds);
    }

    void pause() override {
        const timespec millisecond{0, 1'000'000};
        nanosleep(&millisecond, nullptr);
    }
};

}  // namespace

TickCounter& systemTickCounter() {
    static MonotonicTickCounter counter;
    return counter;
}

}  // namespace opane
