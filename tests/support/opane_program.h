#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "simulator/served_module.h"
#include "support/program.h"

// The program opane against a module in this process, on a real pseudo-terminal.

namespace opane::test {

using simulator::Fault;
using simulator::ModuleState;
using simulator::SimulatedModule;
using Words = std::vector<std::string>;

inline Words opaneOn(const std::string& device, const Words& words) {
    Words all{OPANE_PROGRAM, "--device", device};
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

inline Words wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

class OpaneCommands : public testing::Test {
protected:
    ProgramEnd opane(const Words& words) { return runProgram(opaneOn(module.devicePath(), words)); }

    void set(const std::function<void(ModuleState&)>& change) {
        module.withModule([&](SimulatedModule& served) { change(served.state()); });
    }
    ModuleState state() {
        return module.withModule([](SimulatedModule& served) { return served.state(); });
    }
    std::size_t requests() {
        return module.withModule([](SimulatedModule& served) { return served.frames().size(); });
    }
    void fault(const simulator::FaultOrder& order) {
        module.withModule([&](SimulatedModule& served) { served.fault(order); });
    }

    simulator::ServedModule module;
    TemporaryFolder folder;
};

/// A byte of its own for every address of an EEPROM, as far as bytes go: 251 is prime.
inline std::string image(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(i % 251);
    return bytes;
}

template <class Eeprom>
std::string content(const Eeprom& eeprom) {
    return {eeprom.begin(), eeprom.end()};
}

}  // namespace opane::test
