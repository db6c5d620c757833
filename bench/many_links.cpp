#include <atomic>
#include <barrier>
#include <thread>

#include "figure.h"
#include "jobs.h"
#include "measure.h"
#include "module_farm.h"

namespace opane::bench {
namespace {

constexpr std::int32_t kBaudRate = 9600;

void measure(const Job& job, int links, Figures& figures) {
    const ModuleFarm farm(links, kBaudRate, true);
    std::vector<double> seconds(static_cast<std::size_t>(links));
    std::atomic<int> failures = 0;
    std::barrier begin(links + 1);
    std::barrier end(links + 1);
    std::vector<std::thread> threads;
    threads.reserve(seconds.size());
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        threads.emplace_back([&, i] {
            std::optional<BenchLink> bench;
            try {
                bench.emplace(farm.devices()[i], kBaudRate);
            } catch (const std::exception&) {
                ++failures;
            }
            begin.arrive_and_wait();
            // Hosts that know nothing of each other do not speak all at the same moment.
            const double exchangeSeconds = job.wireSeconds(kBaudRate) / job.exchanges;
            std::this_thread::sleep_for(
                std::chrono::duration<double>(exchangeSeconds * static_cast<double>(i) / links));
            std::vector<double> rounds;
            for (int round = 0; bench && round < kRounds; ++round) {
                const Stopwatch watch;
                if (!job.run(*bench))
                    ++failures;
                rounds.push_back(watch.seconds());
            }
            seconds[i] = bench ? median(rounds) : 0;
            end.arrive_and_wait();
        });
    }
    begin.arrive_and_wait();
    const Stopwatch watch;
    const double used = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
    const double usedByModules = processorSeconds(farm.processorClock());
    end.arrive_and_wait();
    const double share = 100 * (processorSeconds(CLOCK_PROCESS_CPUTIME_ID) - used) / watch.seconds();
    const double moduleShare = 100 * (processorSeconds(farm.processorClock()) - usedByModules) / watch.seconds();
    for (std::thread& thread : threads)
        thread.join();
    if (failures != 0)
        throw std::runtime_error(std::to_string(failures.load()) + " exchanges failed on " + std::to_string(links) +
                                 " links");

    const double wire = job.wireSeconds(kBaudRate);
    const double slowest = *std::max_element(seconds.begin(), seconds.end());
    const std::string name =
        std::string(job.name) + " on " + std::to_string(links) + (links == 1 ? " link: " : " links at once: ");
    figures.push_back({name + "slowest / wire time", slowest / wire, 1.05, 1.02,
                       "9600 baud; the median link " + number(median(seconds) / wire, "")});
    figures.push_back({name + "host, % of a processor", share, 100, 50,
                       "all threads; the modules, another process, " + number(moduleShare, "%")});
}

}  // namespace

Measured manyLinks() {
    Measured measured;
    // The host of a bitmap mostly writes; a text has a third of its bytes come back, each on its own.
    for (const Job& job : {jobs()[1], jobs()[0]}) {
        for (const int links : {1, 16, 64, 256})
            measure(job, links, measured.figures);
    }
    return measured;
}

}  // namespace opane::bench
