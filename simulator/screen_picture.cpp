#include "simulator/screen_picture.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/whole_file.h"

namespace opane::simulator {
namespace {

void addFrame(ScreenImage& image, std::uint8_t pattern) {
    for (auto* row : {&image.front(), &image.back()})
        for (std::uint8_t& rowByte : *row)
            rowByte |= pattern;
    for (std::size_t row = 0; row < image.size(); ++row) {
        const bool dark = ((pattern >> (7 - row % 8)) & 1) != 0;
        image[row].front() |= dark ? 0x80 : 0;
        image[row].back() |= dark ? 0x01 : 0;
    }
}

std::uint8_t mirrored(std::uint8_t rowByte) {
    std::uint8_t turned = 0;
    for (int bit = 0; bit < 8; ++bit)
        turned = static_cast<std::uint8_t>(turned << 1 | (rowByte >> bit & 1));
    return turned;
}

void turn(ScreenImage& image) {
    std::ranges::reverse(image);
    for (auto& row : image) {
        std::ranges::reverse(row);
        std::ranges::transform(row, row.begin(), mirrored);
    }
}

std::vector<std::uint8_t> colourIndices(const ScreenImage& shown) {
    std::vector<std::uint8_t> indices;
    indices.reserve(std::size_t{kScreenWidth} * kScreenHeight * kPictureScale * kPictureScale);
    for (int y = 0; y < kScreenHeight * kPictureScale; ++y)
        for (int x = 0; x < kScreenWidth * kPictureScale; ++x)
            indices.push_back(isDark(shown, x / kPictureScale, y / kPictureScale) ? 1 : 0);
    return indices;
}

}  // namespace

ScreenImage shownScreen(const ModuleState& state) {
    if (!state.lcdOn)
        return {};
    ScreenImage shown = state.screen;
    addFrame(shown, state.framePattern);
    if (state.invertedDisplay)
        for (auto& row : shown)
            for (std::uint8_t& rowByte : row)
                rowByte = static_cast<std::uint8_t>(~rowByte);
    if (state.upsideDown)
        turn(shown);
    return shown;
}

std::string halfBlocks(const ScreenImage& shown) {
    constexpr std::array<std::string_view, 4> kBlocks{" ", "▀", "▄", "█"};
    std::string text;
    for (int row = 0; row < kScreenHeight; row += 2) {
        for (int column = 0; column < kScreenWidth; ++column) {
            const int upper = isDark(shown, column, row) ? 1 : 0;
            const int lower = isDark(shown, column, row + 1) ? 2 : 0;
            text += kBlocks.at(static_cast<std::size_t>(upper + lower));
        }
        text += '\n';
    }
    return text;
}

BacklightLevels backlightLevels(const ModuleState& state) {
    constexpr std::size_t kPhysicalRegister = 0;
    return {state.red[kPhysicalRegister], state.green[kPhysicalRegister]};
}

Colour background(BacklightLevels backlight) {
    const auto blend = [](int unlit, int lit, int level) {
        return static_cast<std::uint8_t>(unlit + (lit - unlit) * level / 255);
    };
    return {blend(140, 255, backlight.red), blend(148, 240, backlight.green),
            blend(136, 40, std::max(backlight.red, backlight.green))};
}

void writePng(const std::string& path, const ScreenImage& shown, BacklightLevels backlight) {
    const auto indices = colourIndices(shown);
    const std::array colours{background(backlight), kInk};

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = kScreenWidth * kPictureScale;
    image.height = kScreenHeight * kPictureScale;
    image.format = PNG_FORMAT_RGB_COLORMAP;
    image.colormap_entries = colours.size();

    std::vector<std::uint8_t> content(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t length = content.size();
    if (png_image_write_to_memory(&image, content.data(), &length, 0, indices.data(), 0, colours.data()) == 0)
        throw std::runtime_error(std::string("the picture cannot be made: ") + image.message);
    content.resize(length);
    writeWholeFile(path, content);
}

}  // namespace opane::simulator
