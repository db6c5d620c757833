#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace opane {

// The module's screen: 120 x 64 pixels, addressed as 8 text lines of 8 pixel rows by 15 block columns of 8 pixels.
inline constexpr int kScreenWidth = 120;  ///< pixels
inline constexpr int kScreenHeight = 64;  ///< pixels
inline constexpr int kBlockSize = 8;      ///< pixels, both ways
inline constexpr int kTextLines = 8;      ///< text lines 0..7; line L covers pixel rows 8L to 8L+7
inline constexpr int kBlockColumns = 15;  ///< block columns 0..14; column c covers pixel columns 8c to 8c+7
inline constexpr int kGlyphColumns = 6;   ///< pixel columns of a character cell; its height is a text line's

/// 64 pixel rows of 15 row bytes. A row byte holds 8 horizontal pixels: bit 7 is the leftmost, a set bit is dark.
using ScreenImage = std::array<std::array<std::uint8_t, kBlockColumns>, kScreenHeight>;

/// One 8 x 8 block as row bytes, the top row first.
using BlockRows = std::array<std::uint8_t, kBlockSize>;

/// Whether the pixel is dark. pixelColumn 0..119, pixelRow 0..63.
constexpr bool isDark(const ScreenImage& image, int pixelColumn, int pixelRow) {
    const auto rowByte = image[static_cast<std::size_t>(pixelRow)][static_cast<std::size_t>(pixelColumn / kBlockSize)];
    return ((rowByte >> (7 - pixelColumn % kBlockSize)) & 1) != 0;
}

}  // namespace opane
