#include <algorithm>
#include <array>
#include <chrono>

#include "bench_link.h"
#include "figure.h"
#include "platform/folders.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

constexpr int kRounds = 9;
constexpr int kExchanges = 15;  // of a whole line of text
constexpr int kBytes = 15 + 7;  // request and answer of a block
constexpr int kBitsPerByte = 10;

Figure at(std::int32_t baudRate, double limit) {
    simulator::ServedModule module({.baudRate = baudRate, .pace = true});
    BenchLink bench(module.devicePath(), baudRate);
    const std::string generator = dataFolder() + "/latin1.gen";

    std::array<double, kRounds> seconds{};
    for (double& round : seconds) {
        std::int16_t status = 1;
        const auto start = std::chrono::steady_clock::now();
        bench.object().DisplayString("ABCDEFGHIJKLMNOPQRST", 0, 0, 0, 0, generator, status);
        round = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (status != 0)
            throw std::runtime_error("a paced text was not shown");
    }
    std::sort(seconds.begin(), seconds.end());
    const double wire = static_cast<double>(kExchanges * kBytes * kBitsPerByte) / baudRate;
    const double median = seconds[kRounds / 2];
    return {"20-character text at " + std::to_string(baudRate) + " baud, time / wire time", median / wire, limit,
            "median of " + std::to_string(kRounds) + ": " + std::to_string(median * 1000) + " ms of " +
                std::to_string(wire * 1000) + " ms"};
}

}  // namespace

Figures pacedText() {
    return {at(9600, 1.02), at(19200, 1.02), at(38400, 1.05)};
}

}  // namespace opane::bench
