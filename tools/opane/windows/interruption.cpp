#include "tools/opane/interruption.h"

#include <atomic>

#include "platform/windows/system_headers.h"

namespace opane {
namespace {

std::atomic<Cancellation*> cancelled = nullptr;
std::atomic<const char*> causeName = nullptr;

const char* nameOf(DWORD event) {
    switch (event) {
        case CTRL_C_EVENT:
            return "Ctrl-C";
        case CTRL_BREAK_EVENT:
            return "Ctrl-Break";
        case CTRL_CLOSE_EVENT:
            return "the console was closed";
        default:
            return nullptr;
    }
}

/// Runs on a thread of the system's own.
BOOL WINAPI takeEvent(DWORD event) {
    const char* const name = nameOf(event);
    Cancellation* const cancellation = cancelled;
    if (name == nullptr || cancellation == nullptr)
        return FALSE;
    const char* none = nullptr;
    causeName.compare_exchange_strong(none, name);
    cancellation->cancel();
    // The process ends when this returns; the system gives it some seconds, and its main function ends it sooner.
    if (event == CTRL_CLOSE_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

}  // namespace

Interruption::Interruption(Cancellation& cancellation, std::int32_t /*limitMs*/) {
    causeName = nullptr;
    cancelled = &cancellation;
    SetConsoleCtrlHandler(takeEvent, TRUE);
}

Interruption::~Interruption() {
    SetConsoleCtrlHandler(takeEvent, FALSE);
    cancelled = nullptr;
}

std::string Interruption::cause() {
    const char* const name = causeName;
    return name != nullptr ? name : "";
}

}  // namespace opane
