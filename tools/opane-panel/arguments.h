#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "forms/qt/theme.h"
#include "tools/command_line/command_line.h"

namespace opane::panel_tool {

struct Arguments {
    std::array<std::string, 2> devices;  ///< of COM 1 and COM 2; empty: not told
    bool simulate = false;
    std::optional<std::int16_t> logLevel;  ///< nothing: what the environment says
    std::string logFolder;                 ///< empty: the library's own
    qt::Theme theme = qt::Theme::system;

    /// Whether it is told where the ports are, so that the system's are none of ours.
    bool hidesOtherPorts() const { return simulate || !devices[0].empty() || !devices[1].empty(); }
};

/// Reads the command line, as tools::readCommandLine.
std::variant<Arguments, tools::Exit> readArguments(int argc, char** argv);

}  // namespace opane::panel_tool
