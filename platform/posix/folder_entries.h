#pragma once

#include <filesystem>
#include <system_error>
#include <vector>

namespace opane {

/// What a folder holds; none of one that may not be read or has gone.
inline std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         entry != std::filesystem::directory_iterator(); entry.increment(error))
        entries.push_back(entry->path());
    return entries;
}

}  // namespace opane
