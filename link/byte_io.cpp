#include <algorithm>
#include <limits>

#include "link/clsOPane.h"
#include "platform/message_pump.h"
#include "platform/services.h"

namespace opane {
namespace {

/// How long a wait stays away from a host that has events to run, milliseconds.
constexpr std::int64_t kHostEventsMs = 1;

}  // namespace

bool clsOPane::ReceiveByte(std::uint8_t& bytTarget) {
    TickCounter& ticks = *services().tickCounter;
    const std::int32_t limitMs = timeoutMs_;  // a host event may write it
    const std::uint32_t start = ticks.now();
    if (!isWaitEnded())
        yieldToHost();
    while (!isWaitEnded()) {
        if (limitMs > 0)
            stayAway(leftOf(start, ticks.now(), limitMs));
        const auto received = MSComm.Input();
        const bool came = !received.empty();
        if (came)
            bytTarget = received.front();
        yieldToHost();  // its time counts: a byte that comes during a host event that outlasts the wait is too late
        if (came) {
            if (observer_ != nullptr)
                observer_->byteReceived(bytTarget);
            return true;
        }
        if (limitMs <= 0 || isPast(start, ticks.now(), limitMs))
            break;
    }
    if (observer_ != nullptr)
        observer_->byteMissed();
    return false;
}

/// The part of a yield that may last: until a byte has come, a millisecond when the host has events, else up to the
/// limit. So a waiting link burns no core, and asks the system only for what is there.
void clsOPane::stayAway(std::int64_t limitMs) {
    std::int64_t longest = hostHasEvents() ? std::min(limitMs, kHostEventsMs) : limitMs;
    if (const Cancellation* const cancellation = services().cancellation; cancellation != nullptr) {
        if (!cancellation->cancelled())
            longest = std::min<std::int64_t>(longest, cancellation->leftMs().value_or(longest));
        else if (lastWait_)
            longest = std::min(longest, leftOf(lastWait_->start, services().tickCounter->now(), lastWait_->limitMs));
    }
    MSComm.WaitForInput(
        static_cast<std::int32_t>(std::clamp<std::int64_t>(longest, 0, std::numeric_limits<std::int32_t>::max())));
}

bool clsOPane::isCancelled() {
    const Cancellation* const cancellation = services().cancellation;
    return cancellation != nullptr && cancellation->cancelled();
}

/// Whether the running call waits no more, since it has been cancelled and nothing that it has sent must be seen to its
/// end.
bool clsOPane::isWaitEnded() const {
    return isCancelled() && (!lastWait_ || isPast(lastWait_->start, services().tickCounter->now(), lastWait_->limitMs));
}

void clsOPane::waitForSilence(std::int32_t silenceMs, std::int32_t longestMs) {
    const Running running(*this);
    TickCounter& ticks = *services().tickCounter;
    const std::uint32_t start = ticks.now();
    std::uint32_t lastByte = start;
    MSComm.InputLen(0);
    while (!isCancelled() && !isPast(start, ticks.now(), longestMs) && !isPast(lastByte, ticks.now(), silenceMs)) {
        stayAway(std::min(leftOf(start, ticks.now(), longestMs), leftOf(lastByte, ticks.now(), silenceMs)));
        if (dropInput())
            lastByte = ticks.now();
        yieldToHost();
    }
}

void clsOPane::SelectByteInput() {
    yieldToHost();
    MSComm.InputLen(1);
}

bool clsOPane::SendByte(std::uint8_t bytToSend) {
    yieldToHost();
    return giveToPort(std::span(&bytToSend, 1));
}

void clsOPane::SendArrayOfByte(std::span<const std::uint8_t> arrbytArrayToSend) {
    giveToPort(arrbytArrayToSend);
}

/// @return false, and nothing has been given, when the call has been cancelled
bool clsOPane::giveToPort(std::span<const std::uint8_t> bytes) {
    if (isCancelled())
        return false;
    MSComm.Output(bytes);
    if (observer_ != nullptr)
        observer_->bytesSent(bytes);
    return true;
}

void clsOPane::ClearInputBuffer() {
    MSComm.InputLen(0);
    yieldToHost();
    dropInput();
}

/// Reads and drops what waits. @return whether there was anything
bool clsOPane::dropInput() {
    const auto dropped = MSComm.Input();
    if (!dropped.empty() && observer_ != nullptr)
        observer_->bytesDropped(dropped);
    return !dropped.empty();
}

}  // namespace opane
