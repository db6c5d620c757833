#include <CLI/CLI.hpp>

#include "subcommands.h"
#include "survey.h"

namespace opane::tool {
namespace {

struct AdcRow {
    std::int16_t number;
    const char* key;
    const char* label;
};
constexpr AdcRow kAdcRows[]{
    {0, "luminosity", "luminosity (ADC 0)"},
    {1, "adc1", "ADC 1"},
    {2, "temperatureAdc", "temperature (ADC 2)"},
    {3, "batteryVoltage", "battery voltage (ADC 3)"},
};

// Parameters of OPaneCmd_TempIRandVLCD.
constexpr std::int16_t kTemperature = 0;
constexpr std::int16_t kVlcd = 2;

/// The module counts tenths of a degree.
Shown shownTemperature(std::int32_t tenths) {
    const std::int32_t rest = tenths % 10;
    return {tenths / 10.0,
            std::to_string(tenths / 10) + (rest == 0 ? std::string() : "." + std::to_string(rest)) + " °C"};
}

using Show = Shown (*)(std::int32_t);

void add(Survey& survey, const char* key, const char* label, std::optional<std::int32_t> value, Show show) {
    survey.add(key, label, value ? std::optional(show(*value)) : std::nullopt);
}

std::optional<std::int32_t> readParameter(Survey& survey, const char* label, std::int16_t parameter) {
    return survey.ask<std::int32_t>(label, [parameter](clsOPane& link, std::int32_t& value) {
        return link.OPaneCmd_TempIRandVLCD(parameter, value);
    });
}

}  // namespace

void readReadings(Survey& survey) {
    for (const AdcRow& row : kAdcRows) {
        const auto value = survey.ask<std::int32_t>(row.label, [&row](clsOPane& link, std::int32_t& counts) {
            return link.OPaneCmd_ReadADC(row.number, counts);
        });
        add(survey, row.key, row.label, value, shownNumber);
    }
    add(survey, "temperature", "temperature", readParameter(survey, "temperature", kTemperature), shownTemperature);
    add(survey, "vlcd", "Vlcd", readParameter(survey, "Vlcd", kVlcd), shownNumber);
}

Run setUpReadings(CLI::App& /*command*/) {
    return [](Session& session) { return runSurvey(session, readReadings); };
}

}  // namespace opane::tool
