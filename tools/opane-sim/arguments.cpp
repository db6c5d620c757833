#include "tools/opane-sim/arguments.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <limits>
#include <system_error>

#include "simulator/answers.h"
#include "simulator/readings.h"

namespace opane::sim {
namespace {

constexpr const char* kRs232 = "RS232";
constexpr const char* kRs485 = "RS485";

constexpr const char* kExamples = R"(
Examples:
  opane-sim --link /tmp/opane
      a module for node 3; a host opens /tmp/opane
  opane-sim --node 1 --bus RS485 --pace --screen
      on a bus, at the speed of the line, with its screen in this terminal
  opane-sim --snapshot screen.png --fault aux:7x2 --fault silent@10
      refuses two requests, and is silent after the tenth; a picture of the screen
  opane-sim --reading temperature=215 --drift --user-eeprom user.bin
      at 21.5 degrees, about which it wanders; its User EEPROM is kept from run to run

The first line of output is the device that a host opens. SIGINT and SIGTERM end it tidily.
A digit 1 to 9 on standard input presses that key of the remote control, q ends the program; a
terminal gives them as they are typed. The end of the input ends nothing.
After the fault unplug, SIGUSR1 plugs it in again; the new device is the next line of output.
)";

std::vector<simulator::FaultOrder> faultOrders(const std::vector<std::string>& texts) {
    std::vector<simulator::FaultOrder> orders;
    orders.reserve(texts.size());
    for (const auto& text : texts)
        orders.push_back(simulator::faultOrder(text));
    return orders;
}

// What is kept in files must not be kept in the same one.
void requireDifferentFiles(const Arguments& arguments) {
    const auto refuseSame = [](const std::string& first, const std::string& second, const char* options) {
        namespace fs = std::filesystem;
        std::error_code error;
        if (!first.empty() && !second.empty() &&
            fs::weakly_canonical(fs::absolute(first), error) == fs::weakly_canonical(fs::absolute(second), error))
            throw CLI::ValidationError(options, "both name the file " + first + "; expected one of its own for each");
    };
    refuseSame(arguments.systemEeprom, arguments.userEeprom, "--system-eeprom and --user-eeprom");
    refuseSame(arguments.systemEeprom, arguments.snapshot, "--system-eeprom and --snapshot");
    refuseSame(arguments.userEeprom, arguments.snapshot, "--user-eeprom and --snapshot");
}

std::string namesSomething(const std::string& file) {
    return file.empty() ? "expected the name of a file" : "";
}

}  // namespace

std::variant<Arguments, tools::Exit> readArguments(int argc, char** argv) {
    Arguments arguments;
    arguments.module.keepFrames = false;
    std::vector<std::string> faults;
    std::string bus = kRs232;

    CLI::App app("A simulated OPane module on a pseudo-terminal.", "opane-sim");
    app.footer(simulator::faultHelp() + '\n' + simulator::readingHelp() + kExamples);
    app.add_option("--node", arguments.module.node, "Node number, 0 to 3 (default 3)")
        ->transform(tools::number(0, simulator::kNodes - 1))
        ->type_name("N");
    app.add_option("--bus", bus, "RS232 (default), or RS485: everything the host sends is echoed")
        ->check(CLI::IsMember({kRs232, kRs485}).description(""))
        ->type_name("RS232|RS485");
    app.add_option("--baud", arguments.module.baudRate, "Speed it starts at (default 9600)")
        ->transform(tools::number(1, std::numeric_limits<int>::max()))
        ->type_name("RATE");
    app.add_option("--quartz", arguments.module.quartz, "Crystal, which says what speeds it offers (default 2)")
        ->transform(tools::number(1, 3))
        ->type_name("1|2|3");
    app.add_option("--link", arguments.link, "Symbolic link to its device, removed at the end")
        ->check(namesSomething)
        ->type_name("PATH");
    app.add_flag("--pace", arguments.module.pace, "Let every byte take its time on the line");
    app.add_flag("--screen", arguments.screen, "Draw its screen in the terminal");
    app.add_option("--snapshot", arguments.snapshot, "Keep a picture of its screen up to date")
        ->check(namesSomething)
        ->type_name("FILE.png");
    app.add_option("--reading", arguments.readings, "A value that it measures, see below; may be given again")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
    app.add_flag("--drift", arguments.module.drift, "Let the readings wander, each within its band");
    app.add_option("--key", arguments.key, "Press a key of the remote control at the start")
        ->transform(tools::number(1, 9))
        ->type_name("1..9");
    app.add_option("--system-eeprom", arguments.systemEeprom, "Keep its System EEPROM in a file of 1024 bytes")
        ->check(namesSomething)
        ->type_name("FILE");
    app.add_option("--user-eeprom", arguments.userEeprom, "Keep its User EEPROM in a file of 512 bytes")
        ->check(namesSomething)
        ->type_name("FILE");
    app.add_option("--fault", faults, "Something that goes wrong, see below; may be given again")
        ->type_name("FAULT")
        ->expected(1)
        ->take_all();

    const auto exit = tools::readCommandLine(app, argc, argv, [&] {
        if (!simulator::offersBaudRate(arguments.module.quartz, arguments.module.baudRate))
            throw CLI::ValidationError("--baud", std::to_string(arguments.module.baudRate) + " is no speed of quartz " +
                                                     std::to_string(arguments.module.quartz));
        arguments.module.bus = bus == kRs485 ? simulator::Bus::rs485 : simulator::Bus::rs232;
        arguments.faults = faultOrders(faults);
        requireDifferentFiles(arguments);
    });
    if (exit)
        return *exit;
    return arguments;
}

}  // namespace opane::sim
