#pragma once

#include <cstdint>
#include <string>

#include "shared/screen_geometry.h"
#include "simulator/module_state.h"

namespace opane::simulator {

/// What a person sees: the stored image with the frame drawn around it, inverted and turned as the module's status
/// says; empty while the LCD is off. The frame darkens the outermost pixels where the pattern has a set bit; the
/// pattern runs along all four sides, bit 7 at the left and at the top.
ScreenImage shownScreen(const ModuleState& state);

/// The screen as 32 lines of 120 half blocks (UTF-8), each line ended by a line feed.
std::string halfBlocks(const ScreenImage& shown);

/// The physical levels of the backlight, 0..255.
struct BacklightLevels {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
};
BacklightLevels backlightLevels(const ModuleState& state);

struct Colour {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};
inline constexpr Colour kInk{18, 22, 30};  ///< of a dark pixel

/// What is behind the pixels: from the grey of an unlit display to full red, green or, with both, yellow; always light
/// enough to read dark on it.
Colour background(BacklightLevels backlight);

inline constexpr int kPictureScale = 4;  ///< picture pixels for a screen pixel, both ways

/// Writes a PNG of 480 x 256 pixels: dark pixels on a background of the backlight's colour, grey when it is off. As
/// every file here (platform/whole_file.h): whoever reads it finds a whole picture.
/// @throws std::runtime_error that names the file and the reason; an earlier picture is still there then
void writePng(const std::string& path, const ScreenImage& shown, BacklightLevels backlight);

}  // namespace opane::simulator
