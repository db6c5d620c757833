#include "simulator/screen_picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace opane::simulator {
namespace {

using Pixels = std::vector<std::pair<int, int>>;

Pixels darkPixels(const ScreenImage& shown) {
    Pixels dark;
    for (int row = 0; row < kScreenHeight; ++row)
        for (int column = 0; column < kScreenWidth; ++column)
            if (isDark(shown, column, row))
                dark.emplace_back(column, row);
    return dark;
}

// One dark pixel at column 9, row 3.
ModuleState oneDarkPixel() {
    ModuleState state;
    state.screen[3][1] = 0x40;
    return state;
}

TEST(ShownScreen, follows_the_status) {
    auto state = oneDarkPixel();
    EXPECT_EQ(darkPixels(shownScreen(state)), (Pixels{{9, 3}}));
    state.upsideDown = true;
    EXPECT_EQ(darkPixels(shownScreen(state)), (Pixels{{110, 60}}));
    state.invertedDisplay = true;
    EXPECT_EQ(darkPixels(shownScreen(state)).size(), 120U * 64U - 1U);
    EXPECT_FALSE(isDark(shownScreen(state), 110, 60));
    state.lcdOn = false;
    EXPECT_TRUE(darkPixels(shownScreen(state)).empty());
}

TEST(ShownScreen, has_a_frame_of_one_pixel_in_its_pattern) {
    auto state = oneDarkPixel();
    state.framePattern = 255;
    EXPECT_EQ(darkPixels(shownScreen(state)).size(), 2U * 120U + 2U * 62U + 1U);
    EXPECT_FALSE(isDark(shownScreen(state), 1, 1));
    state.framePattern = 0x80;  // every eighth pixel, from the corner at the top left
    const auto shown = shownScreen(state);
    EXPECT_EQ(darkPixels(shown).size(), 15U + 15U + 7U + 8U + 1U);
    EXPECT_TRUE(isDark(shown, 8, 0) && isDark(shown, 0, 8) && isDark(shown, 119, 8) && isDark(shown, 112, 63));
    EXPECT_FALSE(isDark(shown, 0, 1) || isDark(shown, 1, 0));
}

TEST(HalfBlocks, show_two_pixel_rows_in_a_line) {
    ScreenImage image{};
    image[0][0] = 0b1010'0000;
    image[1][0] = 0b0110'0000;
    image[63][14] = 0x01;
    const std::string text = halfBlocks(image);
    EXPECT_EQ(text.substr(0, 10), "▀▄█ ");
    EXPECT_EQ(text.substr(text.size() - 5), " ▄\n");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 32);
    EXPECT_EQ(text.size(), 32U * 121U + 4U * 2U);  // a half block takes 3 bytes
}

using Colour = std::array<int, 3>;

// Decoded by the PNG library; x and y in picture pixels.
Colour colourAt(const std::string& file, unsigned x, unsigned y) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_file(&image, file.c_str()), 0) << image.message;
    image.format = PNG_FORMAT_RGB;
    EXPECT_EQ(image.width, 480U);
    EXPECT_EQ(image.height, 256U);
    std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;
    const std::size_t at = (y * 480U + x) * 3U;
    return {pixels.at(at), pixels.at(at + 1), pixels.at(at + 2)};
}

int entriesIn(const std::string& folder) {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(Picture, has_four_by_four_pixels_for_each_of_the_screen) {
    const test::TemporaryFolder folder;
    const std::string file = folder / "screen.png";
    writePng(file, {}, {});
    writePng(file, oneDarkPixel().screen, {});
    const Colour ink = colourAt(file, 36, 12);
    EXPECT_EQ(colourAt(file, 39, 15), ink);
    const Colour ground = colourAt(file, 0, 0);
    EXPECT_EQ(colourAt(file, 35, 12), ground);
    EXPECT_EQ(colourAt(file, 40, 15), ground);
    EXPECT_EQ(colourAt(file, 36, 16), ground);
    EXPECT_GT(ground[0] + ground[1] + ground[2], ink[0] + ink[1] + ink[2] + 200) << "readable without a backlight";
    EXPECT_EQ(entriesIn(folder.path()), 1) << "nothing is left beside it";
}

TEST(Picture, takes_the_colour_of_the_backlight) {
    const test::TemporaryFolder folder;
    const auto ground = [&](BacklightLevels backlight) {
        writePng(folder / "screen.png", {}, backlight);
        return colourAt(folder / "screen.png", 0, 0);
    };
    const auto red = ground({.red = 255});
    const auto green = ground({.green = 255});
    const auto dim = ground({.green = 128});
    EXPECT_GT(red[0], red[1] + 50);
    EXPECT_GT(green[1], green[0] + 50);
    EXPECT_LT(dim[1], green[1]);
    EXPECT_GT(dim[1], ground({})[1]);
}

TEST(Picture, that_cannot_be_written_is_an_error_that_names_it) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder.png");
    for (const std::string& place : {folder / "folder.png", folder / "missing/screen.png"}) {
        try {
            writePng(place, {}, {});
            ADD_FAILURE() << place;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("\"" + place + "\" cannot be written: "), std::string::npos)
                << error.what();
        }
    }
    EXPECT_EQ(entriesIn(folder.path()), 1) << "no part of a picture is left";
}

}  // namespace
}  // namespace opane::simulator
