#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/posix/file_descriptor.h"

namespace opane::simulator {

/// An EEPROM's contents in a file, from one run to the next. The file holds the bytes as they are, address 0 first.
class EepromFile {
public:
    /// Reads the file and makes nothing. A missing one holds an erased EEPROM. While it lives no other one of the
    /// machine can be made for the same file: each would write over what the other keeps.
    /// @param what  for messages, as "the System EEPROM"
    /// @param size  bytes that the file holds, exactly
    /// @throws std::runtime_error that names the file and what was expected: a wrong size, no plain file, a file that
    ///         cannot be read or replaced
    EepromFile(const std::string& what, const std::string& path, std::size_t size);

    const std::vector<std::uint8_t>& contents() const { return contents_; }

    /// Writes the file when these contents differ from what it was read or last written with, or when it is missing
    /// since the start (platform/whole_file.h).
    /// @throws std::runtime_error that names the file and the reason; an earlier file is still there then
    void keep(std::span<const std::uint8_t> contents);

private:
    std::string path_;
    FileDescriptor claim_;
    std::vector<std::uint8_t> contents_;
    bool isThere_ = false;
};

}  // namespace opane::simulator
