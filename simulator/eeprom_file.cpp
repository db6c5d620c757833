#include "simulator/eeprom_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "simulator/module_state.h"
#include "simulator/part_file.h"

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;

void requireAccess(const fs::path& path, int mode) {
    if (::access(path.c_str(), mode) != 0)
        throw std::runtime_error(path.string() + ": " + std::strerror(errno));
}

std::vector<std::uint8_t> wholeFile(const fs::path& path, std::size_t size) {
    if (!fs::is_regular_file(path))
        throw std::runtime_error("it is no plain file");
    requireAccess(path, R_OK | W_OK);
    if (const auto found = fs::file_size(path); found != size)
        throw std::runtime_error("it holds " + std::to_string(found) + " bytes; expected exactly " +
                                 std::to_string(size));
    std::vector<std::uint8_t> bytes(size);
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size)))
        throw std::runtime_error("it cannot be read");
    return bytes;
}

}  // namespace

EepromFile::EepromFile(std::string what, const std::string& path, std::size_t size)
    : what_(std::move(what)), contents_(size, kErased) {
    try {
        const fs::path place = fs::weakly_canonical(fs::absolute(path));  // of a link, what it leads to is replaced
        path_ = place.string();
        isThere_ = fs::exists(place);
        if (isThere_)
            contents_ = wholeFile(place, size);
        requireAccess(place.parent_path(), W_OK | X_OK);
    } catch (const fs::filesystem_error& error) {
        throw std::runtime_error(what_ + " cannot be kept in " + path + ": " + error.code().message());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(what_ + " cannot be kept in " + path + ": " + error.what());
    }
}

void EepromFile::keep(std::span<const std::uint8_t> contents) {
    if (isThere_ && std::ranges::equal(contents, contents_))
        return;
    PartFile part(what_ + " to", path_);
    if (std::fwrite(contents.data(), 1, contents.size(), part.file()) != contents.size())
        part.fail(std::strerror(errno));
    part.moveToTarget();
    contents_.assign(contents.begin(), contents.end());
    isThere_ = true;
}

}  // namespace opane::simulator
