// What the simulated module reads: the wire, and its orders from people.
//
// Input: lines of orders for faults and readings up to an empty line, then stretches of the wire: how many bytes, the
// milliseconds before them, and the bytes. A stretch of 255 bytes stands for a change of the host's speed instead.

#include <stdexcept>

#include "fuzz_input.h"
#include "require.h"
#include "simulator/faults.h"
#include "simulator/readings.h"
#include "simulator/simulated_module.h"

namespace opane::fuzz {
namespace {

using simulator::Micros;

void tryModule(Input input) {
    simulator::SimulatedModule module({.bus = input.byte() % 2 == 1 ? simulator::Bus::rs485 : simulator::Bus::rs232,
                                       .pace = input.byte() % 2 == 1,
                                       .drift = input.byte() % 2 == 1});
    for (std::string line = input.textUpTo('\n'); !line.empty(); line = input.textUpTo('\n')) {
        try {
            if (line.find('=') == std::string::npos)
                module.fault(simulator::faultOrder(line));
            else
                simulator::setReading(module.state(), line);
        } catch (const std::invalid_argument& error) {
            require(error.what()[0] != '\0', "a refusal without a text");
        }
    }
    constexpr std::array kRates{1200, 9600, 19200, 38400, 57600, 0};
    Micros now = 1'000'000;
    std::size_t heard = 0;
    std::size_t said = 0;
    while (!input.isEmpty()) {
        const std::size_t count = input.byte();
        now += Micros{input.byte()} * 1000;
        if (count == 255) {
            module.hostBaudRate(kRates.at(input.byte() % kRates.size()));
            continue;
        }
        const auto bytes = input.bytes(count);
        heard += bytes.size();
        module.receive(bytes, now);
        said += module.takeOutput(now).size();
    }
    said += module.takeOutput(now + 3'600'000'000).size();
    require(!module.nextOutputAt() || module.unplugged() || *module.nextOutputAt() > now, "an answer is kept for ever");
    // A request of 7 bytes is answered by at most 262, with 255 bytes of garbage before them; and there is the echo.
    require(said <= heard * (1 + (262 + 255 * 16)), "it says more than it was asked");
}

}  // namespace
}  // namespace opane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    opane::fuzz::tryModule(opane::fuzz::Input(data, size));
    return 0;
}
