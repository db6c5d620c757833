// What a public object displays: texts and bitmaps.

#include <gtest/gtest.h>

#include "automation/clsOPaneCommDLL.h"
#include "commands/bitmap_file.h"
#include "support/bench.h"
#include "support/glyph_bytes.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Lines = std::vector<std::string>;

/// A synchronised public object with a module in memory and a generator that has every code.
class Display : public testing::Test {
protected:
    Display() {
        object.Synchronize(1, 9600, 3, status);
        EXPECT_EQ(status, 0);
        threadGlobals()->gobjLog->LogLevel(2);
        threadGlobals()->gobjLog->writer(std::make_unique<RecordingWriter>(log));
    }

    std::int16_t show(const std::string& text, std::int16_t line, std::int16_t column, std::int16_t preGap = 0,
                      std::int16_t inverted = 0) {
        object.DisplayString(text, line, column, preGap, inverted, file, status);
        return status;
    }
    std::int16_t showPicture(const std::string& bytes) {
        object.DisplayBMP(folder.write("picture.bmp", bytes), status);
        return status;
    }

    /// A pixel column of a text line as a column byte, the top row first.
    int columnByte(int pixelColumn, int line) {
        int byte = 0;
        for (int row = 0; row < 8; ++row)
            byte = byte * 2 + (isDark(bench.module.state().screen, pixelColumn, 8 * line + row) ? 1 : 0);
        return byte;
    }

    std::size_t sent() { return bench.module.frames().size(); }

    TemporaryFolder folder;
    std::string file = folder.write("test.gen", fileText(generator()));
    Lines log;
    Bench bench;
    clsOPaneCommDLL object;
    std::int16_t status = -1;
};

TEST_F(Display, PutsEachGlyphColumnInItsPlace) {
    // Pixel columns 19 to 30 of line 2, so block columns 2 and 3.
    EXPECT_EQ(show("Aé", 2, 3, 1), 0);
    ASSERT_EQ(sent(), 2U);
    for (std::uint8_t block = 0; block < 2; ++block) {
        const auto& frame = bench.module.frames()[block];
        EXPECT_EQ((std::array{int{frame[5]}, int{frame[3]}, int{frame[4]}}), (std::array{3, 2, 2 + block}));
    }
    for (std::size_t column = 0; column < 6; ++column) {
        EXPECT_EQ(columnByte(19 + static_cast<int>(column), 2), glyphOf('A')[column]);
        EXPECT_EQ(columnByte(25 + static_cast<int>(column), 2), glyphOf(0xE9)[column]) << "é is code 233";
    }
    EXPECT_EQ(columnByte(18, 2) + columnByte(31, 2), 0);
}

TEST_F(Display, KeepsWhatStandsBesideItInItsFirstAndLastBlock) {
    ASSERT_EQ(show("AB", 0, 0), 0);       // pixel columns 0 to 11
    ASSERT_EQ(show("C", 0, 3, 2, 1), 0);  // 20 to 25, so blocks 2 and 3
    ASSERT_EQ(show("D", 0, 2, 1), 0);     // 13 to 18: the end of block 1 and the start of block 2
    EXPECT_EQ(columnByte(11, 0), glyphOf('B')[5]);
    EXPECT_EQ(columnByte(12, 0), 0);
    EXPECT_EQ(columnByte(13, 0), glyphOf('D')[0]);
    EXPECT_EQ(columnByte(18, 0), glyphOf('D')[5]);
    EXPECT_EQ(columnByte(19, 0), 0) << "kept pixels are not complemented";
    EXPECT_EQ(columnByte(20, 0), 255 - glyphOf('C')[0]) << "the second text, inverted";
    ASSERT_EQ(show("E", 0, 0, 2), 0);  // 2 to 7: both sides of one block
    EXPECT_EQ(columnByte(1, 0), glyphOf('A')[1]);
    EXPECT_EQ(columnByte(2, 0), glyphOf('E')[0]);
    EXPECT_EQ(columnByte(8, 0), glyphOf('B')[2]);
}

TEST_F(Display, ChecksTheArgumentsOfAText) {
    std::istringstream rows(  // characters, line, column, gap, inverted; raised error, status and blocks sent
        "whole_line 20 0 0 0 0  0 0 15  a_character_more 21 0 0 0 0  0 1 0  last_cell 1 7 19 0 0  0 0 1  "
        "a_pixel_beyond 1 7 19 1 0  0 1 0  gap_back_to_the_edge 1 0 1 -6 0  0 0 1  empty_on_no_line 0 9 -9 0 0  0 1 0  "
        "inverted_2 1 0 0 0 2  0 1 0  inverted_minus_1 1 0 0 0 -1  0 1 0  line_8 1 8 0 0 0  9 0 0  "
        "line_minus_1 1 -1 0 0 0  9 0 0  left_of_the_screen 1 0 0 -1 0  9 0 0  left_by_a_block 1 0 -2 0 0  9 0 0  "
        "too_long_from_far_left 4000 0 -4000 0 0  9 0 0  column_beyond_16_bits 1 0 5462 0 0  6 0 0  "
        "gap_beyond_16_bits 1 0 5461 2 0  6 0 0  text_beyond_16_bits 5462 0 0 0 0  6 0 0  "
        "line_beyond_16_bits 1 4096 0 0 0  6 0 0");
    std::string name;
    std::size_t characters = 0, blocks = 0;
    std::int16_t line = 0, column = 0, gap = 0, inverted = 0, statusAfter = 0;
    int error = 0;
    while (rows >> name >> characters >> line >> column >> gap >> inverted >> error >> statusAfter >> blocks) {
        SCOPED_TRACE(name);
        const auto before = sent();
        status = -1;
        EXPECT_EQ(raisedNumber([&] { show(std::string(characters, 'A'), line, column, gap, inverted); }), error);
        EXPECT_EQ(status, statusAfter);
        EXPECT_EQ(sent(), before + blocks);
    }
    EXPECT_EQ(name, "line_beyond_16_bits");
}

TEST_F(Display, TheGeneratorIsReadBeforeThePosition) {
    const auto showWith = [this](const std::string& text, std::int16_t inverted, const std::string& path) {
        return raisedNumber([&] { object.DisplayString(text, 0, 0, 0, inverted, path, status); });
    };
    EXPECT_EQ(showWith("", 0, folder / "none.gen"), 53);
    EXPECT_EQ(showWith("A", 0, folder / "no/none.gen"), 76);
    EXPECT_EQ(showWith("A", 0, folder.path()), 75);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(showWith("A", 2, folder / "none.gen"), 0) << "refused before it is looked for";
    EXPECT_EQ(status, 1);
}

TEST_F(Display, AnAbsentOrBadGlyphSendsNothing) {
    folder.write("test.gen", fileText(generatorWithElement0('C', {2, 0, 67, 0})));
    EXPECT_EQ(show("ABC", 0, 0), 1);
    folder.write("test.gen", fileText(generatorWithColumn('C', 5, {2, 0, 0, 1})));
    EXPECT_EQ(raisedNumber([&] { show("ABC", 0, 0); }), 6);
    for (const std::string text : {"Aж", "A\xFF"})
        EXPECT_EQ(show(text, 0, 0), 1);
    EXPECT_EQ(show("AB", 0, 0), 0) << "only what is shown is converted";
    EXPECT_EQ(sent(), 2U);
}

TEST_F(Display, AFailedBlockGivesStatus1AndTheOthersAreSentAndRecorded) {
    // The second of three blocks is refused all five times.
    bench.module.fault({.fault = Fault::aux, .count = 5, .after = 1});
    EXPECT_EQ(show("ABCD", 0, 0), 1);
    EXPECT_EQ(sent(), 1U + 5U + 1U);
    EXPECT_EQ(columnByte(8, 0), 0);
    EXPECT_EQ(columnByte(16, 0), glyphOf('C')[4]);
    EXPECT_EQ(show("Z", 0, 1, 4), 0);  // 10 to 15
    EXPECT_EQ(columnByte(8, 0), glyphOf('B')[2]) << "a text that shares the block sends its pixels";
}

/// The bytes of a one-bit bitmap whose stored rows are all 0, so dark, with its pixels at offset 62.
std::string bitmap(int width, int height) {
    std::string bytes(62 + 16 * 64, '\0');
    bytes.replace(0, 2, "BM");
    bytes[10] = 62;
    bytes[18] = static_cast<char>(width);
    bytes[22] = static_cast<char>(height);
    return bytes;
}

BitmapFile parsed(const std::string& bytes) {
    return BitmapFile::parse(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), "test");
}

TEST(BitmapSize, GivesRowBytesByRoundingHalfToEven) {
    constexpr struct {
        int width, height, rowBytes;  // -1: it does not fit
    } kRows[]{{120, 64, 15}, {120, 65, -1}, {124, 64, 15}, {125, 64, -1}, {128, 64, -1}, {116, 64, 15},
              {12, 64, 1},   {4, 64, 1},    {3, 64, 0},    {0, 64, 0},    {120, 0, 15}};
    for (const auto& row : kRows) {
        int rowBytes = -1;
        const int raised = raisedNumber([&] { rowBytes = parsed(bitmap(row.width, row.height)).rowBytes; });
        EXPECT_EQ(raised, row.rowBytes < 0 ? 9 : 0) << row.width << " x " << row.height;
        EXPECT_EQ(rowBytes, row.rowBytes) << row.width << " x " << row.height;
    }
}

TEST(BitmapPixels, AreTurnedOverComplementedAndPadded) {
    std::string bytes = bitmap(120, 2);
    bytes[62] = '\x7F';            // bottom row: all but the first pixel light
    bytes[62 + 15] = '\x33';       // its padding
    bytes[62 + 16 + 14] = '\xFE';  // top row: all but the last pixel light
    const BitmapFile file = parsed(bytes);
    EXPECT_EQ(file.image[1][0], 0x80);
    EXPECT_EQ(file.image[0][14], 0x01);
    EXPECT_EQ(file.image[0][0], 0xFF);
    EXPECT_EQ(file.image[2][0], 0) << "below the picture";
    EXPECT_EQ(parsed(bitmap(120, 64).substr(0, 62)).image[0][0], 0xFF) << "what a file lacks is dark";
    EXPECT_EQ(parsed("BM").height, 0);
}

TEST_F(Display, SendsTheEightLinesOfAPictureInOrder) {
    EXPECT_EQ(showPicture(bitmap(120, 64)), 0);
    ASSERT_EQ(sent(), 8U);
    Lines lines{"Name : " + folder / "picture.bmp"};
    for (std::uint8_t line = 0; line < 8; ++line) {
        const auto& frame = bench.module.frames()[line];
        EXPECT_EQ(ByteArray(frame.begin() + 1, frame.begin() + 6), (ByteArray{120, 3, line, 0, 1}));
        lines.push_back("Affiche Line : " + std::to_string(line));
    }
    EXPECT_EQ(log, lines);
    EXPECT_EQ(bench.module.state().screen[63][14], 0xFF);

    EXPECT_EQ(showPicture(bitmap(120, 32)), 0);
    EXPECT_EQ(columnByte(0, 3), 0xFF);
    EXPECT_EQ(columnByte(0, 4), 0) << "a low picture blanks the rest of the screen";
    EXPECT_EQ(show("A", 4, 0), 0);
    EXPECT_EQ(columnByte(6, 4), 0xFF) << "but not of the image";
}

TEST_F(Display, StopsAtTheFirstLineOfAPictureThatFails) {
    bench.module.fault({.fault = Fault::aux, .count = simulator::kForEver, .after = 3});
    EXPECT_EQ(showPicture(bitmap(120, 64)), 1);
    EXPECT_EQ(sent(), 3U + 5U);
    EXPECT_EQ(log.back(), "Affiche Line : 3");
}

TEST_F(Display, AMissingOrTooLargePictureIsAnErrorAndSendsNothing) {
    status = 7;
    EXPECT_EQ(raisedNumber([&] { object.DisplayBMP(folder / "none.bmp", status); }), 53);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(raisedNumber([&] { showPicture(bitmap(120, 65)); }), 9);
    EXPECT_EQ(sent(), 0U);
    EXPECT_EQ(log, (Lines{"Name : " + folder / "none.bmp", "Name : " + folder / "picture.bmp"}));
}

TEST(FileDialogsOfTheLink, AskWithTheirTextsAndFolder) {
    LinkBench bench;
    Lines asked;
    std::optional<std::string> answer = "/tmp/chosen";
    bench.services->fileDialog = [&](const FileDialogRequest& request) {
        asked.push_back(request.title + "|" + request.folder.substr(request.folder.rfind('/')) + "|" + request.filter +
                        (request.kind == FileDialogRequest::Kind::save ? "|save" : "") +
                        (request.overwritePrompt ? "|ask" : ""));
        return answer;
    };
    std::string name;
    EXPECT_TRUE(bench.link().SaveBINFile(name));
    EXPECT_TRUE(bench.link().OpenBINFile(name));
    EXPECT_TRUE(bench.link().OpenBMPFile(name));
    EXPECT_EQ(name, "/tmp/chosen");
    EXPECT_EQ(asked, (Lines{"Sauver fichier BIN pour EEPROM|/bin|Fichiers BIN (*.bin)|*.bin|save|ask",
                            "Ouvrir fichier BIN pour EEPROM|/bin|Fichiers BIN (*.bin)|*.bin",
                            "Ouvrir fichier BPM pour OPane|/bmp|Fichiers BMP (*.bmp)|*.bmp"}));
    answer = std::nullopt;
    EXPECT_FALSE(bench.link().OpenBMPFile(name));
    EXPECT_EQ(name, "");
}

}  // namespace
}  // namespace opane::test
