#include <string>

#include "commands/bitmap_file.h"
#include "commands/command_run.h"

namespace opane {
namespace {

/// Sent as the line command is, but logged under a name of its own.
constexpr Command kAfficheBMP{kAffData.type, "AfficheBMP", kAffData.dataBytes, false};

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
    CommandRun run(*this, kAfficheBMP);
    run.log("Name : " + strFileNameWithPath);
    const BitmapFile file = BitmapFile::read(strFileNameWithPath);
    for (std::size_t row = 0; row < static_cast<std::size_t>(file.height); ++row) {
        for (std::size_t column = 0; column < static_cast<std::size_t>(file.rowBytes); ++column)
            arrActualImage[row][column] = file.image[row][column];
    }
    for (std::uint8_t line = 0; line < kTextLines; ++line) {
        run.log("Affiche Line : " + std::to_string(line));
        if (!run.sendData(line, 0, lineOf(file.image, line)))
            return false;
    }
    return true;
}

}  // namespace opane
