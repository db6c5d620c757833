#include <CLI/CLI.hpp>
#include <memory>

#include "automation/text_layout.h"
#include "generator.h"
#include "run_on_link.h"
#include "shared/runtime_error.h"
#include "shared/utf8.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

struct TextOptions {
    std::string text;
    std::int16_t line = 0;
    std::int16_t column = 0;
    std::int16_t preGap = 0;
    bool inverted = false;
    std::string generator;
};

/// Everything that the call would refuse or raise, said before anything is sent.
void check(const TextOptions& options) {
    if (!isValidUtf8(options.text))
        throw InputError("the text is no valid UTF-8; set the terminal's character set to UTF-8");
    const GlyphFile glyphs = readGenerator(options.generator);

    const TextCodes codes = textCodes(options.text);
    if (codes.empty())
        throw InputError("the text is empty; expected at least one character");
    const int firstPixel = kGlyphColumns * options.column + options.preGap;
    const int pixels = kGlyphColumns * static_cast<int>(codes.size());
    if (firstPixel < 0)
        throw InputError("the text begins at pixel column " + std::to_string(firstPixel) +
                         " (6 x column + gap); the screen begins at 0");
    if (firstPixel + pixels > kScreenWidth)
        throw InputError("the text does not fit: " + std::to_string(codes.size()) + " characters from pixel column " +
                         std::to_string(firstPixel) + " need " + std::to_string(firstPixel + pixels) +
                         " pixels; the screen is " + std::to_string(kScreenWidth) + " wide");
    if (const auto absent = firstAbsent(codes, glyphs)) {
        std::string character;
        appendUtf8(character, decodeUtf8(options.text)[*absent]);
        throw InputError("character " + std::to_string(*absent + 1) + " of the text, \"" + character +
                         "\", is not in the character generator \"" + options.generator + "\"");
    }
    for (const auto& code : codes) {
        for (int column = 0; column < kGlyphColumns; ++column)
            glyphs.column(*code, column, options.inverted);
    }
}

}  // namespace

Run setUpText(CLI::App& command) {
    const auto options = std::make_shared<TextOptions>();
    command.add_option("TEXT", options->text, "the text, UTF-8; 20 characters fill a line")->required();
    command.add_option("--line", options->line, "text line, 0 to 7 from the top")->check(CLI::Range(0, 7))->required();
    command.add_option("--column", options->column, "character column, 0 to 19")
        ->check(CLI::Range(0, 19))
        ->capture_default_str();
    command.add_option("--pre-gap", options->preGap, "pixels added before the text; may be negative")
        ->check(CLI::Range(-119, 119))
        ->capture_default_str();
    command.add_flag("--inverted", options->inverted, "light characters on a dark bar");
    command.add_option("--generator", options->generator, "character generator; see opane-generator")
        ->default_str("latin1.gen");

    return [options](Session& session) {
        if (options->generator.empty())
            options->generator = defaultGenerator();
        try {
            check(*options);
        } catch (const RuntimeError& error) {
            throw InputError("\"" + options->generator + "\": " + error.what());
        }
        return runOnModule(session, "text", [&](Connection& connection) {
            std::int16_t status = 1;
            connection.object().DisplayString(options->text, options->line, options->column, options->preGap,
                                              options->inverted ? 1 : 0, options->generator, status);
            return status == 0;
        });
    };
}

}  // namespace opane::tool
