#pragma once

#include <cstdint>
#include <string_view>

namespace opane {

/// What the commands of the module differ in (docs/wire.md, "Commands").
struct Command {
    std::uint8_t type;      ///< of the request and of its answer
    std::string_view name;  ///< in the log, after "clsOPane,"
    std::uint8_t dataBytes = 0;
};

/// A command that shows row bytes at a block position.
struct BlockCommand : Command {
    std::int16_t lastLine;
    std::int16_t lastColumn;
};

inline constexpr Command kAffData{1, "AffData", 120};
inline constexpr BlockCommand kAffBloc1{{3, "AffBloc1", 8}, 7, 14};
inline constexpr BlockCommand kAffBloc4{{4, "AffBloc4", 32}, 6, 13};
inline constexpr Command kCadre{5, "Cadre"};
inline constexpr Command kClear{6, "Clear"};

}  // namespace opane
