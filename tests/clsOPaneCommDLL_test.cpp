#include "automation/clsOPaneCommDLL.h"

#include <gtest/gtest.h>

#include "commands/bitmap_file.h"
#include "support/bench.h"
#include "support/glyph_bytes.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Lines = std::vector<std::string>;

/// A synchronised public object with a module in memory and a generator that has every code.
class PublicClass : public testing::Test {
protected:
    PublicClass() {
        EXPECT_EQ(synchronize(), 0);
        threadLog()->LogLevel(2);
        threadLog()->writer(std::make_unique<RecordingWriter>(log));
    }

    std::int16_t synchronize(std::int16_t port = 1, std::int32_t rate = 9600, std::int16_t node = 3) {
        object->Synchronize(port, rate, node, status);
        return status;
    }
    std::int16_t show(const std::string& text, std::int16_t line, std::int16_t column, std::int16_t preGap = 0,
                      std::int16_t inverted = 0) {
        object->DisplayString(text, line, column, preGap, inverted, file, status);
        return status;
    }
    std::int16_t showPicture(const std::string& bytes) {
        object->DisplayBMP(folder.write("picture.bmp", bytes), status);
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
    std::int16_t status = -1;
    Lines log;
    Bench bench;
    std::unique_ptr<clsOPaneCommDLL> object = std::make_unique<clsOPaneCommDLL>();
};

TEST_F(PublicClass, SynchronizeReopensAtItsRateAndWritesThePortOnlyWhenItDiffers) {
    bench.module.state().baudRate = 19200;
    EXPECT_EQ(synchronize(1, 19200), 0);
    EXPECT_EQ(synchronize(2, 19200), 0);
    EXPECT_EQ(bench.line.portEvents,  // made, then each Synchronize: its rate before its port
              (Lines{"open 1 9600,N,8,1", "close", "open 1 9600,N,8,1", "close", "open 1 19200,N,8,1", "close",
                     "open 1 19200,N,8,1", "close", "open 2 19200,N,8,1"}));
    EXPECT_EQ(threadLink()->Timeout(), 1000);
}

TEST_F(PublicClass, SynchronizeSaysWhatIsWrongAndTheNextOneWorks) {
    EXPECT_EQ(synchronize(1, 9600, 1), 1);
    EXPECT_EQ(synchronize(1, 4800), 1) << "at another speed both hear noise";
    EXPECT_EQ(raisedNumber([&] { synchronize(1, 0); }), 380);
    for (const std::int16_t port : {std::int16_t{1}, std::int16_t{-1}}) {
        bench.line.missingPort = port;
        EXPECT_EQ(raisedNumber([&] { synchronize(port); }), 8018);
        bench.line.missingPort = 0;
        EXPECT_EQ(synchronize(), 0);
    }
}

TEST_F(PublicClass, StatusIsFiveFlags) {
    using Flags = std::array<std::int16_t, 6>;  // the last one is the status
    const auto read = [this] {
        Flags f{7, 7, 7, 7, 7, 7};
        object->ReadStatus(f[0], f[1], f[2], f[3], f[4], f[5]);
        return f;
    };
    const auto write = [this](const Flags& f) {
        object->WriteStatus(f[0], f[1], f[2], f[3], f[4], status);
        return status;
    };
    auto& state = bench.module.state();
    state.upsideDown = true;
    state.framePattern = 255;
    state.lcdOn = false;
    EXPECT_EQ(read(), (Flags{1, 0, 1, 0, 1, 0}));

    const auto before = sent();
    for (std::size_t wrong = 0; wrong < 5; ++wrong)
        for (const int value : {2, -1}) {
            Flags flags{};
            flags[wrong] = static_cast<std::int16_t>(value);
            EXPECT_EQ(write(flags), 1);
        }
    ASSERT_EQ(sent(), before);
    EXPECT_EQ(write({1, 0, 1, 1, 0}), 0);
    EXPECT_EQ(bench.module.frames()[before][5], 5) << "the frame first";
    EXPECT_EQ(bench.module.frames()[before][3], 255);
    EXPECT_EQ(state.statusByte(), 0b101101) << "automatic Vlcd is always on";

    bench.module.fault({.fault = Fault::aux, .count = 10});
    EXPECT_EQ(read(), (Flags{0, 0, 0, 0, 0, 1}));
    const auto then = sent();
    EXPECT_EQ(write({}), 1);
    EXPECT_EQ(sent(), then + 5) << "no status is written after a refused frame";
}

TEST_F(PublicClass, ChangeBaudrateUsesCrystalType2) {
    object->ChangeBaudrate(38400, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(bench.module.state().baudRate, 38400);
    object->ChangeBaudrate(57600, status);
    EXPECT_EQ(status, 1);
}

TEST_F(PublicClass, EveryKeyHasTwoCodes) {
    using Key = std::array<std::int16_t, 3>;  // number, toggle, status
    const auto read = [this](int code) {
        bench.module.state().lastKey = static_cast<std::uint16_t>(code);
        Key key{42, 43, 7};
        object->ReadIRLastKey(key[0], key[1], key[2]);
        return key;
    };
    for (std::int16_t number = 0; const int code : {0x7F3, 0x7C3, 0x7D4, 0x7D6, 0x7DF, 0x7EF, 0x7DE, 0x7EE, 0x7F2}) {
        ++number;
        EXPECT_EQ(read(code), (Key{number, 0, 0}));
        EXPECT_EQ(read(code + 0x800), (Key{number, 1, 0}));
    }
    EXPECT_EQ(read(0xFFFF), (Key{0, 0, 0}));
    for (const int none : {0x123, 0x17F3, 0xF7F3, 0})
        EXPECT_EQ(read(none), (Key{42, 43, 0})) << "what was passed stays";
    bench.module.fault({.fault = Fault::aux, .count = 5});
    EXPECT_EQ(read(0x7F3), (Key{-1, 0, 1}));
}

TEST_F(PublicClass, PutsEachGlyphColumnInItsPlace) {
    // Pixel columns 19 to 30 of line 2, so block columns 2 and 3.
    EXPECT_EQ(show("Aé", 2, 3, 1), 0);
    EXPECT_EQ(sent(), 2U);
    for (std::size_t column = 0; column < 6; ++column) {
        EXPECT_EQ(columnByte(19 + static_cast<int>(column), 2), glyphOf('A')[column]);
        EXPECT_EQ(columnByte(25 + static_cast<int>(column), 2), glyphOf(0xE9)[column]) << "é is code 233";
    }
    EXPECT_EQ(columnByte(18, 2) + columnByte(31, 2), 0);
}

TEST_F(PublicClass, KeepsWhatStandsBesideItInItsFirstAndLastBlock) {
    ASSERT_EQ(show("AB", 0, 0), 0);       // pixel columns 0 to 11
    ASSERT_EQ(show("C", 0, 3, 2, 1), 0);  // 20 to 25, so blocks 2 and 3
    ASSERT_EQ(show("D", 0, 2, 1), 0);     // 13 to 18: the end of block 1 and the start of block 2
    EXPECT_EQ(columnByte(11, 0), glyphOf('B')[5]);
    EXPECT_EQ(columnByte(13, 0), glyphOf('D')[0]);
    EXPECT_EQ(columnByte(18, 0), glyphOf('D')[5]);
    EXPECT_EQ(columnByte(19, 0), 0) << "kept pixels are not complemented";
    EXPECT_EQ(columnByte(20, 0), 255 - glyphOf('C')[0]) << "the second text, inverted";
    ASSERT_EQ(show("E", 0, 0, 2), 0);  // 2 to 7: both sides of one block
    EXPECT_EQ(columnByte(1, 0), glyphOf('A')[1]);
    EXPECT_EQ(columnByte(2, 0), glyphOf('E')[0]);
    EXPECT_EQ(columnByte(8, 0), glyphOf('B')[2]);
}

TEST_F(PublicClass, ChecksTheArgumentsOfAText) {
    constexpr struct {
        std::size_t characters;
        std::int16_t line, column, gap, inverted;
        int error;
        std::int16_t statusAfter;
        std::size_t blocks;
    } kRows[]{{20, 0, 0, 0, 0, 0, 0, 15},      {21, 0, 0, 0, 0, 0, 1, 0},   {1, 7, 19, 0, 0, 0, 0, 1},
              {1, 7, 19, 1, 0, 0, 1, 0},       {1, 0, 1, -6, 0, 0, 0, 1},   {0, 9, -9, 0, 0, 0, 1, 0},
              {1, 0, 0, 0, 2, 0, 1, 0},        {1, 0, 0, 0, -1, 0, 1, 0},   {1, 8, 0, 0, 0, 9, 0, 0},
              {1, -1, 0, 0, 0, 9, 0, 0},       {1, 0, 0, -1, 0, 9, 0, 0},   {1, 0, -2, 0, 0, 9, 0, 0},
              {4000, 0, -4000, 0, 0, 9, 0, 0}, {1, 0, 5462, 0, 0, 6, 0, 0}, {1, 0, 5461, 2, 0, 6, 0, 0},
              {5462, 0, 0, 0, 0, 6, 0, 0},     {1, 4096, 0, 0, 0, 6, 0, 0}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(&row - kRows);
        const auto before = sent();
        status = -1;
        const std::string text(row.characters, 'A');
        EXPECT_EQ(raisedNumber([&] { show(text, row.line, row.column, row.gap, row.inverted); }), row.error);
        EXPECT_EQ(status, row.statusAfter);
        EXPECT_EQ(sent(), before + row.blocks);
    }
}

TEST_F(PublicClass, TheGeneratorIsReadBeforeThePosition) {
    for (const auto& [name, error] : {std::pair{"none.gen", 53}, {"no/none.gen", 76}, {"", 75}}) {
        file = folder / name;
        EXPECT_EQ(raisedNumber([&] { show("", 9, 0); }), error) << name;
        EXPECT_EQ(status, 0);
        EXPECT_EQ(show("A", 0, 0, 0, 2), 1) << "refused before it is looked for";
    }
}

TEST_F(PublicClass, AnAbsentOrBadGlyphSendsNothing) {
    folder.write("test.gen", fileText(generator('C', 0, {2, 0, 67, 0})));
    EXPECT_EQ(show("ABC", 0, 0), 1);
    folder.write("test.gen", fileText(generator('C', kFirstColumn + 5, {2, 0, 0, 1})));
    EXPECT_EQ(raisedNumber([&] { show("ABC", 0, 0); }), 6);
    for (const std::string text : {"Aж", "A\xFF"})
        EXPECT_EQ(show(text, 0, 0), 1);
    EXPECT_EQ(show("AB", 0, 0), 0) << "only what is shown is converted";
    EXPECT_EQ(sent(), 2U);
}

TEST_F(PublicClass, AFailedBlockGivesStatus1AndTheOthersAreSentAndRecorded) {
    bench.module.fault({.fault = Fault::aux, .count = 5, .after = 1});  // the second of three blocks
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
        int width, height, rowBytes;  // -9: it does not fit
    } kRows[]{{120, 64, 15}, {120, 65, -9}, {124, 64, 15}, {125, 64, -9}, {128, 64, -9}, {116, 64, 15},
              {12, 64, 1},   {4, 64, 1},    {3, 64, 0},    {0, 64, 0},    {120, 0, 15}};
    for (const auto& row : kRows) {
        int rowBytes = 0;
        const int raised = raisedNumber([&] { rowBytes = parsed(bitmap(row.width, row.height)).rowBytes; });
        EXPECT_EQ(raised != 0 ? -raised : rowBytes, row.rowBytes) << row.width << " x " << row.height;
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
    EXPECT_EQ(file.image[2][0], 0) << "below the picture";
    EXPECT_EQ(parsed(bitmap(120, 64).substr(0, 62)).image[0][0], 0xFF) << "what a file lacks is dark";
    EXPECT_EQ(parsed("BM").height, 0);
}

TEST_F(PublicClass, SendsTheEightLinesOfAPictureInOrder) {
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

TEST_F(PublicClass, StopsAtTheFirstLineOfAPictureThatFailsAndSendsNoneOfABadOne) {
    status = 7;
    EXPECT_EQ(raisedNumber([&] { object->DisplayBMP(folder / "none.bmp", status); }), 53);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(raisedNumber([&] { showPicture(bitmap(120, 65)); }), 9);
    EXPECT_EQ(sent(), 0U);
    EXPECT_EQ(log, (Lines{"Name : " + folder / "none.bmp", "Name : " + folder / "picture.bmp"}));
    bench.module.fault({.fault = Fault::aux, .count = simulator::kForEver, .after = 3});
    EXPECT_EQ(showPicture(bitmap(120, 64)), 1);
    EXPECT_EQ(sent(), 3U + 5U);
    EXPECT_EQ(log.back(), "Affiche Line : 3");
}

TEST(FileDialogsOfTheLink, AskWithTheirTextsAndFolder) {
    LinkBench bench;
    Lines asked;
    bench.services->fileDialog = [&](const FileDialogRequest& request) {
        asked.push_back(request.title + request.folder.substr(request.folder.rfind('/')) + request.filter +
                        (request.overwritePrompt ? "?" : ""));
        return std::optional<std::string>("/tmp/chosen");
    };
    std::string name;
    EXPECT_TRUE(bench.link().SaveBINFile(name) && bench.link().OpenBINFile(name) && bench.link().OpenBMPFile(name));
    EXPECT_EQ(asked, (Lines{"Sauver fichier BIN pour EEPROM/binFichiers BIN (*.bin)|*.bin?",
                            "Ouvrir fichier BIN pour EEPROM/binFichiers BIN (*.bin)|*.bin",
                            "Ouvrir fichier BPM pour OPane/bmpFichiers BMP (*.bmp)|*.bmp"}));
}

}  // namespace
}  // namespace opane::test
