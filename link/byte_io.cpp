#include <algorithm>
#include <limits>

#include "link/clsOPane.h"
#include "platform/message_pump.h"
#include "platform/services.h"

namespace opane {
namespace {

/// How long a wait stays away from a host that has events to run, milliseconds.
constexpr std::int64_t kHostEventsMs = 1;

/// A yield of a wait for a byte. It may return late: when a byte has come, after a millisecond when the host has
/// events, else when the wait is over. So a waiting link burns no core, and asks the system only for what is there.
void yieldUntilInput(SerialControl& control, std::uint32_t start, std::uint32_t now, std::int32_t limitMs) {
    // A wait is over when strictly more than its limit has gone by.
    const std::int64_t left = std::int64_t{limitMs} - static_cast<std::int64_t>(now - start) + 1;
    const std::int64_t longest = hostHasEvents() ? kHostEventsMs : left;
    control.WaitForInput(static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::min(left, longest), 0, std::numeric_limits<std::int32_t>::max())));
    yieldToHost();
}

}  // namespace

bool clsOPane::ReceiveByte(std::uint8_t& bytTarget) {
    TickCounter& ticks = *services().tickCounter;
    const std::int32_t limitMs = timeoutMs_;  // a host event may write it
    const std::uint32_t start = ticks.now();
    bool over = limitMs <= 0;
    if (over)
        yieldToHost();
    else
        yieldUntilInput(MSComm, start, start, limitMs);
    for (;;) {
        const auto received = MSComm.Input();
        const bool came = !received.empty();
        if (came)
            bytTarget = received.front();
        over = over || (!came && isPast(start, ticks.now(), limitMs));
        if (came || over) {
            yieldToHost();
            return came;
        }
        yieldUntilInput(MSComm, start, ticks.now(), limitMs);
    }
}

void clsOPane::SelectByteInput() {
    yieldToHost();
    MSComm.InputLen(1);
}

void clsOPane::SendByte(std::uint8_t bytToSend) {
    yieldToHost();
    SendArrayOfByte(std::span(&bytToSend, 1));
}

void clsOPane::SendArrayOfByte(std::span<const std::uint8_t> arrbytArrayToSend) {
    MSComm.Output(arrbytArrayToSend);
}

void clsOPane::ClearInputBuffer() {
    MSComm.InputLen(0);
    yieldToHost();
    MSComm.Input();
}

}  // namespace opane
