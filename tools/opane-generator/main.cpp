#include <cstdint>
#include <filesystem>
#include <iostream>
#include <numeric>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "automation/glyph_file.h"
#include "platform/code_page.h"
#include "platform/utf8_path.h"
#include "platform/whole_file.h"
#include "shared/runtime_error.h"
#include "shared/utf8.h"
#include "tools/command_line/command_line.h"
#include "tools/opane-generator/font_glyphs.h"
#include "tools/opane-generator/generator_bytes.h"
#include "tools/opane-generator/glyph_cells.h"
#include "tools/opane-generator/sheet.h"

namespace {

using opane::tools::kWrongUsage;

constexpr int kSuccess = 0;

constexpr unsigned kFirstPrintable = 32;
constexpr char32_t kSoftHyphen = 0xAD;

/// As "65 (A), 129": the character stands beside codes that have one to print.
std::string listOf(const std::vector<std::uint8_t>& codes) {
    std::string list;
    for (const std::uint8_t code : codes) {
        list += (list.empty() ? "" : ", ") + std::to_string(code);
        const char32_t character = opane::codePageCharacter(code);
        const bool blank = character <= 0x20 || (character >= 0x7F && character <= 0xA0) || character == kSoftHyphen;
        if (!blank) {
            list += " (";
            opane::appendUtf8(list, character);
            list += ")";
        }
    }
    return list;
}

/// @param read     the file that is read
/// @param written  the one that is written, by any of its names
void requireAnotherFile(const std::string& read, const std::string& written, const char* option) {
    std::error_code ignored;  // of one that is not there yet
    if (std::filesystem::equivalent(opane::utf8Path(read), opane::utf8Path(written), ignored))
        throw opane::RuntimeError(opane::ErrorNumber::pathFileAccess, std::string(option) + " \"" + written +
                                                                          "\" is the file that is read, \"" + read +
                                                                          "\"; expected another one");
}

struct MakeArguments {
    std::string font;
    std::optional<int> size;
    std::string output;
};

int make(const MakeArguments& arguments) {
    requireAnotherFile(arguments.font, arguments.output, "--output");
    const opane::FontGlyphs glyphs = opane::loadFontGlyphs(arguments.font, arguments.size);
    opane::writeWholeFile(arguments.output, opane::generatorBytes(glyphs));
    if (!glyphs.cutCodes.empty())
        std::cerr << "opane-generator: cut to the cell of 6 x 8 pixels: " << glyphs.cutCodes.size() << " of "
                  << glyphs.count() << " glyphs, codes " << listOf(glyphs.cutCodes) << '\n';
    std::cout << arguments.output << ": " << glyphs.count() << " of 256 codes, taken at size " << glyphs.pixelSize
              << '\n';
    return kSuccess;
}

struct ShowArguments {
    std::string generator;
    std::optional<std::string> png;
    std::optional<std::string> text;
};

void printCount(const opane::GlyphFile& generator) {
    std::vector<std::uint8_t> missing;
    for (unsigned code = kFirstPrintable; code < opane::kGlyphRecords; ++code)
        if (!generator.has(static_cast<std::uint8_t>(code)))
            missing.push_back(static_cast<std::uint8_t>(code));
    std::cout << generator.count()
              << " of 256 codes; missing of 32 to 255: " << (missing.empty() ? "none" : listOf(missing)) << '\n';
}

int show(const ShowArguments& arguments) {
    if (arguments.png)
        requireAnotherFile(arguments.generator, *arguments.png, "--png");
    const auto generator = opane::GlyphFile::read(arguments.generator);
    if (generator.count() == 0)
        throw opane::RuntimeError(opane::ErrorNumber::invalidFileFormat,
                                  "\"" + arguments.generator + "\" is no character generator: it holds no character");

    std::vector<std::uint8_t> codes(opane::kGlyphRecords);
    std::iota(codes.begin(), codes.end(), std::uint8_t{0});
    if (arguments.text)
        codes = opane::codesOfText(generator, *arguments.text);

    const auto [cells, faults] = opane::glyphCells(generator, codes);
    if (arguments.png)
        opane::writeWholeFile(*arguments.png, arguments.text ? opane::pngText(cells) : opane::pngSheet(cells));
    else
        std::cout << (arguments.text ? opane::terminalText(cells) : opane::terminalSheet(cells));
    printCount(generator);

    for (const std::string& fault : faults)
        std::cerr << "opane-generator: " << fault << '\n';
    return faults.empty() ? kSuccess : kWrongUsage;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes character generators for the module's text, and shows them.", "opane-generator");
    app.require_subcommand(0, 1);  // so that an unknown command is named
    app.footer(
        "Examples:\n"
        "  opane-generator make --font 5x8.pcf.gz --output latin1.gen\n"
        "  opane-generator show latin1.gen\n"
        "\n"
        "Exit status: 0 success, 2 wrong usage or input, 3 standard output cannot be written.");

    MakeArguments making;
    CLI::App* const makeCommand = app.add_subcommand(
        "make", "Makes a generator file from a font, for the codes of Windows-1252 that the font has.");
    makeCommand->add_option("--font", making.font, "bitmap or outline font that FreeType reads")->required();
    makeCommand
        ->add_option("--size", making.size,
                     "size in pixels; without it the largest at which at most one glyph in twenty is cut")
        ->transform(opane::tools::number(1, 64))
        ->type_name("1..64");
    makeCommand->add_option("--output", making.output, "generator file to write; one that is there is replaced")
        ->required();
    makeCommand->footer(
        "Examples:\n"
        "  opane-generator make --font /usr/share/fonts/X11/misc/5x8.pcf.gz --output latin1.gen\n"
        "  opane-generator make --font DejaVuSansMono.ttf --size 8 --output mono.gen");

    ShowArguments showing;
    CLI::App* const showCommand =
        app.add_subcommand("show", "Shows a generator as a sheet of 16 x 16 codes, in the terminal or as a picture.");
    showCommand->add_option("FILE", showing.generator, "generator file")->required();
    showCommand->add_option("--png", showing.png, "writes the picture there instead of to the terminal");
    showCommand->add_option("--text", showing.text, "shows this text instead of the sheet");
    showCommand->footer(
        "Examples:\n"
        "  opane-generator show latin1.gen\n"
        "  opane-generator show latin1.gen --png sheet.png\n"
        "  opane-generator show latin1.gen --text \"Température 21,5 °C\"");

    if (const auto exit = opane::tools::readCommandLine(app, argc, argv))
        return exit->status;
    if (!makeCommand->parsed() && !showCommand->parsed()) {
        std::cerr << "opane-generator: no command is given; opane-generator --help lists them\n";
        return kWrongUsage;
    }
    try {
        const int status = makeCommand->parsed() ? make(making) : show(showing);
        if (std::cout.flush())
            return status;
        std::cerr << "opane-generator: standard output cannot be written\n";
        return opane::tools::kErrorRaised;
    } catch (const opane::RuntimeError& error) {
        std::cerr << "opane-generator: " << error.what() << '\n';
        return kWrongUsage;
    }
}
