#include "connection.h"

#include "log_options.h"
#include "shared/runtime_error.h"

namespace opane::tool {
namespace {

/// Between two looks at a port that is not there or not free yet.
constexpr std::chrono::milliseconds kLookPause{100};

}  // namespace

Connection::Connection(Session& session, const Arguments& arguments)
    : session_(session),
      arguments_(arguments),
      choice_{arguments_.port, arguments_.baudRate, arguments_.node, arguments_.bus},
      watcher_(session) {
    if (!arguments_.device.empty()) {
        services_->portMap = [port = arguments_.port, device = arguments_.device](std::int16_t comPort) {
            return comPort == port ? device : std::string();
        };
    } else if (arguments_.port != 1) {
        // A new object opens port 1, which is not the one asked for and may be somebody's console.
        services_->portMap = [port = arguments_.port](std::int16_t comPort) {
            return comPort == port ? systemDevicePath(comPort) : std::string();
        };
    }
    prepareLog(arguments_);
    object_ = std::make_unique<clsOPaneCommDLL>();
    link_ = threadLink();
    link_->observer(&watcher_);
    setLog(arguments_, *threadLog());
}

Connection::~Connection() {
    link_->observer(nullptr);
}

bool Connection::synchronize() {
    TickCounter& ticks = *services().tickCounter;
    const std::uint32_t start = ticks.now();
    const auto mayWait = [&] {
        return arguments_.waitSeconds > 0 && !session_.isCancelled() &&
               !isPast(start, ticks.now(), millisecondsOf(arguments_.waitSeconds));
    };
    bool isAnswerAwaited = false;
    std::exception_ptr obstacle;  // in the port's way
    std::string reason;           // its text
    for (int made = 0; made <= arguments_.connectRetries || mayWait(); ++made) {
        try {
            if (isAnswerAwaited ? makeConnectionAgain(*link_, choice_) : makeConnection(*link_, choice_))
                return true;
            isAnswerAwaited = true;
            obstacle = nullptr;
        } catch (const RuntimeError& error) {
            const bool mayPass = error.number() == ErrorNumber::portNotOpen || error.number() == ErrorNumber::deviceIo;
            if (!mayPass || (!session_.isCancelled() && !mayWait()))
                throw;
            if (made == 0)
                Report::note("waiting: " + std::string(error.what()));
            obstacle = std::current_exception();
            reason = std::string("; ") + error.what();
            isAnswerAwaited = false;
            session_.pause(kLookPause);
        }
        if (session_.isCancelled())
            break;
    }
    if (obstacle && !session_.isCancelled())
        std::rethrow_exception(obstacle);
    const std::string device = arguments_.device.empty() ? devicePath(arguments_.port) : arguments_.device;
    const std::string where =
        " on " + device + " at " + std::to_string(arguments_.baudRate) + " baud (--bus " + arguments_.bus + ")";
    session_.report().fail(session_.isCancelled() ? session_.whyNot() + " while connecting" + where +
                                                        "; no command was sent" + (obstacle ? reason : "")
                                                  : "no module of node " + std::to_string(arguments_.node) +
                                                        " answered" + where + ": " + watcher_.heardText());
    return false;
}

}  // namespace opane::tool
