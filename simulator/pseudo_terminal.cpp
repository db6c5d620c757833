#include "simulator/pseudo_terminal.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/posix/folder_entries.h"
#include "platform/temporary_name.h"
#include "simulator/claim.h"

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& what, const std::string& reason = std::strerror(errno)) {
    throw std::runtime_error(what + ": " + reason);
}

FileDescriptor opened(const std::string& what, int number) {
    if (number < 0)
        fail("cannot open " + what);
    return FileDescriptor(number);
}

void setRaw(int slave) {
    termios settings{};
    if (::tcgetattr(slave, &settings) != 0)
        fail("cannot read the settings of a pseudo-terminal");
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B9600);
    if (::tcsetattr(slave, TCSANOW, &settings) != 0)
        fail("cannot set a pseudo-terminal raw");
}

bool leadsTo(const fs::path& link, const std::string& device) {
    std::error_code error;
    return fs::read_symlink(link, error) == device && !error;
}

[[noreturn]] void failLink(const fs::path& link, const std::string& reason = std::strerror(errno)) {
    fail("cannot make the link " + link.string(), reason);
}

/// For as long as the link is ours, also while the device is unplugged and there is none. Two that start at once cannot
/// both have it.
FileDescriptor claimed(const fs::path& link) {
    std::string name;
    try {
        name = claimName("opane-sim link", link);
    } catch (const std::runtime_error& error) {
        failLink(link, error.what());
    }
    FileDescriptor held = claim(name);
    if (held.get() < 0) {
        const int process = claimant(name).value_or(0);
        failLink(link, "another simulated module has it" +
                           (process > 0 ? ", of process " + std::to_string(process) : std::string()));
    }
    return held;
}

bool mayBeReplaced(const fs::path& link) {
    std::error_code error;
    const auto kind = fs::symlink_status(link, error).type();
    if (kind == fs::file_type::not_found)
        return true;
    if (kind != fs::file_type::symlink)
        return false;
    return fs::read_symlink(link, error).string().starts_with("/dev/pts/") || !fs::exists(link, error);
}

}  // namespace

PseudoTerminal::PseudoTerminal(fs::path link) : link_(std::move(link)) {
    if (!link_.empty())
        linkClaim_ = claimed(link_);
    reopen();
}

PseudoTerminal::~PseudoTerminal() {
    removeLink();
}

// Without its link: the system soon gives the device's name to somebody else's terminal.
void PseudoTerminal::close() {
    removeLink();
    master_ = FileDescriptor();
    slave_ = FileDescriptor();
    watch_ = FileDescriptor();
}

void PseudoTerminal::reopen() {
    auto master = opened("a pseudo-terminal", ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, 64> name{};
    if (::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0 ||
        ::ptsname_r(master.get(), name.data(), name.size()) != 0)
        fail("cannot set up a pseudo-terminal");
    const std::string path = name.data();

    auto slave = opened(path, ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    setRaw(slave.get());
    auto watch = opened("a watch", ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (::inotify_add_watch(watch.get(), path.c_str(), IN_CLOSE) < 0)
        fail("cannot watch " + path);

    close();
    path_ = path;
    master_ = std::move(master);
    slave_ = std::move(slave);
    watch_ = std::move(watch);
    moveLink();
}

int PseudoTerminal::hostBaudRate() const {
    constexpr std::array<std::pair<speed_t, int>, 9> kRates{{{B300, 300},
                                                             {B600, 600},
                                                             {B1200, 1200},
                                                             {B2400, 2400},
                                                             {B4800, 4800},
                                                             {B9600, 9600},
                                                             {B19200, 19200},
                                                             {B38400, 38400},
                                                             {B57600, 57600}}};
    termios settings{};
    if (::tcgetattr(master_.get(), &settings) != 0)
        return 0;
    const speed_t speed = ::cfgetospeed(&settings);
    for (const auto& [code, rate] : kRates)
        if (code == speed)
            return rate;
    return 0;
}

std::vector<std::uint8_t> PseudoTerminal::read() {
    std::vector<std::uint8_t> bytes(4096);
    const auto count = ::read(master_.get(), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

void PseudoTerminal::write(std::span<const std::uint8_t> bytes) {
    [[maybe_unused]] const auto written = ::write(master_.get(), bytes.data(), bytes.size());
}

void PseudoTerminal::noteLeavings() {
    alignas(inotify_event) std::array<char, 4096> events{};
    bool anyGone = false;
    while (::read(watch_.get(), events.data(), events.size()) > 0)
        anyGone = true;
    // The search for hosts goes through all that is open on the machine, while a host that has come back since may be
    // waiting for its answer: only where there is something to clear, and no host shows itself by its lock.
    if (anyGone && hasLeftSomething() && !isLocked() && !hasHost()) {
        ::ioctl(slave_.get(), TIOCNXCL);
        ::tcflush(slave_.get(), TCIFLUSH);
    }
}

bool PseudoTerminal::hasLeftSomething() const {
    int exclusive = 0;
    int unread = 0;
    ::ioctl(slave_.get(), TIOCGEXCL, &exclusive);
    ::ioctl(slave_.get(), FIONREAD, &unread);
    return exclusive != 0 || unread > 0;
}

// Whether a host holds a lock on the device, as the system tells it: device and inode of each locked file.
bool PseudoTerminal::isLocked() const {
    struct stat device {};
    if (::fstat(slave_.get(), &device) != 0)
        return false;
    std::array<char, 64> own{};
    std::snprintf(own.data(), own.size(), "%02x:%02x:%ju", major(device.st_dev), minor(device.st_dev),
                  static_cast<std::uintmax_t>(device.st_ino));
    std::ifstream locks("/proc/locks");
    for (std::string word; locks >> word;) {
        if (word == own.data())
            return true;
    }
    return false;
}

// Whether anyone has the device open besides our own slave_. The watch cannot count them: equal events in a row are
// told once.
bool PseudoTerminal::hasHost() const {
    const fs::path own = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(slave_.get());
    for (const fs::path& process : entriesOf("/proc")) {
        const bool isNumber = process.filename().string().find_first_not_of("0123456789") == std::string::npos;
        for (const fs::path& open : isNumber ? entriesOf(process / "fd") : std::vector<fs::path>{})
            if (leadsTo(open, path_) && open != own)
                return true;
    }
    return false;
}

void PseudoTerminal::moveLink() {
    if (link_.empty())
        return;
    if (!mayBeReplaced(link_))
        failLink(link_, "something else is there; a link to a pseudo-terminal would be replaced");
    fs::path fresh = link_;
    fresh.replace_filename(temporaryName(link_.filename().string()));
    std::error_code error;
    fs::create_symlink(path_, fresh, error);
    if (error)
        failLink(link_, error.message());
    fs::rename(fresh, link_, error);
    if (error) {
        std::error_code ignored;
        fs::remove(fresh, ignored);
        failLink(link_, error.message());
    }
}

void PseudoTerminal::removeLink() {
    std::error_code ignored;
    if (!link_.empty() && leadsTo(link_, path_))
        fs::remove(link_, ignored);
}

}  // namespace opane::simulator
