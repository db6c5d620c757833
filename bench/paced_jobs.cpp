#include <array>
#include <stdexcept>

#include "figure.h"
#include "jobs.h"
#include "measure.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

struct Rate {
    std::int32_t baudRate;
    double textLimit;  // time / wire time
    double textAim;
};

// A text is the most talkative job: 15 turns of the line, each of 22 bytes.
constexpr std::array kRates{Rate{9600, 1.02, 1.012}, Rate{19200, 1.02, 1.012}, Rate{38400, 1.05, 1.025},
                            Rate{57600, 1.06, 1.035}};
constexpr double kLimit = 1.02;
constexpr double kAim = 1.008;

Figure measure(const Job& job, const Rate& rate) {
    simulator::ServedModule module({.baudRate = rate.baudRate, .quartz = 3, .pace = true});  // offers every rate
    BenchLink bench(module.devicePath(), rate.baudRate);
    std::vector<double> seconds;
    for (int round = 0; round < kRounds; ++round) {
        const Stopwatch watch;
        if (!job.run(bench))
            throw std::runtime_error(std::string(job.name) + " failed");
        seconds.push_back(watch.seconds());
    }
    const double wire = job.wireSeconds(rate.baudRate);
    const bool isText = job.exchanges == jobs().front().exchanges;
    return {std::string(job.name) + " at " + std::to_string(rate.baudRate) + " baud, time / wire time",
            median(seconds) / wire, isText ? rate.textLimit : kLimit, isText ? rate.textAim : kAim,
            number(median(seconds) * 1000, "ms of ") + number(wire * 1000, "ms")};
}

}  // namespace

Measured pacedJobs() {
    Measured measured;
    for (const Rate& rate : kRates) {
        for (const Job& job : jobs())
            measured.figures.push_back(measure(job, rate));
    }
    return measured;
}

}  // namespace opane::bench
