#pragma once

#include <filesystem>
#include <system_error>

namespace opane {

/// The file behind symbolic links, also one that is still to be made; the links of its folder stay as they are.
inline std::filesystem::path linkTarget(std::filesystem::path file) {
    constexpr int kMostLinks = 40;  // as the system follows
    std::error_code ignored;
    for (int links = 0; links < kMostLinks && std::filesystem::is_symlink(file, ignored); ++links)
        file = file.parent_path() / std::filesystem::read_symlink(file, ignored);
    return file;
}

}  // namespace opane
