#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "shared/screen_geometry.h"

namespace opane {

// The format is described in docs/bitmap.md.

/// What of a bitmap file is used, and the picture that it gives.
struct BitmapFile {
    int height = 0;    ///< pixel rows, 0..64
    int rowBytes = 0;  ///< row bytes of a pixel row, 0..15
    /// The picture, in the top left corner of a blank screen; a set bit is dark. Rows below height and byte columns
    /// from rowBytes on are 0.
    ScreenImage image{};

    /// Reads a file.
    /// @param path  UTF-8
    /// @throws RuntimeError as readFile (53 missing, 70, 75, 76), 9 (subscript) when the picture does not fit the
    ///         screen
    static BitmapFile read(const std::string& path);

    /// The same from bytes in memory. What is beyond their end reads as 0, and so shows dark.
    /// @param name  stands in the error's text
    static BitmapFile parse(std::span<const std::uint8_t> bytes, const std::string& name);
};

}  // namespace opane
