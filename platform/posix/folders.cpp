#include "platform/folders.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <climits>
#include <cstdlib>

namespace opane {
namespace {

std::string parentFolder(const std::string& path) {
    const auto separator = path.find_last_of('/');
    if (separator == std::string::npos)
        return ".";
    return path.substr(0, separator == 0 ? 1 : separator);
}

/// The file that holds this very code: the library, or the program that it is part of.
std::string ownFile() {
    static const char anchor = 0;
    Dl_info found{};
    const char* const name = dladdr(&anchor, &found) != 0 ? found.dli_fname : nullptr;
    char resolved[PATH_MAX];
    // A program's name is as it was called; the link in /proc knows where it is.
    if (name != nullptr && realpath(name, resolved) != nullptr && std::string(name).find('/') != std::string::npos)
        return resolved;
    return realpath("/proc/self/exe", resolved) != nullptr ? resolved : "./";
}

}  // namespace

std::string libraryFolder() {
    return parentFolder(ownFile());
}

std::string dataFolder() {
    if (const char* named = std::getenv("OPANE_DATA"); named != nullptr && *named != '\0')
        return named;
    // Beside the library (a build folder), under the prefix of bin/ or lib/, and of lib/<architecture>/.
    const std::string folder = libraryFolder();
    for (const std::string& base : {folder, parentFolder(folder), parentFolder(parentFolder(folder))}) {
        std::string candidate = base + "/share/opane";
        struct stat status {};
        if (stat(candidate.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
            return candidate;
    }
    return {};
}

}  // namespace opane
