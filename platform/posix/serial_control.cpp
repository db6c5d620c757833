#include "platform/serial_control.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "platform/posix/file_descriptor.h"
#include "platform/serial_settings.h"
#include "platform/services.h"
#include "platform/tick_counter.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

/// Bytes taken from the system at one read.
constexpr std::size_t kReceiveBuffer = 1024;
/// The most that one read of everything takes, so that a device that never stops sending cannot hold it.
constexpr std::size_t kMostAtOnce = 65536;
/// How long the device may take nothing of what is to be sent, in milliseconds.
constexpr std::int32_t kOutputStallMs = 1000;

struct Rate {
    std::int32_t baudRate;
    speed_t speed;
};

constexpr std::array kRates{
    Rate{50, B50},           Rate{75, B75},           Rate{110, B110},         Rate{134, B134},
    Rate{150, B150},         Rate{200, B200},         Rate{300, B300},         Rate{600, B600},
    Rate{1200, B1200},       Rate{1800, B1800},       Rate{2400, B2400},       Rate{4800, B4800},
    Rate{9600, B9600},       Rate{19200, B19200},     Rate{38400, B38400},     Rate{57600, B57600},
    Rate{115200, B115200},   Rate{230400, B230400},   Rate{460800, B460800},   Rate{500000, B500000},
    Rate{576000, B576000},   Rate{921600, B921600},   Rate{1000000, B1000000}, Rate{1152000, B1152000},
    Rate{1500000, B1500000}, Rate{2000000, B2000000}, Rate{2500000, B2500000}, Rate{3000000, B3000000},
    Rate{3500000, B3500000}, Rate{4000000, B4000000},
};

speed_t speedOf(const std::string& strSettings) {
    const std::int32_t baudRate = settingsBaudRate(strSettings);
    const auto* const found =
        std::find_if(kRates.begin(), kRates.end(), [baudRate](const Rate& rate) { return rate.baudRate == baudRate; });
    if (found == kRates.end())
        throw RuntimeError(ErrorNumber::invalidProperty,
                           "baud rate " + std::to_string(baudRate) + " is none of this system's standard rates");
    return found->speed;
}

std::string systemText(int error) {
    return std::generic_category().message(error);
}

class PosixSerialControl final : public SerialControl {
public:
    ~PosixSerialControl() override { close(); }

    std::int16_t InputMode() const override { return 1; }
    void InputMode(std::int16_t intInputMode) override {
        if (intInputMode != 1)
            throw RuntimeError(ErrorNumber::invalidProperty,
                               "input mode is " + std::to_string(intInputMode) + "; only 1 (binary) is offered");
    }

    std::int16_t CommPort() const override { return port_; }
    void CommPort(std::int16_t intCommPort) override {
        if (PortOpen())
            throw RuntimeError(ErrorNumber::portIsOpen, name() + " is open; its number is set while it is closed");
        port_ = intCommPort;
    }

    std::string Settings() const override { return settings_; }
    void Settings(const std::string& strSettings) override {
        const speed_t speed = speedOf(strSettings);
        if (PortOpen())
            configure(device_.get(), speed);
        settings_ = strSettings;
        speed_ = speed;
    }

    bool PortOpen() const override { return static_cast<bool>(device_); }
    void PortOpen(bool blnOpen) override {
        if (blnOpen)
            open();
        else
            close();
    }

    std::int16_t InputLen() const override { return inputLen_; }
    void InputLen(std::int16_t intInputLen) override { inputLen_ = intInputLen; }

    std::span<const std::uint8_t> Input() override {
        requireOpen();
        if (inputLen_ == 0)
            return inputAll();
        if (waiting() == 0) {
            next_ = 0;
            received_.resize(kReceiveBuffer);
            received_.resize(readDevice(received_));
        }
        const std::size_t taken = std::min(waiting(), static_cast<std::size_t>(std::max<std::int16_t>(inputLen_, 1)));
        const std::span bytes(received_.data() + next_, taken);
        next_ += taken;
        return bytes;
    }

    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        requireOpen();
        TickCounter& ticks = *services().tickCounter;
        std::uint32_t lastProgress = ticks.now();
        while (!arrbytOutput.empty()) {
            const ssize_t put = write(device_.get(), arrbytOutput.data(), arrbytOutput.size());
            if (put > 0) {
                arrbytOutput = arrbytOutput.subspan(static_cast<std::size_t>(put));
                lastProgress = ticks.now();
                continue;
            }
            if (put < 0 && errno != EAGAIN && errno != EINTR)
                fail(systemText(errno));
            if (isPast(lastProgress, ticks.now(), kOutputStallMs))
                fail("the device takes no bytes");
            pollfd device{device_.get(), POLLOUT, 0};
            poll(&device, 1, kOutputStallMs / 50);
        }
    }

    bool WaitForInput(std::int32_t limitMs) override {
        if (!PortOpen() || limitMs <= 0 || waiting() > 0)
            return waiting() > 0;
        pollfd device{device_.get(), POLLIN, 0};
        return poll(&device, 1, limitMs) > 0;  // a signal ends it early: the caller looks at its time
    }

private:
    std::string name() const { return "COM port " + std::to_string(port_); }
    std::size_t waiting() const { return received_.size() - next_; }

    void requireOpen() const {
        if (!PortOpen())
            throw RuntimeError(ErrorNumber::portNotOpen,
                               name() + " is not open" + (lastFailure_.empty() ? "" : ": " + lastFailure_));
    }

    /// Keeps the reason for later texts, closes the port and raises the error.
    [[noreturn]] void refuse(ErrorNumber number, const std::string& reason) {
        close();
        lastFailure_ = reason;
        throw RuntimeError(number, name() + ": " + reason);
    }

    [[noreturn]] void fail(const std::string& reason) {
        refuse(ErrorNumber::deviceIo, "device " + path_ + " vanished or failed (" + reason + ")");
    }

    std::span<const std::uint8_t> inputAll() {
        received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(next_));
        next_ = 0;
        // A short read is not the last one: the system may fill its own buffer again from behind it.
        std::size_t got = 1;
        while (got > 0 && received_.size() < kMostAtOnce) {
            const std::size_t had = received_.size();
            received_.resize(had + kReceiveBuffer);
            got = readDevice(std::span(received_).subspan(had));
            received_.resize(had + got);
        }
        next_ = received_.size();
        return received_;
    }

    /// As many bytes as wait and fit; 0 when none waits.
    std::size_t readDevice(std::span<std::uint8_t> into) {
        const ssize_t got = read(device_.get(), into.data(), into.size());
        if (got > 0)
            return static_cast<std::size_t>(got);
        if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
            return 0;
        }
        fail(got == 0 ? "its other end is gone" : systemText(errno));  // VMIN is 1: an end of file is a hang-up
    }

    void open() {
        if (PortOpen())
            throw RuntimeError(ErrorNumber::portAlreadyOpen, name() + " is open already");
        if (port_ < 1)
            refuse(ErrorNumber::invalidPort, "ports count from 1");
        path_ = devicePath(port_);
        if (path_.empty())
            refuse(ErrorNumber::invalidPort, "it is no port of this system (no device belongs to it)");

        // O_NONBLOCK: neither a missing carrier nor a pipe by that name holds the call.
        FileDescriptor device = openFile(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (!device)
            refuseOpen(errno);
        if (isatty(device.get()) == 0) {
            if (errno != ENOTTY && errno != EINVAL)
                refuseOpen(errno);
            refuse(ErrorNumber::invalidPort, "device " + path_ + " is no serial device");
        }
        // TIOCEXCL keeps other users out, the lock also root and other ports of this process.
        if (flock(device.get(), LOCK_EX | LOCK_NB) != 0)
            refuseOpen(EBUSY);
        configure(device.get(), speed_);
        ioctl(device.get(), TIOCEXCL);
        device_ = std::move(device);
        lastFailure_.clear();
    }

    [[noreturn]] void refuseOpen(int error) {
        const std::string device = "device " + path_;
        switch (error) {
            case ENOENT:
            case ENOTDIR:
                refuse(ErrorNumber::invalidPort, device + " does not exist; check the name and the cable");
            case ENXIO:
            case ENODEV:
            case EIO:
                refuse(ErrorNumber::invalidPort, device + " has no hardware behind it");
            case EBUSY:
                refuse(ErrorNumber::portAlreadyOpen,
                       device + " is in use by another program, or by a call of this one that still runs");
            case EACCES:
            case EPERM:
                refuse(ErrorNumber::permissionDenied,
                       device +
                           " may not be opened by this user; join the group that owns it (often dialout: "
                           "usermod -aG dialout USER, then log in again)");
            default:
                refuse(ErrorNumber::invalidPort, device + " cannot be opened: " + systemText(error));
        }
    }

    void configure(int device, speed_t speed) {
        termios mode{};
        if (tcgetattr(device, &mode) != 0)
            refuseOpen(errno);
        cfmakeraw(&mode);
        // No HUPCL: closing for a new baud rate must leave DTR and RTS as they are.
        mode.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS | HUPCL);
        mode.c_cflag |= CLOCAL | CREAD;
        mode.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK);
        mode.c_cc[VMIN] = 1;  // a read that finds nothing then says EAGAIN, and 0 means a hang-up
        mode.c_cc[VTIME] = 0;
        cfsetispeed(&mode, speed);
        cfsetospeed(&mode, speed);
        termios taken{};
        if (tcsetattr(device, TCSANOW, &mode) != 0 || tcgetattr(device, &taken) != 0 || cfgetospeed(&taken) != speed)
            refuse(ErrorNumber::deviceIo, "device " + path_ + " does not take the settings " + settings_);
    }

    void close() {
        received_.clear();
        next_ = 0;
        if (!PortOpen())
            return;
        tcflush(device_.get(), TCIOFLUSH);
        flock(device_.get(), LOCK_UN);   // or a child that was forked meanwhile would go on holding it
        ioctl(device_.get(), TIOCNXCL);  // or the next open would fail while somebody else holds the device open too
        device_.reset();
    }

    std::int16_t port_ = 1;
    std::string settings_ = "9600,N,8,1";
    speed_t speed_ = B9600;
    std::int16_t inputLen_ = 0;
    FileDescriptor device_;
    std::string path_;                    // of the last open
    std::string lastFailure_;             // why the port is not open
    std::vector<std::uint8_t> received_;  // the receive buffer; next_ is the first byte that waits
    std::size_t next_ = 0;
};

}  // namespace

std::unique_ptr<SerialControl> makeSystemSerialControl() {
    return std::make_unique<PosixSerialControl>();
}

std::string systemDevicePath(std::int16_t comPort) {
    const std::string variable = "OPANE_COM" + std::to_string(comPort);
    if (const char* named = std::getenv(variable.c_str()); named != nullptr && *named != '\0')
        return named;
    return "/dev/ttyS" + std::to_string(comPort - 1);
}

}  // namespace opane
