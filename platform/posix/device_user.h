#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace opane {

/// A living process that uses a device.
struct DeviceUser {
    pid_t process;
    std::string program;  ///< its name, ASCII without control characters
};

/// A process that has locked the device's file, ourselves too; any user's. A dead one's lock, which a child of its may
/// go on holding, does not count.
std::optional<DeviceUser> deviceLocker(const struct stat& device);

/// Another process that has the device open, among those that we may look into: our own user's, or all for root. One
/// that serves a pseudo-terminal and keeps its device open beside the other end does not count.
std::optional<DeviceUser> otherDeviceUser(const struct stat& device);

}  // namespace opane
