// Runs the program opane-generator (OPANE_GENERATOR_PROGRAM) and looks at the default generator that it made from the
// X11 font 5x8 in the build (OPANE_DEFAULT_GENERATOR). The pictures of that font are read off its bitmaps.

#include <gtest/gtest.h>
#include <png.h>

#include <set>

#include "automation/glyph_file.h"
#include "shared/frame_byte.h"
#include "support/program.h"
#include "support/row_name.h"

namespace opane::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

// Pictures of a cell: eight rows of six pixels from the top, # dark.
constexpr char kBlank[] = "....../....../....../....../....../....../....../......";
constexpr char kHyphen[] = "....../....../###.../....../....../....../....../......";

/// A bitmap font with a hyphen, an A, a W of 8 pixels' width and a g that goes two rows below the baseline.
/// @param moved  added to their codes
std::string smallFont(int moved = 0) {
    std::string font =
        "STARTFONT 2.1\nFONT -Test-Small-Medium-R-Normal--8-80-75-75-C-60-ISO10646-1\nSIZE 8 75 75\n"
        "FONTBOUNDINGBOX 8 8 0 -2\nSTARTPROPERTIES 5\nPIXEL_SIZE 8\nFONT_ASCENT 6\nFONT_DESCENT 2\n"
        "CHARSET_REGISTRY \"ISO10646\"\nCHARSET_ENCODING \"1\"\nENDPROPERTIES\nCHARS 4\n";
    const auto add = [&](int code, const std::string& box, const std::string& rows) {
        font += "STARTCHAR c" + std::to_string(code) + "\nENCODING " + std::to_string(code + moved) +
                "\nSWIDTH 600 0\nDWIDTH 6 0\nBBX " + box + "\nBITMAP\n" + rows + "\nENDCHAR\n";
    };
    add('-', "3 1 0 2", "E0");
    add('A', "3 5 1 0", "40\nA0\nE0\nA0\nA0");
    add('W', "8 5 0 0", "FF\n81\n81\n81\nA5");
    add('g', "3 5 0 -2", "60\nA0\n60\n20\nC0");
    return font + "ENDFONT\n";
}

/// A generator whose one character is A, with these values for its columns.
std::string generatorOfA(const std::string& columns) {
    return std::string(65 * 16, '\0') + "\x08\0\x01\0A\0\0"s + columns;  // absent codes are eight empty values
}

const std::string kColumnsOfA = "\x11\0\x3E\x11\0\x48\x11\0\x48\x11\0\x3E\x11\0\0\x11\0\0"s;

class GeneratorTool : public testing::Test {
protected:
    GeneratorTool() {
        folder.write("small.bdf", smallFont());
        folder.write("a.gen", generatorOfA(kColumnsOfA));
    }

    /// Runs it with these arguments, as in a shell, after these shell commands.
    ProgramEnd run(const std::string& arguments, const std::string& before = "") const {
        return runProgram(
            {"sh", "-c", "cd \"$0\" && " + before + "'" OPANE_GENERATOR_PROGRAM "' " + arguments, folder.path()});
    }

    auto files() const { return std::distance(fs::directory_iterator(folder.path()), {}); }

    TemporaryFolder folder;
};

TEST_F(GeneratorTool, TakesTheFontsPictures) {
    ASSERT_EQ(run("make --font small.bdf --output small.gen").status, 0);
    const auto latin1 = GlyphFile::read(OPANE_DEFAULT_GENERATOR);
    const auto small = GlyphFile::read(folder / "small.gen");
    struct Row {
        const char* name;
        const GlyphFile& generator;
        std::uint8_t code;
        const char* picture;
    };
    for (const Row& row : {Row{"accent", latin1, 0xC9, "..#.../.#..../####../#...../###.../#...../####../......"},
                           Row{"euro", latin1, 0x80, "..##../.#..../###.../.#..../###.../.#..../..##../......"},
                           Row{"on_baseline", small, 'A', "..#.../.#.#../.###../.#.#../.#.#../....../....../......"},
                           Row{"below_it", small, 'g', "....../....../.##.../#.#.../.##.../..#.../##..../......"},
                           Row{"too_wide", small, 'W', "######/....../....../....../.#..#./....../....../......"},
                           Row{"hyphen", small, 0x2D, kHyphen}, Row{"soft_hyphen_added", small, 0xAD, kHyphen},
                           Row{"space_added", small, 0x20, kBlank}, Row{"no_break_space_added", small, 0xA0, kBlank}}) {
        std::string picture = kBlank;
        for (unsigned pixel = 0; pixel < 48; ++pixel)
            if ((row.generator.column(row.code, static_cast<int>(pixel % 6), false) >> (7 - pixel / 6) & 1) != 0)
                picture[7 * (pixel / 6) + pixel % 6] = '#';
        EXPECT_EQ(picture, row.picture) << row.name;
    }
}

TEST(DefaultGenerator, HasTheCodesOfTheFontAndBytesForColumns) {
    const auto generator = GlyphFile::read(OPANE_DEFAULT_GENERATOR);
    for (int code = 1; code < 256; ++code) {
        const bool absent = code < 32 || std::set{0x7F, 0x81, 0x8D, 0x8F, 0x90, 0x9D}.contains(code);
        EXPECT_EQ(generator.has(static_cast<std::uint8_t>(code)), !absent) << "code " << code;
    }
    // Codes 0 and 32 to 64 are there (26 bytes each), 1 to 31 are absent (23 bytes each).
    EXPECT_EQ(contentOf(OPANE_DEFAULT_GENERATOR).substr(34 * 26 + 31 * 23, 26), "\x08\0\x01\0A\x11\0\0"s + kColumnsOfA);
}

TEST_F(GeneratorTool, ReplacesAFileWholeOrNotAtAll) {
    folder.write("made.gen", "earlier");
    const auto before = files();
    // A file may grow to one block only, as on a full disk.
    const ProgramEnd full = run("make --font small.bdf --output made.gen", "trap '' XFSZ && ulimit -f 1 && ");
    EXPECT_EQ(full.status, 2);
    EXPECT_PRED2(holds, full.errors, "\"made.gen\" cannot be written: File too large");
    EXPECT_EQ(contentOf(folder / "made.gen"), "earlier");
    const ProgramEnd end = run("make --font small.bdf --size 8 --output made.gen");
    EXPECT_EQ(end.output, "made.gen: 7 of 256 codes, taken at size 8\n");
    EXPECT_PRED2(holds, end.errors, "1 of 7 glyphs, codes 87 (W)\n");
    EXPECT_EQ(GlyphFile::read(folder / "made.gen").count(), 7);
    EXPECT_EQ(files(), before);
}

TEST_F(GeneratorTool, NamesColumnsThatAreNoColumnBytes) {
    // Byte, null, text, 16-bit 256, empty, byte.
    folder.write("bad.gen", generatorOfA("\x11\0\xFF\x01\0\x08\0\x01\0x\x02\0\0\x01\0\0\x11\0\xFF"s));
    const ProgramEnd end = run("show bad.gen --text A");
    EXPECT_EQ(end.status, 2);
    EXPECT_PRED2(holds, end.output, "█░░░ █\n█░░░ █\n█░░░ █\n█░░░ █\n");
    for (const char column : {'1', '2', '3', '4'})
        EXPECT_EQ(holds(end.errors, std::string("code 65, column ") + column + ": "), column != '4') << end.errors;
}

TEST_F(GeneratorTool, DrawsTheSheetWithFourByFourPixelsForEach) {
    ASSERT_EQ(run("show a.gen --png a.png").status, 0);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_file(&image, (folder / "a.png").c_str()), 0) << image.message;
    image.format = PNG_FORMAT_GRAY;
    ByteArray pixels(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;
    ASSERT_EQ(std::pair(image.width, image.height), std::pair(4U * (7 + 16 * 8), 4U * (7 + 16 * 10)));
    // The middle row of the A, in the row of cells 4 and the column 1: four dark pixels, then light ones.
    for (const unsigned column : {0U, 3U, 4U, 5U})
        EXPECT_EQ(pixels[4 * (7 + 4 * 10 + 4) * image.width + 4 * (7 + 8 + column)] < 128, column < 4) << column;
}

struct RunCase {
    const char* name;
    const char* arguments;
    int status;
    const char* says;  // a part of its output or, when the status is not 0, of its errors; the other one is empty
};

class Run : public GeneratorTool, public testing::WithParamInterface<RunCase> {};

TEST_P(Run, SaysWhatItShowsOrWhyNot) {
    folder.write("other.bdf", smallFont(19000));  // characters that Windows-1252 has not
    folder.write("text.txt", "This is no font and no generator.\n");
    fs::create_directory(folder / "folder");
    const auto before = files();
    const ProgramEnd end = run(GetParam().arguments);
    EXPECT_EQ(end.status, GetParam().status);
    EXPECT_PRED2(holds, end.status == 0 ? end.output : end.errors, GetParam().says);
    EXPECT_EQ(end.status == 0 ? end.errors : end.output, "");
    EXPECT_EQ(files(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Runs, Run,
    testing::Values(
        RunCase{"text", "show a.gen --text AA", 0, " ▄▄    ▄▄   \n█  █  █  █  \n█▀▀█  █▀▀█  \n▀  ▀  ▀  ▀  \n"},
        RunCase{"sheet", "show a.gen", 0, "\n4  · · · █  █    · · · "},
        RunCase{"missing_codes", "show a.gen", 0, "1 of 256 codes; missing of 32 to 255: 32, 33 (!), "},
        RunCase{"output_lost", "show a.gen >/dev/full", 3, "standard output cannot be written"},
        RunCase{"size_not_there", "make --font small.bdf --size 9 --output x.gen", 2, "the size 9; it has 8"},
        RunCase{"font_a_text", "make --font text.txt --output x.gen", 2, "\"text.txt\" is no font"},
        RunCase{"font_of_others", "make --font other.bdf --output x.gen", 2, "has none of the characters of Windows"},
        RunCase{"output_is_the_font", "make --font small.bdf --output ./small.bdf", 2, "is the file that is read"},
        RunCase{"picture_is_the_generator", "show a.gen --png \"$PWD/a.gen\"", 2, "is the file that is read"},
        RunCase{"show_a_text", "show text.txt", 2, "\"text.txt\" is no character generator: type tag"},
        RunCase{"text_empty", "show a.gen --text ''", 2, "the text is empty"},
        RunCase{"text_not_there", "show a.gen --text ABA", 2, "\"B\" (code 66) is not in"},
        RunCase{"text_not_in_code_page", "show a.gen --text AΩ", 2, "\"Ω\" is not one of Windows-1252"},
        RunCase{"text_not_utf8", "show a.gen --text \"$(printf 'A\\351')\"", 2, "not valid UTF-8"}),
    rowName);

}  // namespace
}  // namespace opane::test
