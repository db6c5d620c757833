#include "simulator/part_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace opane::simulator {

namespace fs = std::filesystem;

namespace {

/// The file behind a link, so that the link stays.
std::string behindLinks(const std::string& path) {
    std::error_code error;
    const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : fs::path(path);
    return error ? path : target.string();
}

}  // namespace

PartFile::PartFile(std::string what, const std::string& target) : what_(std::move(what)), target_(behindLinks(target)) {
    std::error_code error;
    const fs::file_status earlier = fs::status(target_, error);
    if (fs::exists(earlier) && !fs::is_regular_file(earlier))
        fail(fs::is_directory(earlier) ? "it is a folder" : "it is a device or a pipe");
    if (fs::exists(earlier) && ::access(target_.c_str(), W_OK) != 0)
        fail(std::strerror(errno));
    part_ = target_ + "." + std::to_string(::getpid()) + ".part";
    file_ = std::fopen(part_.c_str(), "wb");
    if (file_ == nullptr)
        fail(std::strerror(errno));
}

PartFile::~PartFile() {
    if (file_ != nullptr)
        std::fclose(file_);
    if (!moved_)
        std::remove(part_.c_str());
}

void PartFile::moveToTarget() {
    std::error_code error;
    const fs::file_status earlier = fs::status(target_, error);
    if (fs::is_regular_file(earlier))
        fs::permissions(part_, earlier.permissions(), error);
    if (std::fclose(std::exchange(file_, nullptr)) != 0 || std::rename(part_.c_str(), target_.c_str()) != 0)
        fail(std::strerror(errno));
    moved_ = true;
}

void PartFile::fail(const std::string& reason) const {
    throw std::runtime_error("cannot write " + what_ + " " + target_ + ": " + reason);
}

}  // namespace opane::simulator
