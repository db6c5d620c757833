#include "simulator/eeprom_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/posix/link_target.h"
#include "platform/whole_file.h"
#include "simulator/claim.h"
#include "simulator/module_state.h"

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;

std::vector<std::uint8_t> wholeFile(const fs::path& path, std::size_t size) {
    if (!fs::is_regular_file(path))
        throw std::runtime_error("it is no plain file");
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

EepromFile::EepromFile(const std::string& what, const std::string& path, std::size_t size)
    : path_(path), contents_(size, kErased) {
    const std::string refusal = what + " cannot be kept in " + path + ": ";
    try {
        checkWholeFile(path);
        const std::string name = claimName("opane-sim EEPROM", fs::weakly_canonical(fs::absolute(linkTarget(path))));
        claim_ = claim(name);
        if (claim_.get() < 0) {
            const int process = claimant(name).value_or(0);
            throw std::runtime_error("another simulated module keeps one there" +
                                     (process > 0 ? ", of process " + std::to_string(process) : std::string()));
        }
        isThere_ = fs::exists(path);
        if (isThere_)
            contents_ = wholeFile(path, size);
    } catch (const fs::filesystem_error& error) {
        throw std::runtime_error(refusal + error.code().message());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(refusal + error.what());
    }
}

void EepromFile::keep(std::span<const std::uint8_t> contents) {
    if (isThere_ && std::ranges::equal(contents, contents_))
        return;
    std::vector<std::uint8_t> kept(contents.begin(), contents.end());
    writeWholeFile(path_, kept);
    contents_ = std::move(kept);
    isThere_ = true;
}

}  // namespace opane::simulator
