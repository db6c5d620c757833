#pragma once

#include <chrono>
#include <string>

#include "arguments.h"
#include "interruption.h"
#include "platform/cancellation.h"
#include "platform/services.h"
#include "report.h"

namespace opane::tool {

/// Seconds of an option as the milliseconds of a wait, at most some weeks.
std::int32_t millisecondsOf(double seconds);

/// One run of the program: what was asked for, what is told of it, and what ends it before its time: Ctrl-C and its
/// kin, --timeout, and a trace that nobody reads any more.
class Session {
public:
    Session(const Arguments& arguments, Report& report);

    const Arguments& arguments() const { return arguments_; }
    Report& report() { return report_; }

    bool isCancelled() const { return cancellation_.cancelled(); }
    /// Nobody reads what the trace writes.
    void traceIsClosed();

    /// Why a command of the module did not succeed, for the end of a sentence.
    std::string whyNot() const;

    /// Waits between two commands; not when the run has been cancelled.
    void pause(std::chrono::milliseconds length) const;

private:
    const Arguments& arguments_;
    Report& report_;
    Cancellation cancellation_;
    Interruption interruption_;
    ServicesScope services_;
    bool isTraceClosed_ = false;
};

}  // namespace opane::tool
