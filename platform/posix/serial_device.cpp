#include "platform/serial_device.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <system_error>
#include <vector>

#include "platform/posix/device_user.h"
#include "platform/posix/unshared_descriptor.h"

namespace opane {
namespace {

/// How long one write waits for room, in milliseconds.
constexpr int kRoomMs = 20;

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

/// Null when it is no standard one.
const Rate* standardRate(std::int32_t baudRate) {
    const auto* const found =
        std::find_if(kRates.begin(), kRates.end(), [baudRate](const Rate& rate) { return rate.baudRate == baudRate; });
    return found == kRates.end() ? nullptr : found;
}

std::string systemText(int error) {
    return std::generic_category().message(error);
}

std::optional<DeviceUser> userOf(const std::string& path) {
    struct stat device {};
    if (stat(path.c_str(), &device) != 0)
        return std::nullopt;
    const auto locker = deviceLocker(device);
    return locker ? locker : otherDeviceUser(device);
}

[[noreturn]] void refuseUsed(const std::string& path, const std::optional<DeviceUser>& user) {
    std::string by = "another program, or by a call of this one that still runs";
    if (user && user->process == getpid())
        by = "this program: another port of it, or a call of it that still runs";
    else if (user)
        by = "program \"" + user->program + "\" (process " + std::to_string(user->process) + ")";
    throw DeviceError{ErrorNumber::portAlreadyOpen, "device " + path + " is in use by " + by};
}

/// By its number where it has no name.
std::string groupName(gid_t number) {
    std::vector<char> texts(1024);
    group entry{};
    group* found = nullptr;
    while (getgrgid_r(number, &entry, texts.data(), texts.size(), &found) == ERANGE && texts.size() < 1'000'000)
        texts.resize(2 * texts.size());  // a group with many members
    return found != nullptr ? found->gr_name : std::to_string(number);
}

std::string notAllowedText(const std::string& path) {
    struct stat device {};
    if (stat(path.c_str(), &device) != 0)
        return "a folder on the way to it may not be entered";
    char mode[8];
    std::snprintf(mode, sizeof mode, "%04o", device.st_mode & 07777U);
    if (device.st_uid == geteuid())
        return std::string("its mode is ") + mode + " and keeps its own user out: chmod u+rw " + path;
    const std::string group = groupName(device.st_gid);
    constexpr mode_t kGroupMayUseIt = S_IRGRP | S_IWGRP;
    if ((device.st_mode & kGroupMayUseIt) != kGroupMayUseIt)
        return std::string("its mode is ") + mode + " and keeps its group, " + group + ", out";
    return "join the group that owns it: usermod -aG " + group + " USER, then log in again";
}

[[noreturn]] void refuseOpen(const std::string& path, int error) {
    const std::string device = "device " + path;
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            throw DeviceError{ErrorNumber::invalidPort, device + " does not exist; check the name and the cable"};
        case ENXIO:
        case ENODEV:
        case EIO:
            throw DeviceError{ErrorNumber::invalidPort, device + " has no hardware behind it"};
        case EBUSY:
            refuseUsed(path, userOf(path));
        case EACCES:
            throw DeviceError{ErrorNumber::permissionDenied,
                              device + " may not be opened by this user; " + notAllowedText(path)};
        case EPERM:
            throw DeviceError{ErrorNumber::permissionDenied,
                              device + " may not be opened here, whoever asks: " + systemText(error)};
        default:
            throw DeviceError{ErrorNumber::invalidPort, device + " cannot be opened: " + systemText(error)};
    }
}

class PosixSerialDevice final : public SerialDevice {
public:
    // O_NONBLOCK: neither a missing carrier nor a pipe by that name holds the call.
    PosixSerialDevice(const std::string& path, std::int32_t baudRate)
        : path_(path), device_(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK) {
        if (!device_)
            refuseOpen(path, errno);
        if (isatty(device_.get()) == 0) {
            if (errno != ENOTTY && errno != EINVAL)
                refuseOpen(path, errno);
            throw DeviceError{ErrorNumber::invalidPort, "device " + path + " is no serial device"};
        }
        // TIOCEXCL keeps other users out, the lock also root and other ports of this process.
        if (flock(device_.get(), LOCK_EX | LOCK_NB) != 0)
            refuseUsed(path, userOf(path));
        // The system lets root in where another program has set TIOCEXCL, also a dead one, whose flag may outlast it.
        int isExclusive = 0;
        struct stat status {};
        if (ioctl(device_.get(), TIOCGEXCL, &isExclusive) == 0 && isExclusive != 0 &&
            fstat(device_.get(), &status) == 0) {
            if (const auto user = otherDeviceUser(status))
                refuseUsed(path, user);
        }
        configure(device_.get(), baudRate);
        setExclusive_ = isExclusive == 0 && ioctl(device_.get(), TIOCEXCL) == 0;
    }

    ~PosixSerialDevice() override {
        if (!device_ || getpid() != owner_)
            return;  // in a forked child, which shares with its parent what the following would end
        tcflush(device_.get(), TCIOFLUSH);
        flock(device_.get(), LOCK_UN);  // or a child that shares it would go on holding it
        if (setExclusive_)
            ioctl(device_.get(),
                  TIOCNXCL);  // or the next open would fail while somebody else holds the device open too
    }

    void setBaudRate(std::int32_t baudRate) override { configure(device_.get(), baudRate); }

    std::size_t read(std::span<std::uint8_t> into) override {
        const ssize_t got = ::read(device_.get(), into.data(), into.size());
        if (got > 0)
            return static_cast<std::size_t>(got);
        if (got < 0 && (errno == EAGAIN || errno == EINTR))
            return 0;
        fail(got == 0 ? "its other end is gone" : systemText(errno));  // VMIN is 1: an end of file is a hang-up
    }

    std::size_t write(std::span<const std::uint8_t> bytes) override {
        const ssize_t put = ::write(device_.get(), bytes.data(), bytes.size());
        if (put > 0)
            return static_cast<std::size_t>(put);
        if (put < 0 && errno != EAGAIN && errno != EINTR)
            fail(systemText(errno));
        pollfd device{device_.get(), POLLOUT, 0};
        poll(&device, 1, kRoomMs);
        return 0;
    }

    bool waitForInput(std::int32_t limitMs, const Cancellation* cancellation) override {
        using namespace std::chrono;
        const int event = cancellation != nullptr ? static_cast<int>(cancellation->event()) : -1;  // -1 is passed over
        std::array<pollfd, 2> sources{{{device_.get(), POLLIN, 0}, {event, POLLIN, 0}}};
        // The system lets a wait end late by a thousandth of its length: the last part of a long one is a wait of its
        // own.
        const auto end = steady_clock::now() + milliseconds(limitMs);
        int ready = 0;
        if (const std::int32_t last = limitMs / 256; last > 0)
            ready = poll(sources.data(), sources.size(), limitMs - last);
        if (ready == 0) {
            const nanoseconds left = std::max<nanoseconds>(nanoseconds::zero(), end - steady_clock::now());
            const timespec limit{static_cast<time_t>(left / seconds(1)),
                                 static_cast<long>((left % seconds(1)).count())};
            ready = ppoll(sources.data(), sources.size(), &limit, nullptr);
        }
        return ready > 0 && sources[0].revents != 0;  // a signal ends it early: the caller looks at its time
    }

private:
    [[noreturn]] void fail(const std::string& reason) const {
        if (!device_)
            throw DeviceError{
                ErrorNumber::deviceIo,
                "device " + path_ + " was opened by the process that this one was forked from; open it again"};
        throw DeviceError{ErrorNumber::deviceIo, "device " + path_ + " vanished or failed (" + reason + ")"};
    }

    void configure(int device, std::int32_t baudRate) const {
        termios mode{};
        if (tcgetattr(device, &mode) != 0)
            fail(systemText(errno));
        cfmakeraw(&mode);
        // No HUPCL: closing for a new baud rate must leave DTR and RTS as they are.
        mode.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS | HUPCL);
        mode.c_cflag |= CLOCAL | CREAD;
        mode.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK);
        mode.c_cc[VMIN] = 1;  // a read that finds nothing then says EAGAIN, and 0 means a hang-up
        mode.c_cc[VTIME] = 0;
        const speed_t speed = standardRate(baudRate)->speed;
        cfsetispeed(&mode, speed);
        cfsetospeed(&mode, speed);
        termios taken{};
        if (tcsetattr(device, TCSANOW, &mode) != 0 || tcgetattr(device, &taken) != 0 || cfgetospeed(&taken) != speed)
            throw DeviceError{ErrorNumber::deviceIo,
                              "device " + path_ + " does not take the baud rate " + std::to_string(baudRate)};
    }

    std::string path_;
    pid_t owner_ = getpid();
    UnsharedDescriptor device_;
    bool setExclusive_ = false;
};

}  // namespace

bool isStandardBaudRate(std::int32_t baudRate) {
    return standardRate(baudRate) != nullptr;
}

std::unique_ptr<SerialDevice> openSerialDevice(const std::string& path, std::int32_t baudRate) {
    return std::make_unique<PosixSerialDevice>(path, baudRate);
}

std::string portDevicePath(std::int16_t comPort) {
    return "/dev/ttyS" + std::to_string(comPort - 1);
}

}  // namespace opane
