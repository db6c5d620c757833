#pragma once

#include <string>
#include <string_view>

namespace opane {

// A file on its way to its place has its name, a dot, 16 hexadecimal digits at random and ".part". Of a name that is
// too long for that only the beginning counts.

/// A name that nobody can be waiting with.
std::string temporaryName(std::string_view name);

/// Whether that is such a name of a file called name.
bool isTemporaryName(std::string_view candidate, std::string_view name);

}  // namespace opane
