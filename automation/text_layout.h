#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "automation/glyph_file.h"
#include "shared/screen_geometry.h"

namespace opane {

/// Where a text stands on its line.
struct TextPlacement {
    std::int16_t firstBlock;  ///< block column; negative when the text begins left of the screen
    std::int16_t bitOffset;   ///< pixel columns of the first block that stay left of the text, 0..7
    std::int16_t blocks;      ///< blocks touched
};

/// One code for each character: nothing where the code page lacks it.
using TextCodes = std::vector<std::optional<std::uint8_t>>;

/// The characters of a UTF-8 text in the single-byte code page. What is no valid UTF-8 has no code, byte by byte.
TextCodes textCodes(std::string_view text);

/// Places a text whose first pixel column is 6 x intColumnPos + intPreGap.
/// @return nothing when the text is empty or reaches beyond the right edge of the screen
/// @throws RuntimeError 6 (overflow) when a position does not fit a 16-bit number
std::optional<TextPlacement> placeText(std::size_t characters, std::int16_t intColumnPos, std::int16_t intPreGap);

/// The position of the first character that the generator cannot show; nothing when it can show all.
std::optional<std::size_t> firstAbsent(const TextCodes& text, const GlyphFile& glyphs);

/// Renders a text into the blocks that it touches. Pixels left of the text in the first block and right of it in the
/// last one are those of the image.
/// @param placement  of this text, by placeText
/// @param inverted   every pixel of the text's columns complemented
/// @return the blocks from left to right; nothing when the generator lacks a character
/// @throws RuntimeError 9 (subscript) when a block lies outside the screen, 6 (overflow) when 8 x intLignePos does not
///         fit a 16-bit number, and what GlyphFile::column raises
std::optional<std::vector<BlockRows>> renderText(const TextCodes& text, const TextPlacement& placement,
                                                 std::int16_t intLignePos, bool inverted, const GlyphFile& glyphs,
                                                 const ScreenImage& image);

/// One block of the image. @param firstRow pixel row 0..56 @param blockColumn 0..14
BlockRows blockOf(const ScreenImage& image, int firstRow, int blockColumn);

/// Puts one block into the image.
void putBlock(ScreenImage& image, int firstRow, int blockColumn, const BlockRows& rows);

}  // namespace opane
