#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "simulator/module_state.h"

namespace opane::simulator {

/// Sets a reading by its name: "luminosity=564", "adc:7=12", "temperature=215" (docs/simulator.md). Values are
/// 0..65535.
/// @throws std::invalid_argument with a text that names the order and what was expected; nothing has been set then
void setReading(ModuleState& state, std::string_view order);

/// What a reading stands at after state.driftingFor: it goes up and down around the value that is set, within its band,
/// evenly and without chance.
/// @param reading  one of the state's own: an ADC channel, temperature or vlcd. Those without a name do not drift.
std::uint16_t drifted(const ModuleState& state, const std::uint16_t& reading);

/// A line for every reading, for people.
std::string readingHelp();

}  // namespace opane::simulator
