#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "simulator/faults.h"
#include "simulator/simulated_module.h"

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

/// The exit status of a command line that only asked for help (0), or was wrong (2).
struct Exit {
    int status = 0;
};

/// Reads the command line. Prints the help to standard output, or what is wrong to standard error.
std::variant<Arguments, Exit> readArguments(int argc, char** argv);

}  // namespace opane::sim
