#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "commands/command_run.h"
#include "platform/dialogs.h"
#include "platform/services.h"

namespace opane {
namespace {

constexpr auto kErrorTitle = "ERREUR DE COMMUNICATION";
constexpr auto kModuleLost =
    "La vitesse de transmission a été changée sur le module OPANE\r\n"
    "mais il ne répond plus au caractère de synchronisation.";
constexpr auto kPortLost =
    "Impossible de changer la vitesse sur le PC. Le module est\r\n"
    "maintenant complétement désynchronisé. Déconnecter-le et\r\n"
    "essayez de rétablir la communication).";

constexpr std::int32_t kRateAfterReset = 9600;
constexpr std::int32_t kResetMs = 1000;  // a module takes that long to start again

struct RateCode {
    std::uint8_t code;
    std::uint8_t flag;
};

constexpr std::int16_t kQuartzTypes = 3;

/// What tells a module its new rate, by its crystal (docs/wire.md, "Baud rates").
struct RateRow {
    std::int32_t baudRate;
    std::array<std::optional<RateCode>, kQuartzTypes> byQuartz;
};

constexpr std::array kRates{
    RateRow{1200, {{RateCode{232, 0}, RateCode{224, 0}, RateCode{187, 1}}}},
    RateRow{2400, {{RateCode{244, 0}, RateCode{240, 0}, RateCode{239, 0}}}},
    RateRow{4800, {{RateCode{250, 0}, RateCode{248, 0}, RateCode{247, 0}}}},
    RateRow{9600, {{RateCode{253, 0}, RateCode{252, 0}, RateCode{247, 1}}}},
    RateRow{19200, {{RateCode{253, 1}, RateCode{254, 0}, RateCode{254, 0}}}},
    RateRow{38400, {{std::nullopt, RateCode{255, 0}, RateCode{255, 0}}}},
    RateRow{57600, {{std::nullopt, std::nullopt, RateCode{255, 1}}}},
};

void showError(const char* text) {
    showMessageBox(text, kErrorTitle, MessageBoxButtons::ok);
}

void logChanged(CommandRun& run, const char* changedText) {
    run.log(changedText);
    run.log("Resynchronize OK");
}

}  // namespace

bool clsOPane::OPaneCmd_RS232Baudrate(std::int32_t lngNewBaudrate, std::int16_t intQuartzType) {
    const auto* const row = std::find_if(kRates.begin(), kRates.end(),
                                         [=](const RateRow& rate) { return rate.baudRate == lngNewBaudrate; });
    if (row == kRates.end())
        return false;
    CommandRun run(*this, kRS232Baudrate);
    run.log("Actual Baudrate : " + std::to_string(Baudrate()));
    run.log("New Baudrate : " + std::to_string(lngNewBaudrate));
    if (lngNewBaudrate == Baudrate())
        return true;
    if (intQuartzType < 1 || intQuartzType > kQuartzTypes)
        return false;
    const auto rate = row->byQuartz[static_cast<std::size_t>(intQuartzType - 1)];
    if (!rate)
        return false;
    if (!run.send(rate->code, rate->flag))
        return false;

    const std::int32_t rateBefore = Baudrate();
    Baudrate(lngNewBaudrate);
    if (!IsOpen()) {
        showError(kPortLost);
        Baudrate(rateBefore);
        return false;
    }
    if (!synchroniseAtNewRate())
        return false;
    logChanged(run, "Baudrate changed on PC and module");
    return true;
}

bool clsOPane::OPaneCmd_Reset(std::int16_t intTypeOfReset) {
    CommandRun run(*this, kReset);
    run.log("Reset Type : " + std::to_string(intTypeOfReset));
    if (!run.send(frameByte(intTypeOfReset, "type of reset"), 0))
        return false;
    if (intTypeOfReset != kResetModule)
        return intTypeOfReset == kResetLightControl;

    Baudrate(kRateAfterReset);
    if (!IsOpen()) {
        showError(kPortLost);
        return false;
    }
    TickCounter& ticks = *services().tickCounter;
    const std::uint32_t start = ticks.now();
    while (!isPast(start, ticks.now(), kResetMs))  // the one wait that runs no host events
        ticks.pause();
    if (!synchroniseAtNewRate())
        return false;
    logChanged(run, "Baudrate changed on PC and module to 9600");
    return true;
}

bool clsOPane::synchroniseAtNewRate() {
    if (SendSynchronizeCharacter(nodeNumber_))
        return true;
    showError(kModuleLost);
    synchronized_ = false;
    return false;
}

}  // namespace opane
