#include "session.h"

#include <algorithm>
#include <sstream>

namespace opane::tool {
namespace {

std::string secondsText(double seconds) {
    std::ostringstream text;
    text << seconds;
    return text.str();
}

MessageBoxAnswer sayMessageBox(Report& report, const std::string& text, const std::string& title) {
    std::string lines = title + '\n' + text;
    std::erase(lines, '\r');
    report.fail(lines);
    return MessageBoxAnswer::ok;
}

}  // namespace

std::int32_t millisecondsOf(double seconds) {
    return static_cast<std::int32_t>(std::min(seconds * 1000, 2'000'000'000.0));
}

Session::Session(const Arguments& arguments, Report& report)
    : arguments_(arguments),
      report_(report),
      interruption_(cancellation_, arguments.timeoutSeconds ? millisecondsOf(*arguments.timeoutSeconds) : 0) {
    services_->cancellation = &cancellation_;
    services_->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons /*buttons*/) {
        return sayMessageBox(report_, text, title);
    };
    if (arguments.timeoutSeconds)
        cancellation_.cancelAfter(*services().tickCounter, millisecondsOf(*arguments.timeoutSeconds));
}

void Session::traceIsClosed() {
    isTraceClosed_ = true;
    cancellation_.cancel();
}

std::string Session::whyNot() const {
    if (!isCancelled())
        return "the module refused or did not answer";
    if (const std::string cause = Interruption::cause(); !cause.empty())
        return "interrupted (" + cause + ")";
    if (isTraceClosed_)
        return "interrupted, as nobody reads the trace";
    if (!arguments_.timeoutSeconds)
        return "interrupted";
    return "its time of " + secondsText(*arguments_.timeoutSeconds) + " s (--timeout) was over";
}

void Session::pause(std::chrono::milliseconds length) const {
    cancellation_.pause(static_cast<std::int32_t>(length.count()));
}

}  // namespace opane::tool
