#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "arguments.h"

namespace opane::tool {

/// Runs a command after its arguments have been read.
using Run = std::function<ExitStatus(const Arguments&)>;

/// Adds the options of a command and gives what runs it.
using SetUp = Run (*)(CLI::App& command);

// One function a command; the table of subcommands.cpp names them.
Run setUpText(CLI::App& command);
Run setUpLine(CLI::App& command);
Run setUpBlock(CLI::App& command);
Run setUpSquare(CLI::App& command);
Run setUpFrame(CLI::App& command);
Run setUpClear(CLI::App& command);
Run setUpVersion(CLI::App& command);
Run setUpDemo(CLI::App& command);

/// Adds every command to the program.
/// @param chosen  set to what runs the command that the user has named
void addSubcommands(CLI::App& app, Run& chosen);

}  // namespace opane::tool
