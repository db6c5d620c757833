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

constexpr std::int32_t kRateAfterReset = 9600;

/// Whether a command that changes the module's rate may have been carried out although it did not succeed: it was sent,
/// and the module has not been heard at its old rate since.
bool mayHaveActed(Connection& connection, std::int32_t newRate) {
    const clsOPane& link = connection.link();
    const bool isHeardAtOldRate = link.IsSynchronized() && link.Baudrate() != newRate;
    return connection.watcher().hasSent() && (!isHeardAtOldRate || connection.session().isCancelled());
}

/// What is to be said of the module's rate when a command that changes it did not succeed.
std::string ratesText(Connection& connection, std::int32_t newRate, const std::string& change,
                      const std::string& perhaps) {
    const std::string rate = std::to_string(newRate);
    if (!mayHaveActed(connection, newRate))
        return "";
    if (!connection.watcher().isConfirmed())
        return perhaps + rate + " baud";
    const std::string confirmed = "the module has confirmed " + change;
    if (connection.session().isCancelled())
        return confirmed + " and was not asked at " + rate + " baud any more";
    const std::string before = std::to_string(connection.session().arguments().baudRate);
    return confirmed + " and did not answer at " + rate + " baud; try --baud " + rate +
           (before == rate ? "" : ", else --baud " + before);
}

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
    return [options](Session& session) {
        const std::int32_t fastest = kFastestRates.at(static_cast<std::size_t>(options->quartz - 1));
        if (options->rate > fastest)
            throw InputError("a module with quartz " + std::to_string(options->quartz) + " does not offer " +
                             std::to_string(options->rate) + " baud; its fastest rate is " + std::to_string(fastest));
        return runOnLink(
            session, "baudrate",
            [&](clsOPane& link) { return link.OPaneCmd_RS232Baudrate(options->rate, options->quartz); },
            [&](Connection& connection) {
                return ratesText(connection, options->rate, "the change", "the module may now run at ");
            });
    };
}

Run setUpReset(CLI::App& command) {
    const auto part = std::make_shared<std::string>("module");
    command.add_option("PART", *part, "module, which starts again at 9600 baud, or light: the light control alone")
        ->check(CLI::IsMember({"module", "light"}))
        ->capture_default_str();
    return [part](Session& session) {
        const std::int16_t type = *part == "module" ? clsOPane::kResetModule : clsOPane::kResetLightControl;
        return runOnLink(
            session, "reset", [type](clsOPane& link) { return link.OPaneCmd_Reset(type); },
            [type](Connection& connection) {
                return type != clsOPane::kResetModule ? ""
                                                      : ratesText(connection, kRateAfterReset, "the reset",
                                                                  "the module may have been reset; it runs then at ");
            });
    };
}

}  // namespace opane::tool
