#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "automation/glyph_file.h"
#include "shared/screen_geometry.h"

namespace opane {

enum class Ink : std::uint8_t {
    light,
    dark,
    absent,  ///< a pixel of a code that the generator lacks
    faulty,  ///< a pixel of a column whose value is no column byte
};

/// The pixels of a character cell by row and column.
using Cell = std::array<std::array<Ink, kGlyphColumns>, kBlockSize>;

struct GlyphCells {
    std::vector<Cell> cells;          ///< one a code, in the order given
    std::vector<std::string> faults;  ///< what is wrong with the faulty columns, each with its code and column
};

GlyphCells glyphCells(const GlyphFile& generator, std::span<const std::uint8_t> codes);

/// The codes of a text.
/// @param text  UTF-8
/// @throws RuntimeError 5 (invalid argument) when the text is empty, no valid UTF-8, or has a character that the code
///         page or the generator lacks
std::vector<std::uint8_t> codesOfText(const GlyphFile& generator, const std::string& text);

}  // namespace opane
