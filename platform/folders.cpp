#include "platform/folders.h"

#include <system_error>

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/utf8_path.h"

namespace opane {
namespace {

std::string parentFolder(const std::string& path) {
    const auto separator = path.find_last_of(kPathSeparator);
    if (separator == std::string::npos)
        return ".";
    return path.substr(0, separator == 0 ? 1 : separator);
}

}  // namespace

std::string libraryFolder() {
    return parentFolder(libraryFile());
}

std::string dataFolder() {
    if (std::string named = environmentText("OPANE_DATA"); !named.empty())
        return named;
    // Beside the library (a build folder), under the prefix of bin/ or lib/, and of lib/<architecture>/.
    const std::string folder = libraryFolder();
    for (const std::string& base : {folder, parentFolder(folder), parentFolder(parentFolder(folder))}) {
        std::string candidate = base;
        candidate.append(1, kPathSeparator).append("share").append(1, kPathSeparator).append("opane");
        std::error_code ignored;
        if (std::filesystem::is_directory(utf8Path(candidate), ignored))
            return candidate;
    }
    return {};
}

}  // namespace opane
