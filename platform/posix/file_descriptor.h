#pragma once

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

}  // namespace opane
