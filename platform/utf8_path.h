#pragma once

#include <filesystem>
#include <string>

namespace opane {

/// The path that a UTF-8 text names, whatever encoding the system's own paths have.
inline std::filesystem::path utf8Path(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

/// A path as UTF-8 text.
inline std::string utf8Name(const std::filesystem::path& path) {
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

}  // namespace opane
