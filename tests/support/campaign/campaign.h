#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/campaign/faulty_line.h"
#include "support/campaign/referee.h"

namespace opane::test::campaign {

/// One exchange on a line on which things go wrong, and a good one after it.
struct Case {
    Request request{};
    LinkBefore before{};  ///< its time is the one at which the virtual clock starts
    int baudRate = 9600;
    bool paced = false;
    std::vector<Spoil> spoils{};
};

/// Case number n of a seed. The enumeratedCases() come first and are the same for every seed: each kind of fault at every byte
/// of request, echo and answer of some commands, and behind them. The others are drawn: some faults on any exchange.
Case caseOf(std::uint64_t seed, std::size_t number);

const std::vector<Case>& enumeratedCases();

/// For people.
std::string description(const Case& tried);

/// Runs one case from a new link on, in memory or on a terminal. Checked are what the referee says, the longest time of
/// docs/bounds.md, and that after one quiet time-out the next good exchange works.
Judgement run(const Case& tried, simulator::PseudoTerminal* terminal);

/// What cases have come to.
struct Tally {
    std::size_t cases = 0;
    std::size_t good = 0;
    std::size_t failed = 0;  ///< false, as was right
    std::size_t raised = 0;
    std::size_t resynchronised = 0;
    std::size_t borderline = 0;
    std::size_t sends = 0;

    void add(const Judgement& outcome);
};

}  // namespace opane::test::campaign
