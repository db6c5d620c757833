#include <functional>
#include <thread>

#include "bench_link.h"
#include "figure.h"
#include "measure.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

void silence(simulator::ServedModule& module) {
    module.withModule([](simulator::SimulatedModule& served) { served.fault({.fault = simulator::Fault::silent}); });
}

Figure waiting(const std::string& name, double limit, double aim, const std::function<void()>& eventHook) {
    simulator::ServedModule module;
    BenchLink bench(module.devicePath(), 9600);
    silence(module);
    bench.services()->eventHook = eventHook;
    bench.link().Timeout(1000);
    std::vector<double> shares;
    for (int round = 0; round < kRounds; ++round) {
        const Stopwatch watch;
        const double used = processorSeconds(CLOCK_THREAD_CPUTIME_ID);
        bench.link().SendSynchronizeCharacter(3);
        shares.push_back(100 * (processorSeconds(CLOCK_THREAD_CPUTIME_ID) - used) / watch.seconds());
    }
    return {name, median(shares), limit, aim, "one thread, " + std::to_string(kRounds) + " waits of 1 s"};
}

/// Each round in a thread of its own, as one takes long (docs/bounds.md).
Figure wholeCommand() {
    std::vector<double> seconds(kRounds);
    std::vector<std::thread> rounds;
    rounds.reserve(seconds.size());
    for (double& round : seconds) {
        rounds.emplace_back([&round] {
            simulator::ServedModule module;
            BenchLink bench(module.devicePath(), 9600);
            silence(module);
            const Stopwatch watch;
            const bool answered = bench.link().OPaneCmd_Clear(0);
            round = answered ? 0 : watch.seconds();
        });
    }
    for (std::thread& round : rounds)
        round.join();
    return {"a command on a silent module, s", median(seconds), 18.9, 18.8, "6 waits of 1 s and 125 of 0.1 s"};
}

}  // namespace

Measured silentModule() {
    Measured measured;
    measured.figures = {waiting("processor share while a module is silent, %", 0.5, 0.1, {}),
                        waiting("the same with host events served every millisecond, %", 6, 4, [] {}), wholeCommand()};
    return measured;
}

Measured timeOuts() {
    simulator::ServedModule module;
    BenchLink bench(module.devicePath(), 9600);
    silence(module);
    Measured measured;
    for (const std::int32_t timeoutMs : {10, 100, 1000}) {
        bench.link().Timeout(timeoutMs);
        std::vector<double> late;
        for (int round = 0; round < kRounds; ++round) {
            const Stopwatch watch;
            bench.link().SendSynchronizeCharacter(3);
            late.push_back(watch.seconds() * 1000 - timeoutMs);
        }
        measured.figures.push_back({"a time-out of " + std::to_string(timeoutMs) + " ms ends late by, ms", median(late),
                                    2, 1.5, "worst " + number(*std::max_element(late.begin(), late.end()), "ms")});
    }
    return measured;
}

}  // namespace opane::bench
