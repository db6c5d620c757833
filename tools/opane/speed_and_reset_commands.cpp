#include <CLI/CLI.hpp>
#include <array>
#include <memory>

#include "run_on_link.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

/// The fastest rate that each crystal, 1 to 3, offers; it offers all slower ones too (docs/wire.md, "Baud rates").
constexpr std::array<std::int32_t, 3> kFastestRates{19200, 38400, 57600};

struct BaudrateOptions {
    std::int32_t rate = 0;
    std::int16_t quartz = 2;
};

constexpr std::int16_t kResetModule = 0;
constexpr std::int16_t kResetLightControl = 1;

}  // namespace

Run setUpBaudrate(CLI::App& command) {
    const auto options = std::make_shared<BaudrateOptions>();
    command.add_option("RATE", options->rate, "new baud rate; connect with --baud RATE from then on")
        ->check(isBaudRate)
        ->required();
    command
        .add_option("--quartz", options->quartz, "crystal of the module: 1 offers up to 19200 baud, 2 38400, 3 57600")
        ->check(CLI::Range(1, 3))
        ->capture_default_str();
    return [options](const Arguments& arguments) {
        const std::int32_t fastest = kFastestRates.at(static_cast<std::size_t>(options->quartz - 1));
        if (options->rate > fastest)
            throw InputError("a module with quartz " + std::to_string(options->quartz) + " does not offer " +
                             std::to_string(options->rate) + " baud; its fastest rate is " + std::to_string(fastest));
        return runOnLink(arguments, "baudrate",
                         [&](clsOPane& link) { return link.OPaneCmd_RS232Baudrate(options->rate, options->quartz); });
    };
}

Run setUpReset(CLI::App& command) {
    const auto part = std::make_shared<std::string>("module");
    command.add_option("PART", *part, "module, which starts again at 9600 baud, or light: the light control alone")
        ->check(CLI::IsMember({"module", "light"}))
        ->capture_default_str();
    return [part](const Arguments& arguments) {
        const std::int16_t type = *part == "module" ? kResetModule : kResetLightControl;
        return runOnLink(arguments, "reset", [type](clsOPane& link) { return link.OPaneCmd_Reset(type); });
    };
}

}  // namespace opane::tool
