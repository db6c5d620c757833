// The command lines of opane and opane-sim, and the numbers and bytes on them. Nothing is run and no device opened.
//
// Input: one word on each line. The first byte chooses: 's' opane-sim, 'n' a number or bytes, otherwise opane.

#include <CLI/CLI.hpp>
#include <iostream>
#include <sstream>

#include "fuzz_input.h"
#include "tools/opane-sim/arguments.h"
#include "tools/opane/arguments.h"
#include "tools/opane/subcommands.h"

namespace opane::fuzz {
namespace {

constexpr std::size_t kMostWords = 64;

void parseValues(const std::string& text) {
    const auto allowingErrors = [](auto parse) {
        try {
            parse();
        } catch (const tool::InputError&) {
        }
    };
    allowingErrors([&] { tool::parseNumber(text, "number", 0, 1023, "0 to 1023"); });
    allowingErrors([&] { tool::parseByte(text, "byte"); });
    allowingErrors([&] { tool::parseHexBytes(text, "bytes"); });
    allowingErrors([&] { tool::parseRowBytes(text, 8); });
}

void parseOPane(int count, char** words) {
    tool::Arguments arguments;
    tool::Run chosen;
    CLI::App app("fuzzed", "opane");
    app.option_defaults()->take_last();
    tool::addCommonOptions(app, arguments);
    tool::addSubcommands(app, chosen);
    try {
        app.parse(count, words);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        app.exit(error, out, out);
    } catch (const tool::InputError&) {
    }
}

void tryLine(Input input) {
    const std::uint8_t choice = input.byte();
    if (choice == 'n') {
        const auto rest = input.rest();
        parseValues(std::string(rest.begin(), rest.end()));
        return;
    }
    std::vector<std::string> texts{"program"};
    while (!input.isEmpty() && texts.size() < kMostWords)
        texts.push_back(input.textUpTo('\n').c_str());  // words of a command line hold no zero
    std::vector<char*> words;
    for (std::string& text : texts)
        words.push_back(text.data());
    words.push_back(nullptr);
    const int count = static_cast<int>(texts.size());
    if (choice == 's')
        sim::readArguments(count, words.data());
    else
        parseOPane(count, words.data());
}

}  // namespace
}  // namespace opane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    opane::fuzz::tryLine(opane::fuzz::Input(data, size));
    return 0;
}
