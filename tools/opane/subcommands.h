#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

#include "arguments.h"
#include "session.h"

namespace opane::tool {

/// Runs a command after its arguments have been read.
using Run = std::function<ExitStatus(Session&)>;

/// Adds the options of a command and gives what runs it.
using SetUp = Run (*)(CLI::App& command);

/// A row of the table of commands.
struct Subcommand {
    const char* group;  ///< empty: none
    const char* name;
    const char* summary;
    const char* example;  ///< after the program's name
    SetUp setUp;
};

// One function for each command; the table of subcommands.cpp names them.
Run setUpText(CLI::App& command);
Run setUpBitmap(CLI::App& command);
Run setUpLine(CLI::App& command);
Run setUpBlock(CLI::App& command);
Run setUpSquare(CLI::App& command);
Run setUpFrame(CLI::App& command);
Run setUpClear(CLI::App& command);
Run setUpInfo(CLI::App& command);
Run setUpStatus(CLI::App& command);
Run setUpSetStatus(CLI::App& command);
Run setUpReadings(CLI::App& command);
Run setUpKey(CLI::App& command);
Run setUpBacklightRead(CLI::App& command);
Run setUpBacklightWrite(CLI::App& command);
Run setUpControllerRead(CLI::App& command);
Run setUpControllerWrite(CLI::App& command);
Run setUpEepromDump(CLI::App& command);
Run setUpEepromRead(CLI::App& command);
Run setUpEepromWrite(CLI::App& command);
Run setUpEepromSave(CLI::App& command);
Run setUpEepromRestore(CLI::App& command);
Run setUpEepromVerify(CLI::App& command);
Run setUpBaudrate(CLI::App& command);
Run setUpReset(CLI::App& command);
Run setUpVersion(CLI::App& command);
Run setUpRegister(CLI::App& command);
Run setUpUnregister(CLI::App& command);

/// The commands that bring a simulated module along: none on a system without pseudo-terminals.
std::span<const Subcommand> demoCommands();

/// The command that the words name, with that of its group; empty: none.
std::string commandName(const CLI::App& app);

/// Whether the program or one of its commands has that option, "--device", and a value belongs to it.
bool takesValue(const CLI::App& app, const std::string& option);

/// Adds every command to the program.
void addSubcommands(CLI::App& app, Run& chosen);

}  // namespace opane::tool
