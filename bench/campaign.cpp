#include <sys/resource.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "support/campaign/campaign.h"
#include "tools/command_line/command_line.h"

namespace {

using namespace opane::test::campaign;

constexpr double kMostBorderline = 0.02;     // share of the cases
constexpr std::size_t kMostGrowthKiB = 512;  // of the process, after its first tenth
constexpr std::size_t kMostComplaints = 10;

struct Options {
    std::uint64_t seed = 1;
    std::size_t cases = 500'000;
    std::optional<std::size_t> onlyCase{};
    bool onTerminal = false;
};

std::variant<Options, opane::tools::Exit> readOptions(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Exchanges on a line on which everything goes wrong, each followed by a good one; checked against the rules.",
        "opane-campaign");
    app.footer("Exit status: 0 all was right, 1 something was not, 2 wrong usage or no pseudo-terminal.");
    const auto anyNumber = opane::tools::number(0, std::numeric_limits<std::int64_t>::max());
    const std::string same = std::to_string(enumeratedCases().size());
    app.add_option("--seed", options.seed,
                   "what is drawn (1); the first " + same + " cases are the same for every seed")
        ->transform(anyNumber)
        ->type_name("N");
    app.add_option("--cases", options.cases, "how many cases, two exchanges each (500000)")
        ->transform(anyNumber)
        ->type_name("N");
    app.add_flag("--pty", options.onTerminal,
                 "on a pseudo-terminal, through the system's serial port, instead of in memory");
    app.add_option("--case", options.onlyCase, "runs that case of the seed alone and describes it")
        ->transform(anyNumber)
        ->type_name("K");
    if (const auto exit = opane::tools::readCommandLine(app, argc, argv))
        return *exit;
    return options;
}

std::size_t residentKiB() {
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

/// Runs a case; prints what was wrong and how to see it again.
bool isRight(const Options& options, std::size_t number, opane::simulator::PseudoTerminal* terminal, Tally& tally) {
    const Case tried = caseOf(options.seed, number);
    const Judgement outcome = run(tried, terminal);
    tally.add(outcome);
    if (options.onlyCase)
        std::printf("%s\n%s after %zu sends%s\n", description(tried).c_str(),
                    outcome.raised ? "error" : (outcome.result ? "true" : "false"), outcome.sends,
                    outcome.borderline ? " (borderline, not judged)" : "");
    if (!outcome.complaint.empty())
        std::printf("WRONG: %s\n  %s\n  again: opane-campaign --seed %llu --case %zu%s\n", outcome.complaint.c_str(),
                    description(tried).c_str(), static_cast<unsigned long long>(options.seed), number,
                    options.onTerminal ? " --pty" : "");
    return outcome.complaint.empty();
}

int campaign(const Options& options) {
    const auto terminal = options.onTerminal ? std::make_unique<opane::simulator::PseudoTerminal>() : nullptr;
    Tally tally;
    if (options.onlyCase)
        return isRight(options, *options.onlyCase, terminal.get(), tally) ? 0 : 1;

    std::printf("seed %llu, %s\n", static_cast<unsigned long long>(options.seed),
                options.onTerminal ? "on a pseudo-terminal" : "in memory");
    const auto start = std::chrono::steady_clock::now();
    std::size_t wrong = 0;
    std::size_t residentBefore = residentKiB();
    for (std::size_t number = 0; number < options.cases && wrong < kMostComplaints; ++number) {
        wrong += isRight(options, number, terminal.get(), tally) ? 0 : 1;
        if (number == options.cases / 10)
            residentBefore = residentKiB();
    }
    const std::size_t growth = residentKiB() - std::min(residentKiB(), residentBefore);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    std::printf("%zu cases, %zu exchanges, %zu sends in %.1f s\n", tally.cases, 2 * tally.cases, tally.sends, seconds);
    std::printf("true %zu, false %zu, error raised %zu; resynchronised %zu; borderline %zu; wrong %zu\n", tally.good,
                tally.failed, tally.raised, tally.resynchronised, tally.borderline, wrong);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("memory: at most %ld KiB, grown by %zu KiB after the first tenth\n", usage.ru_maxrss, growth);

    const bool grew = growth > kMostGrowthKiB;
    const bool unsure = static_cast<double>(tally.borderline) > kMostBorderline * static_cast<double>(tally.cases);
    if (grew)
        std::printf("WRONG: the memory grew by more than %zu KiB\n", kMostGrowthKiB);
    if (unsure)
        std::printf("WRONG: more than %.0f %% of the cases could not be judged\n", 100 * kMostBorderline);
    return wrong == 0 && !grew && !unsure ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = readOptions(argc, argv);
    if (const auto* exit = std::get_if<opane::tools::Exit>(&options))
        return exit->status;
    setenv("LC_ALL", "C", 1);  // another locale would be read from its files for every log line
    try {
        return campaign(std::get<Options>(options));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "opane-campaign: %s\n", error.what());
        return opane::tools::kWrongUsage;
    }
}
