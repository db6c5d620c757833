#include <sys/resource.h>

#include <chrono>

#include "bench_link.h"
#include "figure.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

double threadProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Figure waiting(const std::string& name, double limit, const std::function<void()>& eventHook) {
    simulator::ServedModule module;
    BenchLink bench(module.devicePath(), 9600);
    module.withModule([](simulator::SimulatedModule& served) { served.fault({.fault = simulator::Fault::silent}); });
    bench.services()->eventHook = eventHook;

    const auto start = std::chrono::steady_clock::now();
    const double used = threadProcessorSeconds();
    bench.link().Timeout(1000);
    for (int i = 0; i < 3; ++i)
        bench.link().SendSynchronizeCharacter(3);
    const double processor = threadProcessorSeconds() - used;
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return {name, 100 * processor / elapsed, limit,
            std::to_string(processor * 1000) + " ms of " + std::to_string(elapsed * 1000) + " ms"};
}

}  // namespace

Figures silentModule() {
    return {waiting("processor share while a module is silent, %", 0.5, {}),
            waiting("the same with host events served every millisecond, %", 6, [] {})};
}

}  // namespace opane::bench
