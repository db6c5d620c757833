#pragma once

#include <cstdint>
#include <string>

#include "platform/cancellation.h"

namespace opane {

/// For the main function of a program, one at a time. While it lives, what asks the program to end cancels its calls
/// instead, so that it can say what it has done: Ctrl-C, SIGTERM and SIGHUP, or on Windows Ctrl-C, Ctrl-Break and the
/// end of the console. A signal that was ignored before stays so. A pipe that nobody reads any more and a limit of the
/// size of files end nothing by themselves: the write fails. From the first of those signals on, and after the
/// limit, a write that waits for somebody who does not read is ended within a second, and fails.
class Interruption {
public:
    /// @param cancellation  must outlive this object
    /// @param limitMs       after which a write to a stream that nobody reads is ended too; 0: none
    explicit Interruption(Cancellation& cancellation, std::int32_t limitMs = 0);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// What has asked, such as "SIGINT"; empty while nothing has.
    static std::string cause();
};

}  // namespace opane
