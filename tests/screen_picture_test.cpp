#include "simulator/screen_picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include "support/temporary_folder.h"

namespace opane::simulator {
namespace {

int darkPixels(const ModuleState& state) {
    const ScreenImage shown = shownScreen(state);
    int dark = 0;
    for (int pixel = 0; pixel < kScreenHeight * kScreenWidth; ++pixel)
        dark += isDark(shown, pixel % kScreenWidth, pixel / kScreenWidth) ? 1 : 0;
    return dark;
}

ModuleState oneDarkPixel() {
    ModuleState state;
    state.screen[3][1] = 0x40;  // column 9, row 3
    return state;
}

TEST(ShownScreen, FollowsTheStatus) {
    auto state = oneDarkPixel();
    EXPECT_EQ(darkPixels(state), 1);
    EXPECT_TRUE(isDark(shownScreen(state), 9, 3));
    state.upsideDown = true;
    state.invertedDisplay = true;
    EXPECT_EQ(darkPixels(state), 120 * 64 - 1);
    EXPECT_FALSE(isDark(shownScreen(state), 110, 60));
    state.framePattern = 255;  // inverted too: only what is within stays dark
    EXPECT_EQ(darkPixels(state), 118 * 62 - 1);
    state.lcdOn = false;
    EXPECT_EQ(darkPixels(state), 0);
}

TEST(ShownScreen, HasAFrameOfOnePixelInItsPattern) {
    auto state = oneDarkPixel();
    state.framePattern = 0x80;  // every eighth pixel, from the corner at the top left
    EXPECT_EQ(darkPixels(state), 15 + 15 + 7 + 8 + 1);
    const auto shown = shownScreen(state);
    EXPECT_TRUE(isDark(shown, 8, 0) && isDark(shown, 0, 8) && isDark(shown, 119, 8) && isDark(shown, 112, 63));
    EXPECT_FALSE(isDark(shown, 0, 1) || isDark(shown, 1, 0));
}

TEST(HalfBlocks, ShowTwoPixelRowsInALine) {
    ScreenImage image{};
    image[0][0] = 0b1010'0000;
    image[1][0] = 0b0110'0000;
    const std::string text = halfBlocks(image);
    EXPECT_EQ(text.substr(0, 10), "▀▄█ ");
    EXPECT_EQ(text.size(), 32U * 121U + 3U * 2U);  // a half block takes 3 bytes
}

TEST(Picture, HasFourByFourPixelsForEachOfTheScreen) {
    const test::TemporaryFolder folder;
    const BacklightLevels red{.red = 255};
    writePng(folder / "screen.png", oneDarkPixel().screen, red);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_file(&image, (folder / "screen.png").c_str()), 0) << image.message;
    image.format = PNG_FORMAT_RGB;
    ASSERT_EQ(std::pair(image.width, image.height), std::pair(480U, 256U));
    std::vector<Colour> pixels(480U * 256U);
    ASSERT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const Colour expected = i % 480 / 4 == 9 && i / 480 / 4 == 3 ? kInk : background(red);
        ASSERT_EQ(std::tie(pixels[i].red, pixels[i].green, pixels[i].blue),
                  std::tie(expected.red, expected.green, expected.blue));
    }
}

TEST(Picture, TakesTheColourOfTheBacklightAndIsReadableWithoutOne) {
    const Colour red = background({.red = 255});
    const Colour green = background({.green = 255});
    const Colour unlit = background({});
    EXPECT_GT(red.red, red.green + 50);
    EXPECT_GT(green.green, green.red + 50);
    EXPECT_GT(unlit.red + unlit.green + unlit.blue, kInk.red + kInk.green + kInk.blue + 200);
}

}  // namespace
}  // namespace opane::simulator
