#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "support/campaign/campaign.h"

namespace {

using namespace opane::test::campaign;

constexpr int kWrongUsage = 2;
constexpr double kMostBorderline = 0.02;     // share of the cases
constexpr std::size_t kMostGrowthKiB = 512;  // of the process, after its first tenth
constexpr std::size_t kMostComplaints = 10;

struct Options {
    std::uint64_t seed = 1;
    std::size_t cases = 500'000;
    std::optional<std::size_t> onlyCase{};
    bool onTerminal = false;
};

void printUsage() {
    std::printf(
        "usage: opane-campaign [--seed N] [--cases N] [--pty] [--case K]\n"
        "Exchanges on a line on which everything goes wrong, each followed by a good one; checked against the rules.\n"
        "  --seed N   what is drawn (1); the first %zu cases are the same for every seed\n"
        "  --cases N  how many cases, two exchanges each (500000)\n"
        "  --pty      on a pseudo-terminal, through the system's serial port, instead of in memory\n"
        "  --case K   runs case K of the seed alone and describes it\n"
        "Exit status: 0 all was right, 1 something was not, 2 wrong usage or no pseudo-terminal.\n",
        enumeratedCases());
}

std::optional<Options> readOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--pty") {
            options.onTerminal = true;
            continue;
        }
        std::uint64_t value = 0;
        const std::string_view text = i + 1 < argc ? argv[i + 1] : "";
        const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc{} || rest != text.data() + text.size())
            return std::nullopt;
        ++i;
        if (name == "--seed")
            options.seed = value;
        else if (name == "--cases")
            options.cases = value;
        else if (name == "--case")
            options.onlyCase = value;
        else
            return std::nullopt;
    }
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
bool isRight(const Options& options, std::size_t number, Carrier& carrier, Tally& tally) {
    const Case tried = caseOf(options.seed, number);
    const Outcome outcome = run(tried, carrier);
    tally.add(tried, outcome);
    if (options.onlyCase)
        std::printf("%s\n%s after %zu sends%s\n", description(tried).c_str(),
                    outcome.raised ? "error" : (outcome.result ? "true" : "false"), outcome.sends,
                    outcome.verdict == Verdict::borderline ? " (borderline, not judged)" : "");
    if (!outcome.complaint.empty())
        std::printf("WRONG: %s\n  %s\n  again: opane-campaign --seed %llu --case %zu%s\n", outcome.complaint.c_str(),
                    description(tried).c_str(), static_cast<unsigned long long>(options.seed), number,
                    options.onTerminal ? " --pty" : "");
    return outcome.complaint.empty();
}

int campaign(const Options& options) {
    const auto carrier = options.onTerminal ? terminalCarrier() : memoryCarrier();
    Tally tally;
    if (options.onlyCase)
        return isRight(options, *options.onlyCase, *carrier, tally) ? 0 : 1;

    std::printf("seed %llu, %s\n", static_cast<unsigned long long>(options.seed),
                options.onTerminal ? "on a pseudo-terminal" : "in memory");
    const auto start = std::chrono::steady_clock::now();
    std::size_t wrong = 0;
    std::size_t residentBefore = residentKiB();
    for (std::size_t number = 0; number < options.cases && wrong < kMostComplaints; ++number) {
        wrong += isRight(options, number, *carrier, tally) ? 0 : 1;
        if (number == options.cases / 10)
            residentBefore = residentKiB();
    }
    const std::size_t growth = residentKiB() - std::min(residentKiB(), residentBefore);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    std::printf("%zu cases, %zu exchanges, %zu sends in %.1f s\n", tally.cases, tally.exchanges, tally.sends, seconds);
    std::printf("true %zu, false %zu, error raised %zu; resynchronised %zu; borderline %zu; wrong %zu\n", tally.good,
                tally.failed, tally.raised, tally.resynchronised, tally.borderline, wrong);
    for (std::size_t kind = 0; kind < tally.byKind.size(); ++kind)
        std::printf("%s%s %zu", kind == 0 ? "cases with " : ", ", kindName(static_cast<Kind>(kind)).c_str(),
                    tally.byKind[kind]);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("\nmemory: at most %ld KiB, grown by %zu KiB after the first tenth\n", usage.ru_maxrss, growth);

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
    if (!options) {
        printUsage();
        return kWrongUsage;
    }
    setenv("LC_ALL", "C", 1);  // another locale would be read from its files for every log line
    try {
        return campaign(*options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "opane-campaign: %s\n", error.what());
        return kWrongUsage;
    }
}
