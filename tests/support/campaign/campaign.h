#pragma once

#include <array>
#include <string>
#include <vector>

#include "support/campaign/referee.h"

namespace opane::test::campaign {

/// One exchange on a line on which things go wrong, and a good one after it.
struct Case {
    Request request{};
    bool onBus = false;
    int node = 3;
    int baudRate = 9600;
    bool paced = false;
    std::int32_t timeoutMs = 1000;
    Micros startAt = 1'000'000;  ///< of the virtual clock
    std::vector<Spoil> spoils{};
};

/// Case number n of a seed. The first enumeratedCases() are the same for every seed: each kind of fault at every byte
/// of request, echo and answer of some commands, and behind them. The others are drawn: some faults on any exchange.
Case caseOf(std::uint64_t seed, std::size_t number);

std::size_t enumeratedCases();

/// For people.
std::string description(const Case& tried);

struct Outcome : Judgement {
    bool result = false;
    bool raised = false;
};

/// Runs one case from a new link on. Checked are what the referee says, the longest time of docs/bounds.md, and that
/// after one quiet time-out the next good exchange works.
Outcome run(const Case& tried, Carrier& carrier);

/// What cases have come to.
struct Tally {
    std::size_t cases = 0;
    std::size_t exchanges = 0;
    std::size_t good = 0;
    std::size_t failed = 0;  ///< false, as was right
    std::size_t raised = 0;
    std::size_t resynchronised = 0;
    std::size_t borderline = 0;
    std::size_t sends = 0;
    std::array<std::size_t, 9> byKind{};  ///< cases that hold a fault of that kind

    void add(const Case& tried, const Outcome& outcome);
};

std::string kindName(Kind kind);

}  // namespace opane::test::campaign
