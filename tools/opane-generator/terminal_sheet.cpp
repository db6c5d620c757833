#include "tools/opane-generator/sheet.h"

#include <algorithm>
#include <cstddef>

namespace opane {
namespace {

constexpr std::size_t kCodesPerRow = 16;
constexpr char kHexDigits[] = "0123456789ABCDEF";

const char* halfBlocks(Ink upper, Ink lower, bool dotted) {
    if (upper == Ink::absent)
        return dotted ? "·" : " ";
    if (upper == Ink::faulty)
        return "░";
    if (upper == Ink::dark)
        return lower == Ink::dark ? "█" : "▀";
    return lower == Ink::dark ? "▄" : " ";
}

/// One pair of pixel rows of cells that stand side by side.
std::string lineOf(std::span<const Cell> cells, std::size_t upperRow, const std::string& gap) {
    std::string line;
    for (const Cell& cell : cells) {
        for (std::size_t column = 0; column < kGlyphColumns; ++column)
            line += halfBlocks(cell[upperRow][column], cell[upperRow + 1][column], (column + upperRow / 2) % 2 == 0);
        line += gap;
    }
    return line;
}

}  // namespace

std::string terminalSheet(std::span<const Cell> cells) {
    std::string sheet = "  ";
    for (std::size_t column = 0; column < kCodesPerRow; ++column)
        sheet += std::string("  ") + kHexDigits[column] + "    ";
    sheet += '\n';
    for (std::size_t first = 0; first < cells.size(); first += kCodesPerRow) {
        const auto rowOfCells = cells.subspan(first, std::min(kCodesPerRow, cells.size() - first));
        for (std::size_t row = 0; row < kBlockSize; row += 2) {
            sheet += row == 2 ? kHexDigits[first / kCodesPerRow] : ' ';
            sheet += ' ' + lineOf(rowOfCells, row, " ") + '\n';
        }
        sheet += '\n';
    }
    return sheet;
}

std::string terminalText(std::span<const Cell> cells) {
    std::string text;
    for (std::size_t row = 0; row < kBlockSize; row += 2)
        text += lineOf(cells, row, "") + '\n';
    return text;
}

}  // namespace opane
