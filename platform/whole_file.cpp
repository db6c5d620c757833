#include "platform/whole_file.h"

#include <cerrno>
#include <fstream>
#include <random>
#include <system_error>

#include "platform/utf8_path.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void raise(ErrorNumber number, const std::string& path, const std::string& why) {
    throw RuntimeError(number, "\"" + path + "\" cannot be written: " + why);
}

/// What the system says about a write that it refused.
[[noreturn]] void raise(const std::error_code& error, const std::string& path) {
    const bool denied = error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
                        error == std::errc::read_only_file_system;
    raise(denied ? ErrorNumber::permissionDenied : ErrorNumber::pathFileAccess, path, error.message());
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

}  // namespace

void writeWholeFile(const std::string& path, const ByteArray& content) {
    std::error_code ignored;
    fs::path target = utf8Path(path);
    if (fs::is_symlink(target, ignored))
        target = fs::weakly_canonical(target, ignored);
    if (target.has_parent_path() && !fs::is_directory(target.parent_path(), ignored))
        raise(ErrorNumber::pathNotFound, path, "its folder does not exist");
    if (fs::is_directory(target, ignored))
        raise(ErrorNumber::pathFileAccess, path, "it is a folder");
    if (fs::exists(target, ignored)) {
        if (!fs::is_regular_file(target, ignored))
            raise(ErrorNumber::pathFileAccess, path, "it is a device or a pipe");
        if (!std::ofstream(target, std::ios::app))  // a file that may not be written is not replaced either
            raise(lastError(), path);
    }

    // A name of its own, so that two writers of one file do not share it.
    fs::path aside = target;
    aside += std::string(".").append(std::to_string(std::random_device()())).append(".part");
    errno = 0;
    std::ofstream file(aside, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        const std::error_code why = lastError();
        fs::remove(aside, ignored);
        raise(why, path);
    }
    std::error_code renaming;
    fs::rename(aside, target, renaming);
    if (renaming) {
        fs::remove(aside, ignored);
        raise(renaming, path);
    }
}

}  // namespace opane
