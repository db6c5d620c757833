#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "simulator/faults.h"
#include "simulator/simulated_module.h"
#include "tools/command_line/command_line.h"

namespace opane::sim {

struct Arguments {
    simulator::ModuleOptions module;
    std::filesystem::path link;  ///< empty: none
    bool screen = false;
    std::string snapshot;  ///< PNG file; empty: none
    std::vector<simulator::FaultOrder> faults;
    std::vector<std::string> readings;  ///< NAME=VALUE, not looked at yet
    int key = 0;                        ///< pressed at the start; 0: none
    std::string systemEeprom;           ///< file that keeps it; empty: none
    std::string userEeprom;
};

/// Reads the command line, as tools::readCommandLine.
std::variant<Arguments, tools::Exit> readArguments(int argc, char** argv);

}  // namespace opane::sim
