#include <filesystem>
#include <stdexcept>

#include "bench_link.h"
#include "figure.h"
#include "measure.h"
#include "platform/folders.h"
#include "shared/mdlConstantes.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kExchanges = 500;

double microsecondsPerExchange(clsOPane& link) {
    const Stopwatch watch;
    for (int i = 0; i < kExchanges; ++i) {
        ByteArray info;
        if (!link.SendDataAndReceiveResponse(0, 0, 0, 9, ByteArray{0}, info))
            throw std::runtime_error("an exchange failed");
    }
    return watch.seconds() / kExchanges * 1e6;
}

}  // namespace

Measured logCost() {
    const fs::path folder = fs::path(libraryFolder()) / "opane-bench-log";
    fs::remove_all(folder);
    fs::create_directory(folder);
    simulator::ServedModule module;
    BenchLink bench(module.devicePath(), 9600);
    clsLog& log = *threadLog();
    log.LogFolder(folder.string());

    std::vector<double> added;
    microsecondsPerExchange(bench.link());
    const bool anyFile = !fs::is_empty(folder);
    for (int round = 0; round < kRounds; ++round) {
        log.LogLevel(0);
        const double without = microsecondsPerExchange(bench.link());
        log.LogLevel(3);
        added.push_back(microsecondsPerExchange(bench.link()) - without);
    }
    fs::remove_all(folder);
    Measured measured;
    measured.figures = {{"the log at level 3 adds to an exchange, us", median(added), 60, 20,
                         "two lines, " + std::to_string(kExchanges) + " exchanges a round"},
                        {"files that the log touches at level 0", anyFile ? 1.0 : 0.0, 0, 0, ""}};
    return measured;
}

}  // namespace opane::bench
