#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
class ParseError;
class Validator;
}  // namespace CLI

namespace opane::tools {

inline constexpr int kWrongUsage = 2;
inline constexpr int kErrorRaised = 3;

/// The exit status of a command line that only asked for help or for the version (0), was wrong (2), or whose help
/// could not be printed (3).
struct Exit {
    int status = 0;
};

/// Reads a command line, with --version beside what the program's options are. Prints the help or the version to
/// standard output, or to standard error what is wrong.
/// @param app    its name is the program's
/// @param check  looks at what was read; refuses it by CLI::ParseError or std::invalid_argument
/// @return nothing when the program is to go on
std::optional<Exit> readCommandLine(CLI::App& app, int argc, char** argv, const std::function<void()>& check = {});

/// What is wrong with a command line that the parser has refused: of an unknown option its name, and one that is like
/// it.
std::string complaint(const CLI::App& app, const CLI::ParseError& error);

/// For an option's transform(): a whole number in that range, decimal or behind 0x.
CLI::Validator number(std::int64_t first, std::int64_t last);

}  // namespace opane::tools
