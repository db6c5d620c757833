#include "platform/whole_file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

#include "shared/runtime_error.h"

namespace opane {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void raise(ErrorNumber number, const std::string& path, const std::string& why) {
    throw RuntimeError(number, "\"" + path + "\" cannot be written: " + why);
}

std::string reason(int error) {
    return std::generic_category().message(error);
}

}  // namespace

void writeWholeFile(const std::string& path, const ByteArray& content) {
    std::error_code ignored;
    const fs::path target = fs::is_symlink(path, ignored) ? fs::weakly_canonical(path, ignored) : fs::path(path);
    if (target.has_parent_path() && !fs::is_directory(target.parent_path(), ignored))
        raise(ErrorNumber::pathNotFound, path, "its folder does not exist");
    if (fs::is_directory(target, ignored))
        raise(ErrorNumber::pathFileAccess, path, "it is a folder");
    if (fs::exists(target, ignored)) {
        if (!fs::is_regular_file(target, ignored))
            raise(ErrorNumber::pathFileAccess, path, "it is a device or a pipe");
        if (!std::ofstream(target, std::ios::app))  // a file that may not be written is not replaced either
            raise(ErrorNumber::pathFileAccess, path, reason(errno));
    }

    // A name of its own, so that two writers of one file do not share it.
    const fs::path aside = target.string() + "." + std::to_string(std::random_device()()) + ".part";
    errno = 0;
    std::ofstream file(aside, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        const std::string why = reason(errno);
        fs::remove(aside, ignored);
        raise(ErrorNumber::pathFileAccess, path, why);
    }
    std::error_code renaming;
    fs::rename(aside, target, renaming);
    if (renaming) {
        fs::remove(aside, ignored);
        raise(ErrorNumber::pathFileAccess, path, renaming.message());
    }
}

}  // namespace opane
