#pragma once

#include <string>

#include "shared/frame_byte.h"

namespace opane {

/// Writes a file whole or not at all: aside in the same folder first, then renamed over what is there.
/// @param path  UTF-8
/// @throws RuntimeError 76 (its folder is missing), 70 (not allowed), 75 (a folder, a device, or it cannot be written);
///         what was there stays as it was
void writeWholeFile(const std::string& path, const ByteArray& content);

}  // namespace opane
