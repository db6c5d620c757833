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
        watched_.readSinceWrite += InputLen() != 0 ? bytes.size() : 0;
        return bytes;
    }
    void Output(std::span<const std::uint8_t> bytes) override {
        const HostWrite write{time_.micros, {bytes.begin(), bytes.end()}, watched_.readSinceWrite, watched_.goneBy};
        watched_.readSinceWrite = 0;
        ForwardingControl::Output(bytes);
        watched_.writes.push_back(write);
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
struct Terminal {
    /// Before the host takes the device for itself.
    void watchSlave() {
        slave = FileDescriptor(::open(pty.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        if (slave.get() < 0)
            throw std::runtime_error("cannot watch " + pty.path());
    }

    /// How many bytes the system holds for the host.
    std::size_t waiting() const {
        int count = 0;
        ::ioctl(slave.get(), FIONREAD, &count);
        return static_cast<std::size_t>(count);
    }

    template <class Done>
    void until(Done done) const {
        using std::chrono::steady_clock;
        for (const auto giveUp = steady_clock::now() + std::chrono::seconds(10); !done(); ::poll(nullptr, 0, 0)) {
            if (steady_clock::now() > giveUp)
                throw std::runtime_error("the pseudo-terminal " + pty.path() + " lost bytes");
        }
    }

    simulator::PseudoTerminal pty;
    FileDescriptor slave;
};

class TerminalControl final : public ForwardingControl {
public:
    TerminalControl(Terminal& terminal, FaultyLine& line, VirtualTime& time)
        : ForwardingControl(makeSystemSerialControl()), terminal_(terminal), line_(line), time_(time) {}

    void PortOpen(bool blnOpen) override {
        ForwardingControl::PortOpen(blnOpen);
        if (blnOpen)
            line_.baudRate(terminal_.pty.hostBaudRate());
    }
    std::span<const std::uint8_t> Input() override {
        deliver();
        return ForwardingControl::Input();
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        const Micros at = time_.micros;
        ForwardingControl::Output(arrbytOutput);
        ByteArray heard;
        terminal_.until([&] {
            const auto more = terminal_.pty.read();
            heard.insert(heard.end(), more.begin(), more.end());
            return heard.size() >= arrbytOutput.size();
        });
        line_.receive(heard, at);
    }
    bool WaitForInput(std::int32_t limitMs) override {
        if (!deliver() && !ForwardingControl::WaitForInput(0) && terminal_.waiting() == 0) {
            const Micros limit = time_.micros + Micros{limitMs} * 1000;
            time_.micros = std::max(time_.micros, std::min(line_.nextOutputAt().value_or(limit), limit));
            if (!deliver())
                return false;
        }
        constexpr std::int32_t kRealWaitMs = 10'000;  // what is waited for is there
        return ForwardingControl::WaitForInput(kRealWaitMs);
    }

private:
    bool deliver() {
        if (line_.gone())
            return true;
        const ByteArray due = line_.takeOutput(time_.micros);
        if (line_.gone()) {
            terminal_.slave = FileDescriptor();
            terminal_.pty.close();
        } else if (!due.empty()) {
            const std::size_t all = terminal_.waiting() + due.size();
            terminal_.pty.write(due);
            terminal_.until([&] { return terminal_.waiting() == all; });
        }
        return line_.gone() || !due.empty();
    }

    Terminal& terminal_;
    FaultyLine& line_;
    VirtualTime& time_;
};

class TerminalCarrier final : public Carrier {
public:
    TerminalCarrier() { terminal_.watchSlave(); }
    std::unique_ptr<SerialControl> control(FaultyLine& line, VirtualTime& time) override {
        return std::make_unique<TerminalControl>(terminal_, line, time);
    }
    std::string device() const override { return terminal_.pty.path(); }
    void replug() override {
        terminal_.pty.reopen();
        terminal_.watchSlave();
    }

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
