#include "subcommands.h"

#include <algorithm>
#include <string>

namespace opane::tool {
namespace {

/// Commands that belong together and share their first word.
struct Group {
    const char* name;
    const char* summary;
    const char* example;  // after the program's name
};

constexpr Group kGroups[]{
    {"backlight", "Read and write the registers of the backlight", "backlight read red"},
    {"controller", "Read and write the registers of the LCD controller", "controller write command 0xAF"},
    {"eeprom", "Read and write the EEPROMs: System, or User with --user", "eeprom save system.bin"},
};

constexpr Subcommand kSubcommands[]{
    {"", "text", "Show a text on the screen", "--device /dev/ttyUSB0 text \"Hello, world\" --line 2 --column 3",
     setUpText},
    {"", "bitmap", "Show a picture of 120 x 64 pixels on the whole screen", "bitmap picture.bmp", setUpBitmap},
    {"", "line", "Show one line of 120 x 8 pixels", "line 55 --line 0", setUpLine},
    {"", "block", "Show one block of 8 x 8 pixels", "block 3C4299A581A5423C --line 3 --column 7", setUpBlock},
    {"", "square", "Show a square of four blocks", "square FF --line 2 --column 4", setUpSquare},
    {"", "frame", "Draw or remove the frame around the screen", "frame on", setUpFrame},
    {"", "clear", "Clear the screen", "clear", setUpClear},
    {"", "info", "Read everything that the module tells at once", "info --json", setUpInfo},
    {"", "status", "Read the status flags", "status --json", setUpStatus},
    {"", "set-status", "Write status flags; those that are not named stay as they are",
     "set-status --inverted on --frame off", setUpSetStatus},
    {"", "readings", "Read the analogue inputs, the temperature and the LCD drive voltage", "readings", setUpReadings},
    {"", "key", "Read the last key of the remote control, or print keys as they come", "key --watch --json", setUpKey},
    {"backlight", "read", "Read registers of one colour", "backlight read red", setUpBacklightRead},
    {"backlight", "write", "Write a register of one colour", "backlight write green 0 200", setUpBacklightWrite},
    {"controller", "read", "Read a register of the LCD controller", "controller read command", setUpControllerRead},
    {"controller", "write", "Write a register of the LCD controller", "controller write command 0xAF",
     setUpControllerWrite},
    {"eeprom", "dump", "Print addresses, bytes and characters", "eeprom dump --address 0x80 --length 32",
     setUpEepromDump},
    {"eeprom", "read", "Print bytes on one line, in hexadecimal", "eeprom read --user --address 0 --length 16",
     setUpEepromRead},
    {"eeprom", "write", "Write bytes and read them back", "eeprom write --address 0x3F0 \"01 02 03\"",
     setUpEepromWrite},
    {"eeprom", "save", "Save an EEPROM in a file", "eeprom save system.bin", setUpEepromSave},
    {"eeprom", "restore", "Write what differs in a file into an EEPROM and read it back",
     "eeprom restore system.bin --dry-run", setUpEepromRestore},
    {"eeprom", "verify", "Compare an EEPROM with a file", "eeprom verify system.bin", setUpEepromVerify},
    {"", "baudrate", "Change the baud rate of the module", "baudrate 19200", setUpBaudrate},
    {"", "reset", "Reset the module, which then runs at 9600 baud, or its light control", "reset light", setUpReset},
    {"", "version", "Print the version of the library", "version --json", setUpVersion},
    {"", "register", "Enter the component into the registry, so that hosts can create it by name", "register",
     setUpRegister},
    {"", "unregister", "Take the component out of the registry again", "unregister", setUpUnregister},
};

CLI::App* addCommand(CLI::App& parent, const char* name, const char* summary, const char* example) {
    CLI::App* const command = parent.add_subcommand(name, summary);
    command->footer(
        std::string("The options of opane, such as --device and --json, may stand here too; opane --help lists "
                    "them.\nExample:\n  opane ") +
        example);
    command->fallthrough();  // the common options may also follow the command
    return command;
}

}  // namespace

std::string commandName(const CLI::App& app) {
    std::string name;
    for (const CLI::App* const command : app.get_subcommands()) {
        const std::string ofGroup = commandName(*command);
        name = command->get_name() + (ofGroup.empty() ? "" : " ") + ofGroup;
    }
    return name;
}

bool takesValue(const CLI::App& app, const std::string& option) {
    const CLI::Option* const own = app.get_option_no_throw(option);
    const auto commands = app.get_subcommands(nullptr);
    return (own != nullptr && own->get_items_expected_max() > 0) ||
           std::any_of(commands.begin(), commands.end(),
                       [&option](const CLI::App* command) { return takesValue(*command, option); });
}

void addSubcommands(CLI::App& app, Run& chosen) {
    for (const Group& row : kGroups) {
        CLI::App* const group = addCommand(app, row.name, row.summary, row.example);
        group->require_subcommand(0, 1);
        group->callback([name = std::string(row.name), &chosen] {
            if (!chosen)
                throw InputError(std::string("no command of ").append(name).append(" is given; opane ").append(name) +
                                 " --help lists them");
        });
    }
    for (const std::span<const Subcommand> table : {std::span<const Subcommand>(kSubcommands), demoCommands()}) {
        for (const Subcommand& row : table) {
            CLI::App& parent = *row.group == '\0' ? app : *app.get_subcommand(row.group);
            CLI::App* const command = addCommand(parent, row.name, row.summary, row.example);
            const Run run = row.setUp(*command);
            takeNumbers(*command);
            refuseEmptyValues(*command);
            command->callback([run, &chosen] { chosen = run; });
        }
    }
    app.require_subcommand(0, 1);  // so that an unknown command is named; main says that none is given
}

}  // namespace opane::tool
