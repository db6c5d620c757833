#include "simulator/readings.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "shared/whole_number.h"

namespace opane::simulator {
namespace {

constexpr int kMostValue = 65'535;  // two bytes in the answer

struct Reading {
    std::string_view name;
    std::uint16_t ModuleState::*member;  // nullptr: the ADC channel
    std::size_t channel;
    int band;           // how far it drifts, up and down
    int periodSeconds;  // of one way up, down and back
    std::string_view unit;
};

constexpr Reading kReadings[] = {
    {"luminosity", nullptr, 0, 60, 40, "counts"},
    {"temperature-adc", nullptr, 2, 4, 150, "counts"},
    {"battery", nullptr, 3, 8, 300, "counts"},
    {"temperature", &ModuleState::temperature, 0, 15, 150, "tenths of a degree"},
    {"vlcd", &ModuleState::vlcd, 0, 3, 200, "counts"},
};

template <class State>
auto& valueOf(State& state, const Reading& reading) {
    return reading.member != nullptr ? state.*reading.member : state.adc.at(reading.channel);
}

// A triangle: 0 at the start of each period, band after a quarter of it, -band after three.
Micros offset(const Reading& reading, Micros elapsed) {
    const Micros quarter = Micros{reading.periodSeconds} * 1'000'000 / 4;
    const Micros phase = elapsed % (4 * quarter);
    const Micros height = phase < quarter ? phase : phase < 3 * quarter ? 2 * quarter - phase : phase - 4 * quarter;
    return reading.band * height / quarter;
}

std::uint16_t& readingOf(ModuleState& state, const std::string& name) {
    constexpr std::string_view kChannel = "adc:";
    if (name.starts_with(kChannel)) {
        const auto channel = wholeNumber(std::string_view(name).substr(kChannel.size()));
        if (channel && *channel >= 0 && *channel < static_cast<std::int64_t>(state.adc.size()))
            return state.adc.at(static_cast<std::size_t>(*channel));
    }
    const auto reading = std::ranges::find(kReadings, name, &Reading::name);
    if (reading != std::end(kReadings))
        return valueOf(state, *reading);
    std::string names;
    for (const Reading& known : kReadings)
        names += std::string(known.name) + ", ";
    throw std::invalid_argument("no such reading; there are " + names + "adc:0 to adc:255");
}

}  // namespace

void setReading(ModuleState& state, std::string_view order) {
    const std::string text(order);
    try {
        const auto equals = order.find('=');
        const bool named = equals != std::string_view::npos;
        const auto value = named ? wholeNumber(order.substr(equals + 1)) : std::nullopt;
        if (!value || *value < 0 || *value > kMostValue)
            throw std::invalid_argument("expected NAME=VALUE, with a value of 0 to " + std::to_string(kMostValue));
        readingOf(state, text.substr(0, equals)) = static_cast<std::uint16_t>(*value);
    } catch (const std::invalid_argument& error) {
        throw std::invalid_argument("reading \"" + text + "\": " + error.what());
    }
}

std::uint16_t drifted(const ModuleState& state, const std::uint16_t& reading) {
    const auto named =
        std::ranges::find_if(kReadings, [&](const Reading& row) { return &valueOf(state, row) == &reading; });
    if (named == std::end(kReadings))
        return reading;
    return static_cast<std::uint16_t>(
        std::clamp<Micros>(reading + offset(*named, state.driftingFor), 0, Micros{kMostValue}));
}

std::string readingHelp() {
    std::string help = "Readings, 0 to 65535 (what they start with, and how far they drift in what time):\n";
    const ModuleState state;
    for (const Reading& reading : kReadings) {
        std::string name(reading.name);
        name.resize(20, ' ');
        help += "  " + name + std::to_string(valueOf(state, reading)) + " +-" + std::to_string(reading.band) + " in " +
                std::to_string(reading.periodSeconds) + " s, " + std::string(reading.unit) + "\n";
    }
    return help + "  adc:N               any ADC channel, 0 to 255; 0, 2 and 3 are the first three above\n";
}

}  // namespace opane::simulator
