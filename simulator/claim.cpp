#include "simulator/claim.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <stdexcept>

namespace opane::simulator {
namespace {

/// A socket's address in the name space of the system that has no files: a zero, then the name; of a long one its end,
/// and a number that stands for all of it.
struct Address {
    explicit Address(std::string name) {
        constexpr std::size_t kLongest = sizeof socket.sun_path - 1;
        if (name.size() > kLongest) {
            const std::string mark = std::to_string(std::hash<std::string>()(name)) + '.';
            name = mark + name.substr(name.size() - (kLongest - mark.size()));
        }
        const std::size_t count = name.size();
        socket.sun_family = AF_UNIX;
        std::ranges::copy(name, socket.sun_path + 1);
        length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + count);
    }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&socket); }

    sockaddr_un socket{};
    socklen_t length = 0;
};

FileDescriptor newSocket() {
    FileDescriptor made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (made.get() < 0)
        throw std::runtime_error(std::string("the system gives no socket: ") + std::strerror(errno));
    return made;
}

}  // namespace

std::string claimName(const std::string& purpose, const std::filesystem::path& file) {
    struct stat folder {};
    if (::stat(file.has_parent_path() ? file.parent_path().c_str() : ".", &folder) != 0)
        throw std::runtime_error(std::strerror(errno));
    return purpose + ' ' + std::to_string(folder.st_dev) + ':' + std::to_string(folder.st_ino) + '/' +
           file.filename().string();
}

FileDescriptor claim(const std::string& name) {
    const Address address(name);
    FileDescriptor held = newSocket();
    if (::bind(held.get(), address.get(), address.length) == 0 && ::listen(held.get(), SOMAXCONN) == 0)
        return held;
    if (errno == EADDRINUSE)
        return FileDescriptor();
    throw std::runtime_error(std::string("the system gives no claim: ") + std::strerror(errno));
}

std::optional<int> claimant(const std::string& name) {
    const Address address(name);
    const FileDescriptor asking = newSocket();
    if (::connect(asking.get(), address.get(), address.length) != 0)
        return errno == ECONNREFUSED ? std::nullopt : std::optional(0);
    ucred holder{};
    socklen_t size = sizeof holder;
    return ::getsockopt(asking.get(), SOL_SOCKET, SO_PEERCRED, &holder, &size) == 0 ? holder.pid : 0;
}

}  // namespace opane::simulator
