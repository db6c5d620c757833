#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "shared/frame_byte.h"

namespace opane {

/// The system's separator between the names of a path.
extern const char kPathSeparator;

/// Bytes that are taken from the front, one piece after the other.
class ByteReader {
public:
    virtual ~ByteReader() = default;
    /// Fills the bytes with the next ones.
    /// @return how many; fewer than there is room for only at the end
    virtual std::size_t read(std::span<std::uint8_t> bytes) = 0;
};

/// Opens a regular file to be read from its start; the file is closed with the reader.
/// @param path  UTF-8
/// @throws RuntimeError 53 (missing), 76 (its folder is missing), 70 (not allowed), 75 (a directory, a device or
///         otherwise not to be read), and from read() 57 (failed while reading); the text names the path
std::unique_ptr<ByteReader> openToRead(const std::string& path);

/// Reads a regular file from its start.
/// @param path      UTF-8
/// @param maxBytes  a longer file is read up to there
/// @throws RuntimeError as openToRead and its reader
ByteArray readFile(const std::string& path, std::size_t maxBytes);

/// Adds text at the end of a file in one write, creating the file when it is missing; never its folder.
/// @param path  UTF-8
/// @param text  UTF-8; the file gets it as the system's text files are: on Windows in its code page, with ? for what
///              that lacks
/// @throws RuntimeError 76 (its folder is missing), 70 (not allowed), 75 (a directory or otherwise not to be written),
///         57 (failed while writing); the text names the path
void appendToFile(const std::string& path, const std::string& text);

}  // namespace opane
