#include <gtest/gtest.h>

#include "automation/clsOPaneCommDLL.h"
#include "commands/bitmap_file.h"
#include "support/bench.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;

/// The bytes of a one-bit bitmap whose stored rows are all 0, so dark, with its pixels at offset 62.
std::string bitmap(int width, int height, std::size_t rowBytes = 16, std::size_t storedRows = 64) {
    std::string bytes(62 + rowBytes * storedRows, '\0');
    bytes.replace(0, 2, "BM");
    bytes[10] = 62;
    bytes[18] = static_cast<char>(width);
    bytes[22] = static_cast<char>(height);
    return bytes;
}

BitmapFile parsed(const std::string& bytes) {
    return BitmapFile::parse(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), "test");
}

struct SizeCase {
    const char* name;
    int width, height;
    int rowBytes;  // -1: it does not fit
};

class BitmapSize : public testing::TestWithParam<SizeCase> {};

TEST_P(BitmapSize, GivesTheseRowBytes) {
    const SizeCase& row = GetParam();
    int rowBytes = -1;
    EXPECT_EQ(raisedNumber([&] { rowBytes = parsed(bitmap(row.width, row.height)).rowBytes; }),
              row.rowBytes < 0 ? 9 : 0);
    EXPECT_EQ(rowBytes, row.rowBytes);
}

INSTANTIATE_TEST_SUITE_P(Widths, BitmapSize,
                         testing::Values(SizeCase{"whole_screen", 120, 64, 15}, SizeCase{"row_65", 120, 65, -1},
                                         SizeCase{"width_124_half_to_even", 124, 64, 15},
                                         SizeCase{"width_125", 125, 64, -1}, SizeCase{"width_128", 128, 64, -1},
                                         SizeCase{"width_116_half_to_even", 116, 64, 15},
                                         SizeCase{"width_12_half_to_even", 12, 64, 1},
                                         SizeCase{"width_4_half_to_even", 4, 64, 1}, SizeCase{"width_3", 3, 64, 0},
                                         SizeCase{"width_0", 0, 64, 0}, SizeCase{"height_0", 120, 0, 15}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(BitmapPixels, AreTurnedOverComplementedAndPadded) {
    std::string bytes = bitmap(120, 2, 16, 2);
    bytes[62] = '\x7F';            // bottom row: all but the first pixel light
    bytes[62 + 15] = '\x33';       // its padding
    bytes[62 + 16 + 14] = '\xFE';  // top row: all but the last pixel light
    const BitmapFile file = parsed(bytes);
    EXPECT_EQ(file.image[1][0], 0x80);
    EXPECT_EQ(file.image[0][14], 0x01);
    EXPECT_EQ(file.image[0][0], 0xFF);
    EXPECT_EQ(file.image[2][0], 0) << "below the picture";
}

TEST(BitmapPixels, WhatAFileLacksIsDark) {
    const BitmapFile file = parsed(bitmap(120, 64).replace(62, 1024, std::string(16, '\xFF')));
    EXPECT_EQ(file.image[63][0], 0x00);
    EXPECT_EQ(file.image[62][0], 0xFF);
    EXPECT_EQ(parsed("BM").height, 0);
}

class DisplayBMP : public testing::Test {
protected:
    DisplayBMP() {
        std::int16_t status = 1;
        object.Synchronize(1, 9600, 3, status);
        threadLog()->LogLevel(2);
        threadLog()->writer(std::make_unique<RecordingWriter>(log));
    }

    std::int16_t show(const std::string& bytes) {
        std::int16_t status = -1;
        object.DisplayBMP(folder.write("picture.bmp", bytes), status);
        return status;
    }

    TemporaryFolder folder;
    std::vector<std::string> log;
    Bench bench;
    clsOPaneCommDLL object;
};

TEST_F(DisplayBMP, SendsEightLinesInOrder) {
    EXPECT_EQ(show(bitmap(120, 64)), 0);
    ASSERT_EQ(bench.module.frames().size(), 8U);
    std::vector<std::string> lines{"Name : " + folder / "picture.bmp"};
    for (std::uint8_t line = 0; line < 8; ++line) {
        const auto& frame = bench.module.frames()[line];
        EXPECT_EQ(ByteArray(frame.begin() + 1, frame.begin() + 6), (ByteArray{120, 3, line, 0, 1}));
        lines.push_back("Affiche Line : " + std::to_string(line));
    }
    EXPECT_EQ(log, lines);
    EXPECT_EQ(bench.module.state().screen[63][14], 0xFF);
}

TEST_F(DisplayBMP, ALowPictureBlanksTheRestOfTheScreenButNotOfTheImage) {
    EXPECT_EQ(show(bitmap(120, 64)), 0);
    EXPECT_EQ(show(bitmap(120, 32)), 0);
    EXPECT_EQ(bench.module.state().screen[31][0], 0xFF);
    EXPECT_EQ(bench.module.state().screen[32][0], 0);
}

TEST_F(DisplayBMP, StopsAtTheFirstLineThatFails) {
    bench.module.fault({.fault = Fault::aux, .count = simulator::kForEver, .after = 3});
    EXPECT_EQ(show(bitmap(120, 64)), 1);
    EXPECT_EQ(bench.module.frames().size(), 3U + 5U);
    EXPECT_EQ(log.back(), "Affiche Line : 3");
}

TEST_F(DisplayBMP, AMissingOrTooLargePictureIsAnErrorAndSendsNothing) {
    std::int16_t status = -1;
    EXPECT_EQ(raisedNumber([&] { object.DisplayBMP(folder / "none.bmp", status); }), 53);
    EXPECT_EQ(status, -1);
    EXPECT_EQ(raisedNumber([&] { show(bitmap(120, 65)); }), 9);
    EXPECT_TRUE(bench.module.frames().empty());
    EXPECT_EQ(log, (std::vector<std::string>{"Name : " + folder / "none.bmp", "Name : " + folder / "picture.bmp"}));
}

}  // namespace
}  // namespace opane::test
