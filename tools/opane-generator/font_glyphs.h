#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shared/screen_geometry.h"

namespace opane {

/// The pixel columns of a character cell as column bytes: bit 7 the top row, a set bit dark.
using GlyphColumns = std::array<std::uint8_t, kGlyphColumns>;

/// The glyphs of a font in cells of 6 x 8 pixels, by their code in the code page.
struct FontGlyphs {
    int pixelSize = 0;                                    ///< the size at which the font was taken
    std::array<std::optional<GlyphColumns>, 256> byCode;  ///< nothing where the font lacks the character
    std::vector<std::uint8_t> cutCodes;                   ///< whose glyph stuck out of the cell and was cut

    int count() const;
};

/// Takes the glyphs of a bitmap or outline font, all on one baseline. What a font always needs and may lack is made up:
/// the space is blank, the no-break space is the space, the soft hyphen is the hyphen.
/// @param path       UTF-8; any format that FreeType reads, compressed X11 fonts too
/// @param pixelSize  of an outline font 1 or more, of a bitmap font one of its sizes; without it the largest at which
///                   next to nothing is cut
/// @throws RuntimeError as readFile (53 missing, 70, 75, 76); 321 (invalid file format) when the file is no font or the
///         font has none of the code page's characters; 5 (invalid argument) when it lacks the size
FontGlyphs loadFontGlyphs(const std::string& path, std::optional<int> pixelSize);

}  // namespace opane
