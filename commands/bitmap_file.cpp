#include "commands/bitmap_file.h"

#include "platform/file.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

// Offsets of the fields that are used, each its low byte alone.
constexpr std::size_t kPixelOffset = 10;
constexpr std::size_t kWidth = 18;
constexpr std::size_t kHeight = 22;

/// The most that is ever looked at: the largest offset, then 64 rows of 15 bytes and their padding byte.
constexpr std::size_t kLongestFile = 255 + std::size_t{kScreenHeight} * (kBlockColumns + 1);

/// (width / 8 - 1) rounded to the nearest integer, halves to even, plus 1.
int rowBytesOf(int width) {
    const int whole = width / kBlockSize;
    const int rest = width % kBlockSize;
    const bool up = rest > kBlockSize / 2 || (rest == kBlockSize / 2 && (whole - 1) % 2 != 0);
    return up ? whole + 1 : whole;
}

}  // namespace

BitmapFile BitmapFile::read(const std::string& path) {
    return parse(readFile(path, kLongestFile), path);
}

BitmapFile BitmapFile::parse(std::span<const std::uint8_t> bytes, const std::string& name) {
    const auto at = [bytes](std::size_t position) {
        return position < bytes.size() ? bytes[position] : std::uint8_t{0};
    };
    BitmapFile file;
    file.height = at(kHeight);
    file.rowBytes = rowBytesOf(at(kWidth));
    if (file.height > kScreenHeight || file.rowBytes > kBlockColumns)
        throw RuntimeError(ErrorNumber::subscript, "the bitmap \"" + name + "\" is " + std::to_string(at(kWidth)) +
                                                       " x " + std::to_string(file.height) +
                                                       " pixels; the screen is 120 x 64");
    std::size_t position = at(kPixelOffset);
    for (int row = file.height - 1; row >= 0; --row) {  // the bottom row is stored first
        for (int column = 0; column < file.rowBytes; ++column) {
            // Palette entry 0 is black: a clear bit of the file is a dark pixel.
            file.image[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
                static_cast<std::uint8_t>(255 - at(position));
            ++position;
        }
        ++position;  // one padding byte
    }
    return file;
}

}  // namespace opane
