#include "subcommands.h"

#include <string>

namespace opane::tool {
namespace {

struct Subcommand {
    const char* name;
    const char* summary;
    const char* example;  // after the program's name
    SetUp setUp;
};

constexpr Subcommand kSubcommands[]{
    {"text", "Show a text on the screen", "--device /dev/ttyUSB0 text \"Hello, world\" --line 2 --column 3", setUpText},
    {"line", "Show one line of 120 x 8 pixels", "line 55 --line 0", setUpLine},
    {"block", "Show one block of 8 x 8 pixels", "block 3C4299A581A5423C --line 3 --column 7", setUpBlock},
    {"square", "Show a square of four blocks", "square FF --line 2 --column 4", setUpSquare},
    {"frame", "Draw or remove the frame around the screen", "frame on", setUpFrame},
    {"clear", "Clear the screen", "clear", setUpClear},
    {"version", "Print the version of the library", "version --json", setUpVersion},
    {"demo", "Show texts on a simulated module and draw its screen", "demo --output screen.png", setUpDemo},
};

}  // namespace

void addSubcommands(CLI::App& app, Run& chosen) {
    for (const Subcommand& row : kSubcommands) {
        CLI::App* const command = app.add_subcommand(row.name, row.summary);
        command->footer(std::string("Example:\n  opane ") + row.example);
        command->fallthrough();  // the common options may also follow the command
        const Run run = row.setUp(*command);
        command->callback([run, &chosen] { chosen = run; });
    }
    app.require_subcommand(0, 1);  // so that an unknown command is named; main says that none is given
}

}  // namespace opane::tool
