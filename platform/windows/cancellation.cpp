#include "platform/cancellation.h"

#include <algorithm>

#include "platform/windows/system_headers.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

std::intptr_t makeEvent() {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (event == nullptr)
        throw RuntimeError(ErrorNumber::outOfMemory, "the system has no event for a cancellation to give");
    return reinterpret_cast<std::intptr_t>(event);
}

HANDLE handleOf(std::intptr_t event) {
    return reinterpret_cast<HANDLE>(event);
}

}  // namespace

Cancellation::Cancellation() : event_(makeEvent()) {}

Cancellation::~Cancellation() {
    CloseHandle(handleOf(event_));
}

void Cancellation::cancel() noexcept {
    SetEvent(handleOf(event_));
    asked_ = true;  // last: a reset meanwhile would leave an event that every wait returns for
}

void Cancellation::reset() {
    limit_.reset();
    asked_ = false;
    ResetEvent(handleOf(event_));
}

void Cancellation::pause(std::int32_t limitMs) const {
    if (!cancelled())
        WaitForSingleObject(handleOf(event_), static_cast<DWORD>(std::min(limitMs, leftMs().value_or(limitMs))));
}

}  // namespace opane
