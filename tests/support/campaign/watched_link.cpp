#include "support/campaign/watched_link.h"

#include <sys/ioctl.h>

#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "support/forwarding_control.h"

namespace opane::test::campaign {
namespace {

class WatchedControl final : public ForwardingControl {
public:
    WatchedControl(std::unique_ptr<SerialControl> inner, VirtualTime& time, Seen& watched)
        : ForwardingControl(std::move(inner)), time_(time), watched_(watched) {}

    std::span<const std::uint8_t> Input() override {
        const auto bytes = ForwardingControl::Input();
        watched_.goneBy += bytes.size();
        if (InputLen() != 0)
            watched_.readSinceWrite += bytes.size();
        return bytes;
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        const Micros at = time_.micros;
        ForwardingControl::Output(arrbytOutput);
        const std::size_t read = std::exchange(watched_.readSinceWrite, 0);
        watched_.writes.push_back({at, {arrbytOutput.begin(), arrbytOutput.end()}, read, watched_.goneBy});
    }

private:
    VirtualTime& time_;
    Seen& watched_;
};

/// The system's own serial control on a pseudo-terminal, in virtual time: what the host writes is taken from the
/// terminal's other end, and what is due is there before the host looks.
class TerminalControl final : public ForwardingControl {
public:
    TerminalControl(simulator::PseudoTerminal& terminal, const MemoryLine& line)
        : ForwardingControl(makeSystemSerialControl()), terminal_(terminal), time_(line.time), peer_(*line.peer) {}

    void PortOpen(bool blnOpen) override {
        if (blnOpen)  // before the host takes the device for itself
            slave_ = openFile(terminal_.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        ForwardingControl::PortOpen(blnOpen);
        if (blnOpen)
            peer_.baudRate(terminal_.hostBaudRate());
    }
    std::span<const std::uint8_t> Input() override {
        deliver();
        return ForwardingControl::Input();
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        const Micros at = time_.micros;  // writing reads the clock
        ForwardingControl::Output(arrbytOutput);
        ByteArray bytes;
        until([&] {
            const auto more = terminal_.read();
            bytes.insert(bytes.end(), more.begin(), more.end());
            return bytes.size() >= arrbytOutput.size();
        });
        peer_.receive(bytes, at);
    }
    bool WaitForInput(std::int32_t limitMs) override {
        if (!deliver() && !ForwardingControl::WaitForInput(0) && waiting() == 0) {
            const auto next = peer_.nextOutputAt();
            const Micros limit = time_.micros + Micros{limitMs} * 1000;
            time_.micros = std::max(time_.micros, next ? std::min(*next, limit) : limit);
            if (!deliver())
                return false;
        }
        return ForwardingControl::WaitForInput(kRealWaitMs);
    }

private:
    static constexpr std::int32_t kRealWaitMs = 10'000;  // what is waited for is there

    /// @return whether there is something to read, if only the device's end
    bool deliver() {
        const ByteArray due = peer_.gone() ? ByteArray{} : peer_.takeOutput(time_.micros);
        if (peer_.gone()) {
            slave_.reset();
            terminal_.close();
        } else if (!due.empty()) {
            const int before = waiting();
            terminal_.write(due);
            until([&] { return waiting() == before + static_cast<int>(due.size()); });
        }
        return peer_.gone() || !due.empty();
    }

    /// How many bytes the system holds for the host.
    int waiting() const {
        int count = 0;
        ::ioctl(slave_.get(), FIONREAD, &count);
        return count;
    }

    /// The system carries bytes from end to end in its own time.
    template <class Done>
    void until(Done done) {
        using std::chrono::steady_clock;
        const auto giveUp = steady_clock::now() + std::chrono::milliseconds(kRealWaitMs);
        while (!done()) {
            if (steady_clock::now() > giveUp)
                throw std::runtime_error("the pseudo-terminal " + terminal_.path() + " lost bytes");
            std::this_thread::yield();
        }
    }

    simulator::PseudoTerminal& terminal_;
    VirtualTime& time_;
    Peer& peer_;
    FileDescriptor slave_;
};

}  // namespace

WatchedLink::WatchedLink(Peer& peer, const LinkBefore& start, simulator::PseudoTerminal* terminal)
    : line_{time, &peer} {
    time.micros = start.at;
    services_->tickCounter = &time;
    services_->calendar = [] { return std::tm{}; };
    services_->portMap = [terminal](std::int16_t) { return terminal != nullptr ? terminal->path() : std::string(); };
    services_->makeSerialControl = [this, terminal] {
        auto control = terminal == nullptr
                           ? std::unique_ptr<SerialControl>(std::make_unique<MemorySerialControl>(line_))
                           : std::make_unique<TerminalControl>(*terminal, line_);
        return std::make_unique<WatchedControl>(std::move(control), time, seen_);
    };
    holder_.adopt(clsOPane::create());
    holder_.adopt(std::make_shared<clsLog>());
    threadLog()->LogLevel(3);
    threadLog()->writer(std::make_unique<RecordingWriter>(seen_.log));
    holder_.globals().gintCommPort = 1;
    link().Initialize();
    link().CommunicationType(start.onBus ? "RS485" : "RS232");
    link().Timeout(start.timeoutMs);
}

const Seen& WatchedLink::exchange(const Request& request, ByteArray info) {
    seen_ = Seen{.goneBy = seen_.goneBy, .infoBefore = info, .info = std::move(info)};
    seen_.raised = raisedNumber([this, &request] {
        seen_.result = link().SendDataAndReceiveResponse(request.length, request.aux1, request.aux2, request.type,
                                                         request.data, seen_.info);
    });
    seen_.timeoutMs = link().Timeout();
    seen_.synchronized = link().IsSynchronized();
    seen_.endedAt = time.micros;
    return seen_;
}

}  // namespace opane::test::campaign
