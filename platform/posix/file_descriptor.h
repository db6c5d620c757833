#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace opane {

/// Owns a file descriptor and closes it at its end.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    void reset() {
        if (descriptor_ >= 0)
            close(std::exchange(descriptor_, -1));
    }

private:
    int descriptor_;
};

/// Opens a file for this process alone, never as descriptor 0 to 2: in a program whose standard streams are closed,
/// what it prints would go there. Not open, with errno, when the system refuses.
/// @param folder  where a relative path begins: a descriptor of it, or the current folder
inline FileDescriptor openFile(const char* path, int flags, mode_t mode = 0, int folder = AT_FDCWD) {
    FileDescriptor file(openat(folder, path, flags | O_CLOEXEC, mode));
    if (!file || file.get() > STDERR_FILENO)
        return file;
    return FileDescriptor(fcntl(file.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace opane
