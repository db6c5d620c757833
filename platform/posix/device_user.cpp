#include "platform/posix/device_user.h"

#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "platform/posix/folder_entries.h"

namespace opane {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kPseudoTerminalMajor = 136;  // the minor number is the terminal's
const dev_t kOtherEnd = makedev(5, 2);          // of any pseudo-terminal

/// None of a process that is gone.
std::optional<DeviceUser> userOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string program;
    if (!std::getline(file, program))
        return std::nullopt;
    for (char& character : program)
        if (character < ' ' || character > '~')  // its owner's choice, for somebody else's terminal
            character = '?';
    return DeviceUser{process, program};
}

/// The device that an open descriptor leads to; 0 for all else. By its name first: a look at a file may wait for the
/// server that has gone away with it.
dev_t deviceBehind(const fs::path& descriptor) {
    std::error_code ignored;
    struct stat status {};
    if (fs::read_symlink(descriptor, ignored).native().find("/dev/") == std::string::npos ||
        stat(descriptor.c_str(), &status) != 0 || !S_ISCHR(status.st_mode))
        return 0;
    return status.st_rdev;
}

/// The number of the pseudo-terminal of which a descriptor is the other end; -1 when the system does not tell.
long terminalNumber(const fs::path& process, const fs::path& descriptor) {
    std::ifstream information(process / "fdinfo" / descriptor.filename());
    for (std::string word; information >> word;)
        if (long number = -1; word == "tty-index:" && information >> number)
            return number;
    return -1;
}

bool uses(const fs::path& process, dev_t device) {
    bool hasIt = false;
    for (const fs::path& descriptor : entriesOf(process / "fd")) {
        const dev_t open = deviceBehind(descriptor);
        hasIt = hasIt || open == device;
        if (open == kOtherEnd && major(device) == kPseudoTerminalMajor &&
            terminalNumber(process, descriptor) == static_cast<long>(minor(device)))
            return false;
    }
    return hasIt;
}

}  // namespace

std::optional<DeviceUser> deviceLocker(const struct stat& device) {
    std::array<char, 64> file{};
    std::snprintf(file.data(), file.size(), "%02x:%02x:%ju", major(device.st_dev), minor(device.st_dev),
                  static_cast<std::uintmax_t>(device.st_ino));
    // "1: FLOCK ADVISORY WRITE 1234 00:18:5 0 EOF", and a "->" behind the number of one that waits for it.
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number, kind, manner, access, locked;
        pid_t process = 0;
        if (words >> number >> kind >> manner >> access >> process >> locked && locked == file.data())
            if (auto user = userOf(process))
                return user;
    }
    return std::nullopt;
}

std::optional<DeviceUser> otherDeviceUser(const struct stat& device) {
    const std::string own = std::to_string(getpid());
    for (const fs::path& process : entriesOf("/proc")) {
        const std::string name = process.filename().string();
        const bool isProcess = name.find_first_not_of("0123456789") == std::string::npos;
        if (isProcess && name != own && uses(process, device.st_rdev))
            if (auto user = userOf(static_cast<pid_t>(std::stol(name))))
                return user;
    }
    return std::nullopt;
}

}  // namespace opane
