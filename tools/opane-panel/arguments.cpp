#include "tools/opane-panel/arguments.h"

#include <CLI/CLI.hpp>
#include <map>

namespace opane::panel_tool {
namespace {

constexpr const char* kFooter = R"(
Without --device, --device2 and --simulate the COM ports are the system's: what OPANE_COM1 and
OPANE_COM2 name, else /dev/ttyS0 and /dev/ttyS1. With one of them no other port is opened.

Examples:
  opane-panel --device /dev/ttyUSB0
  opane-panel --simulate
      without hardware; a second window shows the simulated module
)";

std::string notEmpty(const std::string& value) {
    return value.empty() ? "is empty; leave it out for the default" : "";
}

}  // namespace

std::variant<Arguments, tools::Exit> readArguments(int argc, char** argv) {
    Arguments arguments;
    const std::map<std::string, qt::Theme> themes{
        {"system", qt::Theme::system}, {"light", qt::Theme::light}, {"dark", qt::Theme::dark}};

    CLI::App app("The diagnostic panel: drives one OPane LCD module by hand.", "opane-panel");
    app.footer(kFooter);
    auto* const device1 = app.add_option("--device", arguments.devices[0], "Device of COM port 1")->type_name("PATH");
    auto* const device2 = app.add_option("--device2", arguments.devices[1], "Device of COM port 2")->type_name("PATH");
    app.add_flag("--simulate", arguments.simulate, "COM port 1 leads to a simulated module, node 3 on RS232")
        ->excludes(device1)
        ->excludes(device2);
    app.add_option("--log-level", arguments.logLevel,
                   "2 logs commands, 3 frames too; $OPANE_LOG_LEVEL, else 0, without it")
        ->transform(tools::number(0, 3))
        ->type_name("0..3");
    app.add_option("--log-folder", arguments.logFolder, "Folder of the log files")
        ->check(CLI::ExistingDirectory.description(""))
        ->type_name("DIR");
    std::string theme = "system";
    app.add_option("--theme", theme, "Colours; system, what Qt finds, without it")
        ->check([&themes](const std::string& name) {
            return themes.contains(name) ? std::string()
                                         : "\"" + name + "\" is no theme; there are system, light and dark";
        })
        ->type_name("system|light|dark");
    for (auto* const option : {device1, device2})
        option->check(notEmpty);

    if (const auto exit = tools::readCommandLine(app, argc, argv))
        return *exit;
    arguments.theme = themes.at(theme);
    return arguments;
}

}  // namespace opane::panel_tool
