#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <sstream>
#include <thread>

#include "simulator/served_module.h"
#include "support/program.h"
#include "support/row_name.h"

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

/// The program opane against a module in this process, on a real pseudo-terminal.
class OpaneCommands : public testing::Test {
protected:
    ProgramEnd opane(const Words& words) { return runProgram(opaneOn(module.devicePath(), words)); }
    ProgramEnd run(const std::string& line) { return opane(wordsOf(line)); }

    void set(const std::function<void(ModuleState&)>& change) {
        module.withModule([&](SimulatedModule& served) { change(served.state()); });
    }
    ModuleState state() {
        return module.withModule([](SimulatedModule& served) { return served.state(); });
    }
    std::size_t requests() {
        return module.withModule([](SimulatedModule& served) { return served.frames().size(); });
    }
    void waitForRequests(std::size_t count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (requests() < count && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_GE(requests(), count) << "it has ended too early";
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

/// A white picture with a black pixel in its top left corner.
inline std::string bitmap(int width, int height, int bits = 1, int headerSize = 40) {
    std::string file = "BM";
    const auto put = [&file](int value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file += static_cast<char>((value >> (8 * i)) & 0xFF);
    };
    file.append(8, 0);
    for (const int field : {14 + headerSize + 8, headerSize, width, height, 1 | bits << 16})
        put(field, 4);
    file.resize(static_cast<std::size_t>(14 + headerSize + 4));  // the first colour is black,
    put(0xFFFFFF, 4);                                            // the second one white
    const auto rowBytes = static_cast<std::size_t>((width * bits + 31) / 32 * 4);
    file.append(rowBytes * static_cast<std::size_t>(std::abs(height)), '\xFF');
    file[file.size() - rowBytes] = '\x7F';
    return file;
}

}  // namespace opane::test
