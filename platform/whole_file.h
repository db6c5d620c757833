#pragma once

#include <string>

#include "shared/frame_byte.h"

namespace opane {

/// Writes a file whole or not at all: aside in the same folder first, then renamed over what is there, and on the disk
/// when the call is back. Whatever ends the program meanwhile, the file holds its earlier content or the new one.
///
/// A file that is replaced keeps its access rights: on POSIX systems mode, group and access list, and its owner where
/// the system lets it be kept. It is refused where its group cannot be kept and other people would have that one's
/// rights. A new one has the user's defaults. A link is followed. A file with several names (hard links) is refused:
/// they would hold different contents then. What a killed writer of the same file has left beside it,
/// "<name>.<16 hexadecimal digits>.part", is removed.
///
/// @param path  UTF-8
/// @throws RuntimeError 76 (its folder is missing), 70 (not allowed, or nothing can be made in its folder), 75 (a
///         folder, a device, several names, a full disk, or it cannot be written otherwise); what was there stays as it
///         was, and nothing is left beside it, but for a disk that fails after all (the text says so). The text names
///         the path
void writeWholeFile(const std::string& path, const ByteArray& content);

/// Raises what writeWholeFile would raise before its first byte, so that nobody works for a file that cannot be
/// written. Changes nothing.
void checkWholeFile(const std::string& path);

}  // namespace opane
