#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/posix/file_descriptor.h"

namespace opane::simulator {

// A claim is what only one at a time can have, by a name that all programs of the machine share. There is no file
// behind it: it goes with its descriptor, and so with its process, however that ends.

/// The name that stands for a file, or for one that is still to be made: its folder and its own name, whatever the
/// folder is called.
/// @param purpose  of its own for each kind of claim
/// @throws std::runtime_error when there is no such folder
std::string claimName(const std::string& purpose, const std::filesystem::path& file);

/// Takes it.
/// @return without a number when somebody has it
/// @throws std::runtime_error when the system gives none
FileDescriptor claim(const std::string& name);

/// The process that has it; 0 when the system does not tell, nothing when nobody has it.
std::optional<int> claimant(const std::string& name);

}  // namespace opane::simulator
