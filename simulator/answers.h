#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "simulator/module_state.h"
#include "simulator/wire.h"

namespace opane::simulator {

/// Aux1 of a refusal; nothing has been changed then.
inline constexpr std::uint8_t kWrongLength = 1;
inline constexpr std::uint8_t kOutOfRange = 2;  ///< a position, address, register, code or setting that there is not

inline constexpr std::uint8_t kCommandError = 0;      ///< type of the answer to what is no command
inline constexpr std::size_t kLongestTransfer = 128;  ///< EEPROM bytes of one request

/// Carries out a request and makes its answer. Checksum and node are the caller's business.
Frame carryOut(ModuleState& state, const Frame& request);

/// The answer to a request that is no command or was not understood.
Frame commandError(const ModuleState& state);

/// Whether the request, answered so, has set the module's speed: a change of it, or a reset of the whole module.
bool setsSpeed(const Frame& request, const Frame& answer);

/// The rate that a module with this crystal (1..3) runs at after the code and flag; nothing when it does not offer it.
std::optional<int> baudRateOf(int quartz, std::uint8_t code, std::uint8_t flag);

/// Whether a module with this crystal (1..3) can run at the rate.
bool offersBaudRate(int quartz, int baudRate);

}  // namespace opane::simulator
