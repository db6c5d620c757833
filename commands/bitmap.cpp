#include <string>

#include "commands/bitmap_file.h"
#include "commands/command_table.h"
#include "link/clsOPane.h"

namespace opane {
namespace {

/// Sent as the line command is, but logged under a name of its own.
constexpr Command kAfficheBMP{kAffData.type, "AfficheBMP", kAffData.dataBytes};

/// The 120 row bytes of a text line, top row first.
ByteArray lineOf(const ScreenImage& image, std::uint8_t line) {
    ByteArray bytes;
    bytes.reserve(kAfficheBMP.dataBytes);
    for (std::size_t row = 0; row < kBlockSize; ++row) {
        const auto& rowBytes = image[std::size_t{line} * kBlockSize + row];
        bytes.insert(bytes.end(), rowBytes.begin(), rowBytes.end());
    }
    return bytes;
}

}  // namespace

bool clsOPane::OPaneCmd_AfficheBMP(const std::string& strFileNameWithPath, ScreenImage& arrActualImage) {
    const Running running(*this);
    logCommand(kAfficheBMP, "Name : " + strFileNameWithPath);
    const BitmapFile file = BitmapFile::read(strFileNameWithPath);
    for (std::size_t row = 0; row < static_cast<std::size_t>(file.height); ++row) {
        for (std::size_t column = 0; column < static_cast<std::size_t>(file.rowBytes); ++column)
            arrActualImage[row][column] = file.image[row][column];
    }
    for (std::uint8_t line = 0; line < kTextLines; ++line) {
        logCommand(kAfficheBMP, "Affiche Line : " + std::to_string(line));
        ByteArray unused;
        if (!runCommand(kAfficheBMP, line, 0, unused, lineOf(file.image, line)))
            return false;
    }
    return true;
}

}  // namespace opane
