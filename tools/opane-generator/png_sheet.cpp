#include "tools/opane-generator/sheet.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <png.h>

#include "shared/runtime_error.h"

namespace opane {
namespace {

constexpr std::size_t kCodesPerRow = 16;
constexpr std::size_t kScale = 4;   ///< picture pixels for each module pixel, both ways
constexpr std::size_t kMargin = 7;  ///< module pixels left of and above the cells, with the hexadecimal digits
constexpr std::size_t kGap = 2;     ///< module pixels between the cells of a sheet

enum class Colour : std::uint8_t { paper, label, light, dark, hatch, faulty };
constexpr std::array<std::array<png_byte, 3>, 6> kPalette{{
    {255, 255, 255},
    {96, 96, 96},
    {216, 228, 200},
    {16, 32, 16},
    {176, 176, 176},
    {220, 40, 40},
}};

/// Digits of 3 x 5 pixels; an octal digit is a row, the top row first.
constexpr std::array<unsigned, 16> kDigits{075557, 026227, 071747, 071717, 055711, 074717, 074757, 071122,
                                           075757, 075717, 025755, 065656, 034443, 065556, 074747, 074744};
constexpr std::size_t kDigitWidth = 3;
constexpr std::size_t kDigitHeight = 5;

class Picture {
public:
    Picture(std::size_t width, std::size_t height)
        : width_(width), height_(height), pixels_(width * height * kScale * kScale) {}

    /// One module pixel.
    void set(std::size_t x, std::size_t y, Colour colour) {
        for (std::size_t row = y * kScale; row < (y + 1) * kScale; ++row)
            std::fill_n(pixels_.begin() + static_cast<std::ptrdiff_t>(row * width_ * kScale + x * kScale), kScale,
                        static_cast<std::uint8_t>(colour));
    }

    void draw(const Cell& cell, std::size_t left, std::size_t top) {
        for (std::size_t row = 0; row < cell.size(); ++row)
            for (std::size_t column = 0; column < cell[row].size(); ++column)
                set(left + column, top + row, colourOf(cell[row][column], (row + column) % 2 == 0));
    }

    void drawDigit(std::size_t digit, std::size_t left, std::size_t top) {
        for (std::size_t row = 0; row < kDigitHeight; ++row)
            for (std::size_t column = 0; column < kDigitWidth; ++column)
                if (((kDigits[digit] >> (3 * (kDigitHeight - 1 - row) + kDigitWidth - 1 - column)) & 1U) != 0)
                    set(left + column, top + row, Colour::label);
    }

    ByteArray png() const {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = static_cast<png_uint_32>(width_ * kScale);
        image.height = static_cast<png_uint_32>(height_ * kScale);
        image.format = PNG_FORMAT_RGB_COLORMAP;
        image.colormap_entries = static_cast<png_uint_32>(kPalette.size());
        ByteArray content(PNG_IMAGE_PNG_SIZE_MAX(image));
        png_alloc_size_t length = content.size();
        if (png_image_write_to_memory(&image, content.data(), &length, 0, pixels_.data(), 0, kPalette.data()) == 0)
            throw RuntimeError(ErrorNumber::outOfMemory, std::string("the PNG cannot be made: ") + image.message);
        content.resize(length);
        return content;
    }

private:
    static Colour colourOf(Ink ink, bool hatched) {
        switch (ink) {
            case Ink::light:
                return Colour::light;
            case Ink::dark:
                return Colour::dark;
            case Ink::absent:
                return hatched ? Colour::hatch : Colour::paper;
            case Ink::faulty:
                return Colour::faulty;
        }
        return Colour::faulty;
    }

    std::size_t width_;
    std::size_t height_;
    std::vector<std::uint8_t> pixels_;
};

}  // namespace

ByteArray pngSheet(std::span<const Cell> cells) {
    constexpr std::size_t kStepX = kGlyphColumns + kGap;
    constexpr std::size_t kStepY = kBlockSize + kGap;
    const std::size_t rows = (cells.size() + kCodesPerRow - 1) / kCodesPerRow;
    Picture picture(kMargin + kCodesPerRow * kStepX, kMargin + rows * kStepY);
    for (std::size_t column = 0; column < kCodesPerRow; ++column)
        picture.drawDigit(column, kMargin + column * kStepX + 1, 1);
    for (std::size_t row = 0; row < rows; ++row)
        picture.drawDigit(row, 2, kMargin + row * kStepY + 1);
    for (std::size_t i = 0; i < cells.size(); ++i)
        picture.draw(cells[i], kMargin + i % kCodesPerRow * kStepX, kMargin + i / kCodesPerRow * kStepY);
    return picture.png();
}

ByteArray pngText(std::span<const Cell> cells) {
    Picture picture(kGap + cells.size() * kGlyphColumns + kGap, kGap + kBlockSize + kGap);
    for (std::size_t i = 0; i < cells.size(); ++i)
        picture.draw(cells[i], kGap + i * kGlyphColumns, kGap);
    return picture.png();
}

}  // namespace opane
