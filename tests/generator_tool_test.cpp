// Runs the program opane-generator (OPANE_GENERATOR_PROGRAM) and looks at the default generator that it made from the
// X11 font 5x8 in the build (OPANE_DEFAULT_GENERATOR). The pictures of that font are read off its bitmaps.

#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "automation/glyph_file.h"

namespace opane {
namespace {

namespace fs = std::filesystem;
using Picture = std::vector<std::string>;  // a row a string, '#' dark

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

ByteArray bytesOf(const fs::path& path) {
    const std::string content = contentOf(path);
    return {content.begin(), content.end()};
}

Picture pictureOf(const GlyphFile& generator, std::uint8_t code) {
    Picture picture(8, std::string(6, '.'));
    for (int column = 0; column < 6; ++column)
        for (unsigned row = 0; row < 8; ++row)
            if ((generator.column(code, column, false) >> (7 - row) & 1) != 0)
                picture[row][static_cast<std::size_t>(column)] = '#';
    return picture;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

struct Outcome {
    int status = -1;
    std::string output;
    std::string errors;
};

/// Each test has a folder of its own, in which the program runs.
class GeneratorTool : public testing::Test {
protected:
    GeneratorTool() {
        std::string name = (fs::temp_directory_path() / "opane-generator-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder " + name);
        folder_ = name;
    }
    ~GeneratorTool() override { fs::remove_all(folder_); }

    /// @param arguments  as in a shell
    /// @param before     shell commands before it
    Outcome run(const std::string& arguments, const std::string& before = "") const {
        const std::string command = "cd '" + folder_.string() + "' && mkdir -p .run && " + before +
                                    " '" OPANE_GENERATOR_PROGRAM "' " + arguments + " >.run/output 2>.run/errors";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(folder_ / ".run/output"),
                contentOf(folder_ / ".run/errors")};
    }

    fs::path write(const std::string& name, const std::string& content) const {
        std::ofstream(folder_ / name, std::ios::binary) << content;
        return folder_ / name;
    }

    /// The files in the folder, in the order of their names.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_))
            if (entry.path().filename() != ".run")
                names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path folder_;
};

// A bitmap font with glyphs that the tests need: A stands on the baseline, g goes two rows below it, W is 8 pixels
// wide.
constexpr char kSmallFont[] = R"(STARTFONT 2.1
FONT -Test-Small-Medium-R-Normal--8-80-75-75-C-60-ISO10646-1
SIZE 8 75 75
FONTBOUNDINGBOX 8 8 0 -2
STARTPROPERTIES 5
PIXEL_SIZE 8
FONT_ASCENT 6
FONT_DESCENT 2
CHARSET_REGISTRY "ISO10646"
CHARSET_ENCODING "1"
ENDPROPERTIES
CHARS 4
STARTCHAR hyphen
ENCODING 45
SWIDTH 400 0
DWIDTH 4 0
BBX 3 1 0 2
BITMAP
E0
ENDCHAR
STARTCHAR A
ENCODING 65
SWIDTH 600 0
DWIDTH 6 0
BBX 3 5 1 0
BITMAP
40
A0
E0
A0
A0
ENDCHAR
STARTCHAR W
ENCODING 87
SWIDTH 900 0
DWIDTH 9 0
BBX 8 5 0 0
BITMAP
FF
81
81
81
A5
ENDCHAR
STARTCHAR g
ENCODING 103
SWIDTH 600 0
DWIDTH 6 0
BBX 3 5 0 -2
BITMAP
60
A0
60
20
C0
ENDCHAR
ENDFONT
)";

/// The small font with its four characters moved to where Windows-1252 has none.
std::string fontOfOtherCharacters() {
    std::string font = kSmallFont;
    const std::string label = "\nENCODING ";
    for (std::size_t at = font.find(label); at != std::string::npos; at = font.find(label, at + 1))
        font.insert(at + label.size(), "190");  // 45 becomes 19045
    return font;
}

const Picture kPictureOfA{
    "......",  //
    ".##...",  //
    "#..#..",  //
    "#..#..",  //
    "####..",  //
    "#..#..",  //
    "#..#..",  //
    "......",  //
};

/// A generator whose one character is A, with these values for its columns.
std::string generatorOfA(const std::string& columns) {
    using namespace std::string_literals;
    const std::string absentRecord(16, '\0');  // eight empty values
    std::string bytes;
    for (int code = 0; code < 65; ++code)
        bytes += absentRecord;
    return bytes + "\x08\0\x01\0A"s + "\0\0"s + columns;
}

std::string byteColumns(const std::vector<std::uint8_t>& columns) {
    std::string bytes;
    for (const std::uint8_t column : columns)
        bytes += std::string("\x11\0", 2) + static_cast<char>(column);
    return bytes;
}

const std::string kColumnsOfA = byteColumns({0x3E, 0x48, 0x48, 0x3E, 0x00, 0x00});

// The default generator.

struct GlyphCase {
    const char* name;
    std::uint8_t code;
    Picture picture;
};

class DefaultGenerator : public testing::TestWithParam<GlyphCase> {};

TEST_P(DefaultGenerator, showsTheFontsPicture) {
    EXPECT_EQ(pictureOf(GlyphFile::read(OPANE_DEFAULT_GENERATOR), GetParam().code), GetParam().picture);
}

INSTANTIATE_TEST_SUITE_P(
    Glyphs, DefaultGenerator,
    testing::Values(
        GlyphCase{"A", 65, kPictureOfA},
        GlyphCase{"g", 103, {"......", "......", "......", ".##...", "#..#..", ".###..", "...#..", ".##..."}},
        GlyphCase{"degree", 0xB0, {"......", "..#...", ".#.#..", "..#...", "......", "......", "......", "......"}},
        GlyphCase{"E_acute", 0xC9, {"..#...", ".#....", "####..", "#.....", "###...", "#.....", "####..", "......"}},
        GlyphCase{"c_cedilla", 0xE7, {"......", "......", "......", "..##..", ".#....", ".#....", "..##..", "..#..."}},
        GlyphCase{"euro", 0x80, {"..##..", ".#....", "###...", ".#....", "###...", ".#....", "..##..", "......"}},
        GlyphCase{"space", 0x20, Picture(8, "......")}, GlyphCase{"no_break_space", 0xA0, Picture(8, "......")}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(DefaultGeneratorFile, hasTheCodesOfTheFont) {
    const auto generator = GlyphFile::read(OPANE_DEFAULT_GENERATOR);
    for (int code = 1; code < 256; ++code) {
        const bool control = code < 32 || code == 127;
        const bool undefined = code == 0x81 || code == 0x8D || code == 0x8F || code == 0x90 || code == 0x9D;
        EXPECT_EQ(generator.has(static_cast<std::uint8_t>(code)), !control && !undefined) << "code " << code;
    }
}

TEST(DefaultGeneratorFile, holdsTheRecordOfA) {
    // Codes 0 and 32 to 64 are there (26 bytes each), 1 to 31 are absent (23 bytes each).
    const ByteArray bytes = bytesOf(OPANE_DEFAULT_GENERATOR);
    constexpr std::ptrdiff_t kStart = 34 * 26 + 31 * 23;
    ASSERT_GE(bytes.size(), static_cast<std::size_t>(kStart) + 26);
    EXPECT_EQ(ByteArray(bytes.begin() + kStart, bytes.begin() + kStart + 26),
              (ByteArray{0x08, 0,    0x01, 0,    0x41,                 // a string of one character
                         0x11, 0,    0,                                // not used
                         0x11, 0,    0x3E, 0x11, 0,    0x48, 0x11, 0,  // the columns
                         0x48, 0x11, 0,    0x3E, 0x11, 0,    0,    0x11, 0, 0}));
}

// Making.

TEST_F(GeneratorTool, setsAllGlyphsOnOneBaseline) {
    write("small.bdf", kSmallFont);
    const Outcome outcome = run("make --font small.bdf --output small.gen");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;

    const auto generator = GlyphFile::read((folder_ / "small.gen").string());
    EXPECT_EQ(pictureOf(generator, 'A'),
              (Picture{"..#...", ".#.#..", ".###..", ".#.#..", ".#.#..", "......", "......", "......"}));
    EXPECT_EQ(pictureOf(generator, 'g'),
              (Picture{"......", "......", ".##...", "#.#...", ".##...", "..#...", "##....", "......"}));
}

TEST_F(GeneratorTool, cutsWhatSticksOutAndSaysSo) {
    write("small.bdf", kSmallFont);
    const Outcome outcome = run("make --font small.bdf --output small.gen");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(contains(outcome.errors, "1 of 7 glyphs, codes 87 (W)")) << outcome.errors;
    EXPECT_EQ(pictureOf(GlyphFile::read((folder_ / "small.gen").string()), 'W'),
              (Picture{"######", "......", "......", "......", ".#..#.", "......", "......", "......"}));
}

TEST_F(GeneratorTool, addsSpacesAndSoftHyphenThatTheFontLacks) {
    write("small.bdf", kSmallFont);
    ASSERT_EQ(run("make --font small.bdf --output small.gen").status, 0);

    const auto generator = GlyphFile::read((folder_ / "small.gen").string());
    EXPECT_EQ(generator.count(), 7);
    EXPECT_EQ(pictureOf(generator, 0x20), Picture(8, "......"));
    EXPECT_EQ(pictureOf(generator, 0xA0), Picture(8, "......"));
    const Picture hyphen{"......", "......", "###...", "......", "......", "......", "......", "......"};
    EXPECT_EQ(pictureOf(generator, 0x2D), hyphen);
    EXPECT_EQ(pictureOf(generator, 0xAD), hyphen);
    EXPECT_FALSE(generator.has('B'));
}

TEST_F(GeneratorTool, replacesAnEarlierFile) {
    write("small.bdf", kSmallFont);
    write("small.gen", "earlier");
    ASSERT_EQ(run("make --font small.bdf --size 8 --output small.gen").status, 0);
    EXPECT_EQ(GlyphFile::read((folder_ / "small.gen").string()).count(), 7);
    EXPECT_EQ(files(), (std::vector<std::string>{"small.bdf", "small.gen"}));
}

TEST_F(GeneratorTool, writesThroughALink) {
    write("small.bdf", kSmallFont);
    write("real.gen", "earlier");
    fs::create_symlink("real.gen", folder_ / "link.gen");
    ASSERT_EQ(run("make --font small.bdf --output link.gen").status, 0);
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.gen"));
    EXPECT_EQ(GlyphFile::read((folder_ / "real.gen").string()).count(), 7);
}

TEST_F(GeneratorTool, leavesTheEarlierFileWhenTheDiskRefuses) {
    write("small.bdf", kSmallFont);
    write("small.gen", "earlier");
    // A file may grow to one block only, as on a full disk.
    const Outcome outcome = run("make --font small.bdf --output small.gen", "trap '' XFSZ && ulimit -f 1 &&");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(contains(outcome.errors, "\"small.gen\" cannot be written: File too large")) << outcome.errors;
    EXPECT_EQ(contentOf(folder_ / "small.gen"), "earlier");
    EXPECT_EQ(files(), (std::vector<std::string>{"small.bdf", "small.gen"}));
}

// Showing.

TEST_F(GeneratorTool, showsATextInHalfBlocks) {
    write("a.gen", generatorOfA(kColumnsOfA));
    const Outcome outcome = run("show a.gen --text AA");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_TRUE(contains(outcome.output,
                         " ▄▄    ▄▄   \n"
                         "█  █  █  █  \n"
                         "█▀▀█  █▀▀█  \n"
                         "▀  ▀  ▀  ▀  \n"))
        << outcome.output;
}

TEST_F(GeneratorTool, showsTheSheetWithAbsentCodesDotted) {
    write("a.gen", generatorOfA(kColumnsOfA));
    const Outcome outcome = run("show a.gen");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_TRUE(contains(outcome.output, "\n4  · · · █  █    · · · ")) << outcome.output;
    EXPECT_TRUE(contains(outcome.output, "1 of 256 codes; missing of 32 to 255: 32, 33 (!), ")) << outcome.output;
    EXPECT_TRUE(contains(outcome.output, ", 64 (@), 66 (B), ")) << outcome.output;
    EXPECT_TRUE(contains(outcome.output, ", 126 (~), 127, 128 (€), 129, ")) << outcome.output;
}

struct GreyPicture {
    std::size_t width;
    std::size_t height;
    ByteArray pixels;

    /// The 6 x 8 module pixels from there on, four picture pixels each.
    Picture cell(std::size_t left, std::size_t top) const {
        Picture picture(8, std::string(6, '.'));
        for (std::size_t row = 0; row < 8; ++row)
            for (std::size_t column = 0; column < 6; ++column)
                if (pixels.at((4 * (top + row) + 1) * width + 4 * (left + column) + 1) < 128)
                    picture[row][column] = '#';
        return picture;
    }
};

GreyPicture readPng(const fs::path& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0)
        throw std::runtime_error(image.message);
    image.format = PNG_FORMAT_GRAY;
    GreyPicture picture{image.width, image.height, ByteArray(PNG_IMAGE_SIZE(image))};
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error(image.message);
    return picture;
}

TEST_F(GeneratorTool, drawsATextAsAPng) {
    write("a.gen", generatorOfA(kColumnsOfA));
    ASSERT_EQ(run("show a.gen --text AA --png a.png").status, 0);
    const GreyPicture picture = readPng(folder_ / "a.png");
    EXPECT_EQ(picture.width, 4U * (2 + 6 + 6 + 2));  // a border of two pixels
    EXPECT_EQ(picture.height, 4U * (2 + 8 + 2));
    EXPECT_EQ(picture.cell(2, 2), kPictureOfA);
    EXPECT_EQ(picture.cell(8, 2), kPictureOfA);
}

TEST_F(GeneratorTool, drawsTheSheetAsAPng) {
    write("a.gen", generatorOfA(kColumnsOfA));
    ASSERT_EQ(run("show a.gen --png a.png").status, 0);
    const GreyPicture picture = readPng(folder_ / "a.png");
    EXPECT_EQ(picture.width, 4U * (7 + 16 * 8));  // digits at the left and the top, two pixels between cells
    EXPECT_EQ(picture.height, 4U * (7 + 16 * 10));
    EXPECT_EQ(picture.cell(7 + 1 * 8, 7 + 4 * 10), kPictureOfA);  // code 0x41
    EXPECT_EQ(picture.cell(1 + 7, 1),
              (Picture{"###...", "#.#...", "#.#...", "#.#...", "###...", "......", "......", "......"}));
}

TEST_F(GeneratorTool, namesColumnsThatAreNoColumnBytes) {
    using namespace std::string_literals;
    // Byte, null, text, 16-bit 256, empty, byte.
    write("a.gen",
          generatorOfA("\x11\0\xFF"s + "\x01\0"s + "\x08\0\x01\0x"s + "\x02\0\0\x01"s + "\0\0"s + "\x11\0\xFF"s));
    const Outcome outcome = run("show a.gen --text A");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(contains(outcome.output, "█░░░ █\n█░░░ █\n█░░░ █\n█░░░ █\n")) << outcome.output;
    for (const char* fault : {"code 65, column 1: ", "code 65, column 2: ", "code 65, column 3: "})
        EXPECT_TRUE(contains(outcome.errors, fault)) << fault << " in " << outcome.errors;
    EXPECT_FALSE(contains(outcome.errors, "column 4")) << outcome.errors;
}

TEST_F(GeneratorTool, noticesThatItsOutputIsLost) {
    write("a.gen", generatorOfA(kColumnsOfA));
    const Outcome outcome = run("show a.gen >/dev/full 2>.run/full #");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(contains(contentOf(folder_ / ".run/full"), "standard output cannot be written"));
}

// Usage and wrong inputs.

struct RefusalCase {
    const char* name;
    const char* arguments;
    const char* message;
};

class Refusal : public GeneratorTool, public testing::WithParamInterface<RefusalCase> {};

TEST_P(Refusal, saysWhyAndLeavesNothingBehind) {
    write("small.bdf", kSmallFont);
    write("other.bdf", fontOfOtherCharacters());
    write("text.txt", "This is no font and no generator.\n");
    write("empty", "");
    write("zeros", std::string(4096, '\0'));
    write("a.gen", generatorOfA(kColumnsOfA));
    fs::create_directory(folder_ / "folder");
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    const auto before = files();

    const Outcome outcome = run(GetParam().arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(contains(outcome.errors, GetParam().message)) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(files(), before);
    EXPECT_TRUE(fs::is_fifo(folder_ / "pipe"));
}

INSTANTIATE_TEST_SUITE_P(
    Usage, Refusal,
    testing::Values(RefusalCase{"no_subcommand", "", "subcommand is required"},
                    RefusalCase{"unknown_subcommand", "draw", "subcommand is required"},
                    RefusalCase{"no_font", "make --output x.gen", "--font is required"},
                    RefusalCase{"no_output", "make --font small.bdf", "--output is required"},
                    RefusalCase{"size_zero", "make --font small.bdf --size 0 --output x.gen", "--size"},
                    RefusalCase{"size_no_number", "make --font small.bdf --size big --output x.gen", "--size"},
                    RefusalCase{"show_nothing", "show", "FILE is required"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Make, Refusal,
    testing::Values(
        RefusalCase{"font_missing", "make --font none.ttf --output x.gen", "\"none.ttf\" does not exist"},
        RefusalCase{"font_a_folder", "make --font folder --output x.gen", "\"folder\" is a folder"},
        RefusalCase{"font_a_text", "make --font text.txt --output x.gen", "\"text.txt\" is no font"},
        RefusalCase{"font_empty", "make --font empty --output x.gen", "\"empty\" is no font"},
        RefusalCase{"font_of_other_characters", "make --font other.bdf --output x.gen",
                    "\"other.bdf\" has none of the characters of Windows-1252"},
        RefusalCase{"size_not_there", "make --font small.bdf --size 9 --output x.gen", "without the size 9; it has 8"},
        RefusalCase{"output_without_folder", "make --font small.bdf --output none/x.gen", "folder does not exist"},
        RefusalCase{"output_a_folder", "make --font small.bdf --output folder", "it is a folder"},
        RefusalCase{"output_a_pipe", "make --font small.bdf --output pipe", "it is a device or a pipe"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Show, Refusal,
    testing::Values(RefusalCase{"file_missing", "show none.gen", "\"none.gen\" does not exist"},
                    RefusalCase{"file_a_text", "show text.txt", "\"text.txt\" is no character generator: type tag"},
                    RefusalCase{"file_empty", "show empty", "\"empty\" is no character generator: it holds no"},
                    RefusalCase{"file_of_zeros", "show zeros", "\"zeros\" is no character generator: it holds no"},
                    RefusalCase{"text_empty", "show a.gen --text ''", "the text is empty"},
                    RefusalCase{"text_not_in_generator", "show a.gen --text ABA", "\"B\" (code 66) is not in"},
                    RefusalCase{"text_not_in_code_page", "show a.gen --text AΩ", "\"Ω\" is not one of Windows-1252"},
                    RefusalCase{"text_not_utf8", "show a.gen --text \"$(printf 'A\\351')\"", "not valid UTF-8"},
                    RefusalCase{"png_without_folder", "show a.gen --png none/a.png", "folder does not exist"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(GeneratorTool, explainsItself) {
    for (const char* arguments : {"--help", "make --help", "show --help"}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << arguments;
        EXPECT_TRUE(contains(outcome.output, "Examples:\n  opane-generator ")) << outcome.output;
    }
}

}  // namespace
}  // namespace opane
