#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace opane::test {

/// A folder of its own for one test; removed with all it holds.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "opane-test-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string path() const { return path_.string(); }

    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
        return *this / name;
    }

private:
    std::filesystem::path path_;
};

inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace opane::test
