#pragma once

#include <cstdio>
#include <string>

namespace opane::simulator {

/// A file that is written beside its place and then moved there: whoever reads the place finds a whole one. It goes
/// away unless it is moved.
class PartFile {
public:
    /// @param what    for messages, as "the picture"
    /// @param target  the place; a link is followed
    /// @throws std::runtime_error as fail(), also for a folder, a device, a pipe and a file that may not be written
    PartFile(std::string what, const std::string& target);
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;
    ~PartFile();

    std::FILE* file() const { return file_; }

    /// With the permissions of an earlier file.
    /// @throws std::runtime_error as fail(); an earlier file is still there then
    void moveToTarget();

    /// @throws std::runtime_error that names the file and the reason
    [[noreturn]] void fail(const std::string& reason) const;

private:
    std::string what_;
    std::string target_;
    std::string part_;
    std::FILE* file_ = nullptr;
    bool moved_ = false;
};

}  // namespace opane::simulator
