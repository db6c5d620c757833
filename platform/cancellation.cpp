#include "platform/cancellation.h"

#include <algorithm>

namespace opane {

void Cancellation::cancelAfter(TickCounter& ticks, std::int32_t limitMs) {
    limit_ = Limit{&ticks, ticks.now(), limitMs};
}

bool Cancellation::cancelled() const {
    return asked_ || (limit_ && isPast(limit_->start, limit_->ticks->now(), limit_->limitMs));
}

std::optional<std::int32_t> Cancellation::leftMs() const {
    if (!limit_)
        return std::nullopt;
    const std::int64_t left = leftOf(limit_->start, limit_->ticks->now(), limit_->limitMs);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(left, 0, limit_->limitMs));
}

}  // namespace opane
