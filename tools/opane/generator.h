#pragma once

#include <string>

#include "arguments.h"
#include "automation/glyph_file.h"

namespace opane::tool {

/// The character generator that comes with the library.
/// @throws InputError when none came
std::string defaultGenerator();

/// Reads a character generator that a user has named.
/// @throws InputError that says what is wrong with it, also when it holds no character
GlyphFile readGenerator(const std::string& path);

}  // namespace opane::tool
