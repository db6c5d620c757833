#include "simulator/screen_picture.h"

#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;

std::vector<std::pair<int, int>> darkPixels(const ScreenImage& shown) {
    std::vector<std::pair<int, int>> dark;
    for (int row = 0; row < kScreenHeight; ++row)
        for (int column = 0; column < kScreenWidth; ++column)
            if (isDark(shown, column, row))
                dark.emplace_back(column, row);
    return dark;
}

using Pixels = std::vector<std::pair<int, int>>;

// One dark pixel at column 9, row 3.
ModuleState oneDarkPixel() {
    ModuleState state;
    state.screen[3][1] = 0x40;
    return state;
}

TEST(ShownScreen, is_the_image_as_it_was_sent) {
    EXPECT_EQ(darkPixels(shownScreen(oneDarkPixel())), (Pixels{{9, 3}}));
}

TEST(ShownScreen, is_turned_when_upside_down) {
    auto state = oneDarkPixel();
    state.upsideDown = true;
    EXPECT_EQ(darkPixels(shownScreen(state)), (Pixels{{110, 60}}));
}

TEST(ShownScreen, has_dark_and_light_swapped_when_inverted) {
    auto state = oneDarkPixel();
    state.invertedDisplay = true;
    const auto shown = shownScreen(state);
    EXPECT_FALSE(isDark(shown, 9, 3));
    EXPECT_EQ(darkPixels(shown).size(), 120U * 64U - 1U);
}

TEST(ShownScreen, is_empty_while_the_lcd_is_off) {
    auto state = oneDarkPixel();
    state.invertedDisplay = true;
    state.framePattern = 255;
    state.lcdOn = false;
    EXPECT_TRUE(darkPixels(shownScreen(state)).empty());
}

TEST(ShownScreen, has_a_frame_of_one_pixel) {
    auto state = oneDarkPixel();
    state.framePattern = 255;
    const auto shown = shownScreen(state);
    EXPECT_EQ(darkPixels(shown).size(), 2U * 120U + 2U * 62U + 1U);
    EXPECT_TRUE(isDark(shown, 0, 0) && isDark(shown, 119, 0) && isDark(shown, 0, 63) && isDark(shown, 119, 63));
    EXPECT_TRUE(isDark(shown, 9, 3));
    EXPECT_FALSE(isDark(shown, 1, 1));
    EXPECT_EQ(state.screen, oneDarkPixel().screen);
}

TEST(ShownScreen, has_a_frame_in_its_pattern) {
    ModuleState state;
    state.framePattern = 0x80;  // every eighth pixel, from the corner at the top left
    const auto shown = shownScreen(state);
    EXPECT_EQ(darkPixels(shown).size(), 15U + 15U + 7U + 8U);
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

class Picture : public testing::Test {
protected:
    Picture() { fs::create_directory(folder_); }
    ~Picture() override { fs::remove_all(folder_); }

    using Colour = std::array<int, 3>;

    // Decoded by the PNG library; x and y in picture pixels.
    static Colour colourAt(const fs::path& file, unsigned x, unsigned y) {
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

    static int light(const Colour& colour) { return colour[0] + colour[1] + colour[2]; }

    fs::path folder_ = fs::temp_directory_path() / ("opane-picture-" + std::to_string(::getpid()));
    fs::path file_ = folder_ / "screen.png";
};

TEST_F(Picture, has_four_by_four_pixels_for_each_of_the_screen) {
    writePng(file_.string(), oneDarkPixel().screen, {});
    const Colour ink = colourAt(file_, 36, 12);
    EXPECT_EQ(colourAt(file_, 39, 15), ink);
    const Colour ground = colourAt(file_, 0, 0);
    EXPECT_EQ(colourAt(file_, 35, 12), ground);
    EXPECT_EQ(colourAt(file_, 40, 15), ground);
    EXPECT_EQ(colourAt(file_, 36, 16), ground);
    EXPECT_GT(light(ground), light(ink) + 200) << "readable without a backlight";
}

TEST_F(Picture, takes_the_colour_of_the_backlight) {
    const auto ground = [&](BacklightLevels backlight) {
        writePng(file_.string(), {}, backlight);
        return colourAt(file_, 0, 0);
    };
    const auto off = ground({});
    const auto red = ground({.red = 255});
    const auto green = ground({.green = 255});
    const auto dim = ground({.green = 128});
    EXPECT_GT(red[0], red[1] + 50);
    EXPECT_GT(green[1], green[0] + 50);
    EXPECT_LT(dim[1], green[1]);
    EXPECT_GT(dim[1], off[1]);
}

TEST_F(Picture, replaces_an_earlier_one_and_leaves_nothing_beside_it) {
    writePng(file_.string(), {}, {});
    writePng(file_.string(), oneDarkPixel().screen, {});
    EXPECT_NE(colourAt(file_, 36, 12), colourAt(file_, 0, 0));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
}

TEST_F(Picture, that_cannot_be_written_is_an_error_that_names_it) {
    fs::create_directory(file_);
    for (const fs::path& place : {file_, folder_ / "missing" / "screen.png"}) {
        try {
            writePng(place.string(), {}, {});
            ADD_FAILURE() << place;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(place.string()), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1) << "no part of a picture is left";
}

}  // namespace
}  // namespace opane::simulator
