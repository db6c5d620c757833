#include "support/campaign/watched_control.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <chrono>
#include <stdexcept>
#include <utility>

#include "simulator/pseudo_terminal.h"
#include "support/forwarding_control.h"

namespace opane::test::campaign {
namespace {

class WatchedControl final : public ForwardingControl {
public:
    WatchedControl(std::unique_ptr<SerialControl> inner, VirtualTime& time, Watched& watched)
        : ForwardingControl(std::move(inner)), time_(time), watched_(watched) {}

    std::span<const std::uint8_t> Input() override {
        const auto bytes = ForwardingControl::Input();
        watched_.goneBy += bytes.size();
        if (InputLen() != 0)
            watched_.readSinceWrite += bytes.size();
        return bytes;
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        HostWrite write{time_.micros,
                        {arrbytOutput.begin(), arrbytOutput.end()},
                        std::exchange(watched_.readSinceWrite, 0),
                        watched_.goneBy};
        ForwardingControl::Output(arrbytOutput);
        watched_.writes.push_back(std::move(write));
    }

private:
    VirtualTime& time_;
    Watched& watched_;
};

class MemoryCarrier final : public Carrier {
public:
    std::unique_ptr<SerialControl> control(FaultyLine& line, VirtualTime& time) override {
        memory_.emplace(MemoryLine{time, &line});
        return std::make_unique<MemorySerialControl>(*memory_);
    }

private:
    std::optional<MemoryLine> memory_;
};

/// A pseudo-terminal whose bytes are waited for: the system carries them from end to end in its own time.
class Terminal {
public:
    Terminal() { watchSlave(); }

    const std::string& path() const { return terminal_.path(); }
    bool isOpen() const { return terminal_.isOpen(); }
    int hostBaudRate() const { return terminal_.hostBaudRate(); }

    void vanish() {
        slave_ = FileDescriptor();
        terminal_.close();
    }
    void comeBack() {
        terminal_.reopen();
        watchSlave();
    }

    /// How many bytes the system holds for the host.
    int waiting() const {
        int count = 0;
        ::ioctl(slave_.get(), FIONREAD, &count);
        return count;
    }

    void toHost(std::span<const std::uint8_t> bytes) {
        const int before = waiting();
        terminal_.write(bytes);
        until([&] { return waiting() == before + static_cast<int>(bytes.size()); });
    }

    /// What the host has written, that many bytes.
    ByteArray fromHost(std::size_t count) {
        ByteArray bytes;
        until([&] {
            const auto more = terminal_.read();
            bytes.insert(bytes.end(), more.begin(), more.end());
            return bytes.size() >= count;
        });
        return bytes;
    }

private:
    // Before the host takes the device for itself.
    void watchSlave() {
        slave_ = FileDescriptor(::open(path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        if (slave_.get() < 0)
            throw std::runtime_error("cannot watch " + path());
    }
    template <class Done>
    void until(Done done) {
        using std::chrono::steady_clock;
        const auto giveUp = steady_clock::now() + std::chrono::seconds(10);
        while (!done()) {
            if (steady_clock::now() > giveUp)
                throw std::runtime_error("the pseudo-terminal " + path() + " lost bytes");
            ::poll(nullptr, 0, 0);
        }
    }

    simulator::PseudoTerminal terminal_;
    FileDescriptor slave_;
};

class TerminalControl final : public ForwardingControl {
public:
    TerminalControl(Terminal& terminal, FaultyLine& line, VirtualTime& time)
        : ForwardingControl(makeSystemSerialControl()), terminal_(terminal), line_(line), time_(time) {}

    void PortOpen(bool blnOpen) override {
        ForwardingControl::PortOpen(blnOpen);
        if (blnOpen)
            line_.baudRate(terminal_.hostBaudRate());
    }
    std::span<const std::uint8_t> Input() override {
        deliver();
        return ForwardingControl::Input();
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        const Micros at = time_.micros;
        ForwardingControl::Output(arrbytOutput);
        line_.receive(terminal_.fromHost(arrbytOutput.size()), at);
    }
    bool WaitForInput(std::int32_t limitMs) override {
        if (!deliver() && !ForwardingControl::WaitForInput(0) && terminal_.waiting() == 0) {
            const auto next = line_.nextOutputAt();
            const Micros limit = time_.micros + Micros{limitMs} * 1000;
            time_.micros = std::max(time_.micros, next ? std::min(*next, limit) : limit);
            if (!deliver())
                return false;
        }
        return ForwardingControl::WaitForInput(kRealWaitMs);
    }

private:
    static constexpr std::int32_t kRealWaitMs = 10'000;  // what is waited for is there

    bool deliver() {
        if (line_.gone())
            return true;
        const ByteArray due = line_.takeOutput(time_.micros);
        if (line_.gone())
            terminal_.vanish();
        else if (!due.empty())
            terminal_.toHost(due);
        return line_.gone() || !due.empty();
    }

    Terminal& terminal_;
    FaultyLine& line_;
    VirtualTime& time_;
};

class TerminalCarrier final : public Carrier {
public:
    std::unique_ptr<SerialControl> control(FaultyLine& line, VirtualTime& time) override {
        return std::make_unique<TerminalControl>(terminal_, line, time);
    }
    std::string device() const override { return terminal_.path(); }
    void replug() override { terminal_.comeBack(); }

private:
    Terminal terminal_;
};

}  // namespace

std::unique_ptr<Carrier> memoryCarrier() {
    return std::make_unique<MemoryCarrier>();
}

std::unique_ptr<Carrier> terminalCarrier() {
    return std::make_unique<TerminalCarrier>();
}

std::unique_ptr<SerialControl> watchedControl(std::unique_ptr<SerialControl> control, VirtualTime& time,
                                              Watched& watched) {
    return std::make_unique<WatchedControl>(std::move(control), time, watched);
}

}  // namespace opane::test::campaign
