#include "automation/text_layout.h"

#include <algorithm>
#include <string>

#include "platform/code_page.h"
#include "shared/frame_byte.h"
#include "shared/runtime_error.h"
#include "shared/utf8.h"

namespace opane {
namespace {

/// Pixel columns of a block from left to right; bit 7 is the top row. The transposition of BlockRows.
using BlockColumns = std::array<std::uint8_t, kBlockSize>;

/// Turns rows into columns and columns into rows.
std::array<std::uint8_t, kBlockSize> transposed(const std::array<std::uint8_t, kBlockSize>& block) {
    std::array<std::uint8_t, kBlockSize> result{};
    for (std::size_t from = 0; from < kBlockSize; ++from) {
        for (std::size_t to = 0; to < kBlockSize; ++to) {
            if ((block[from] & (0x80U >> to)) != 0)
                result[to] = static_cast<std::uint8_t>(result[to] | (0x80U >> from));
        }
    }
    return result;
}

int floorDivide(int value, int divisor) {
    return value >= 0 ? value / divisor : -((divisor - 1 - value) / divisor);
}

int firstRowOf(std::int16_t intLignePos) {
    return int16Value(std::int64_t{kBlockSize} * intLignePos, "first pixel row (8 x line)");
}

void requireOnScreen(int firstRow, const TextPlacement& placement) {
    if (firstRow < 0 || firstRow >= kScreenHeight)
        throw RuntimeError(ErrorNumber::subscript,
                           "text line " + std::to_string(firstRow / kBlockSize) + " lies outside the screen's 0 to 7");
    if (placement.firstBlock < 0)
        throw RuntimeError(ErrorNumber::subscript,
                           "the text's first pixel column is " +
                               std::to_string(placement.firstBlock * kBlockSize + placement.bitOffset) +
                               "; the screen begins at 0");
}

}  // namespace

TextCodes textCodes(std::string_view text) {
    TextCodes codes;
    for (const char32_t character : decodeUtf8(text))
        codes.push_back(codePageByte(character));
    return codes;
}

std::optional<TextPlacement> placeText(std::size_t characters, std::int16_t intColumnPos, std::int16_t intPreGap) {
    const std::int16_t textColumn =
        int16Value(std::int64_t{kGlyphColumns} * intColumnPos, "first pixel column (6 x column)");
    const std::int16_t firstPixel =
        int16Value(std::int64_t{textColumn} + intPreGap, "first pixel column (with its gap)");
    const int firstBlock = floorDivide(firstPixel, kBlockSize);
    const int bitOffset = firstPixel - kBlockSize * firstBlock;
    const auto count = static_cast<std::int64_t>(std::min<std::size_t>(characters, 0xFFFF));
    const std::int16_t width = int16Value(kGlyphColumns * count + bitOffset, "width of the text");
    const int blocks = (width + kBlockSize - 1) / kBlockSize;
    if (characters == 0 || blocks > kBlockColumns - firstBlock)
        return std::nullopt;
    return TextPlacement{static_cast<std::int16_t>(firstBlock), static_cast<std::int16_t>(bitOffset),
                         static_cast<std::int16_t>(blocks)};
}

std::optional<std::size_t> firstAbsent(const TextCodes& text, const GlyphFile& glyphs) {
    const auto found =
        std::find_if(text.begin(), text.end(), [&glyphs](const auto& code) { return !code || !glyphs.has(*code); });
    if (found == text.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - text.begin());
}

std::optional<std::vector<BlockRows>> renderText(const TextCodes& text, const TextPlacement& placement,
                                                 std::int16_t intLignePos, bool inverted, const GlyphFile& glyphs,
                                                 const ScreenImage& image) {
    const int firstRow = firstRowOf(intLignePos);
    requireOnScreen(firstRow, placement);

    std::vector<BlockColumns> columns(static_cast<std::size_t>(placement.blocks));
    columns.front() = transposed(blockOf(image, firstRow, placement.firstBlock));
    columns.back() = transposed(blockOf(image, firstRow, placement.firstBlock + placement.blocks - 1));

    auto pixelColumn = static_cast<std::size_t>(placement.bitOffset);
    for (const auto& code : text) {
        if (!code || !glyphs.has(*code))
            return std::nullopt;
        for (int glyphColumn = 0; glyphColumn < kGlyphColumns; ++glyphColumn, ++pixelColumn)
            columns[pixelColumn / kBlockSize][pixelColumn % kBlockSize] = glyphs.column(*code, glyphColumn, inverted);
    }

    std::vector<BlockRows> rows;
    rows.reserve(columns.size());
    for (const BlockColumns& block : columns)
        rows.push_back(transposed(block));
    return rows;
}

BlockRows blockOf(const ScreenImage& image, int firstRow, int blockColumn) {
    BlockRows rows{};
    for (std::size_t row = 0; row < kBlockSize; ++row)
        rows[row] = image[static_cast<std::size_t>(firstRow) + row][static_cast<std::size_t>(blockColumn)];
    return rows;
}

void putBlock(ScreenImage& image, int firstRow, int blockColumn, const BlockRows& rows) {
    for (std::size_t row = 0; row < kBlockSize; ++row)
        image[static_cast<std::size_t>(firstRow) + row][static_cast<std::size_t>(blockColumn)] = rows[row];
}

}  // namespace opane
