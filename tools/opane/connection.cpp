#include "connection.h"

#include <algorithm>
#include <iostream>

#include "print.h"

namespace opane::tool {
namespace {

constexpr std::int16_t kEveryLine = 3;  // log level

/// Shows every line on standard error and keeps in the file those that the log level asks for.
class TraceWriter final : public LineWriter {
public:
    explicit TraceWriter(std::int16_t fileLevel) : fileLevel_(fileLevel) {}

    void write(const std::string& fileName, const std::string& line, std::int16_t level) override {
        std::cerr << line.substr(0, line.find_last_not_of(" \r\n") + 1) << std::endl;
        if (level <= fileLevel_)
            file_.write(fileName, line, level);
    }

private:
    std::int16_t fileLevel_;
    FileLineWriter file_;
};

MessageBoxAnswer printMessageBox(const std::string& text, const std::string& title, MessageBoxButtons /*buttons*/) {
    std::string lines = text;
    std::erase(lines, '\r');
    std::cerr << "opane: " << title << '\n' << lines << '\n';
    return MessageBoxAnswer::ok;
}

}  // namespace

Connection::Connection(const Arguments& arguments) : arguments_(arguments) {
    services_->messageBox = printMessageBox;
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
    object_ = std::make_unique<clsOPaneCommDLL>();
    link_ = threadLink();
    openLog();
}

void Connection::openLog() {
    clsLog& log = *threadGlobals()->gobjLog;
    if (!arguments_.logFolder.empty())
        log.LogFolder(arguments_.logFolder);
    if (!arguments_.tester.empty())
        log.TesteurName(arguments_.tester);
    const std::int16_t fileLevel = arguments_.logLevel.value_or(log.LogLevel());
    log.LogLevel(arguments_.trace ? kEveryLine : fileLevel);
    if (arguments_.trace)
        log.writer(std::make_unique<TraceWriter>(fileLevel));
}

bool Connection::synchronize() {
    if (handshake())
        return true;
    const std::string device = arguments_.device.empty() ? devicePath(arguments_.port) : arguments_.device;
    reportFailure(arguments_, kModuleFailed,
                  "no module of node " + std::to_string(arguments_.node) + " answered on " + device + " at " +
                      std::to_string(arguments_.baudRate) + " baud (" + arguments_.bus +
                      "); check its power, its cable, its node number and its baud rate");
    return false;
}

bool Connection::handshake() {
    if (arguments_.bus == "RS232") {
        std::int16_t status = 1;
        object_->Synchronize(arguments_.port, arguments_.baudRate, arguments_.node, status);
        return status == 0;
    }
    // The public method is for RS232 alone; on a bus the same steps are done on the link.
    link_->Baudrate(arguments_.baudRate);
    link_->CommPort(arguments_.port);
    link_->CommunicationType(arguments_.bus);
    link_->Timeout(clsOPane::kHandshakeTimeoutMs);
    const bool synchronized = link_->SendSynchronizeCharacter(arguments_.node);
    link_->Timeout(clsOPane::kUsualTimeoutMs);
    return synchronized;
}

}  // namespace opane::tool
