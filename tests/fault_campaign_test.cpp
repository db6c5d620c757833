#include <gtest/gtest.h>

#include <algorithm>

#include "support/campaign/campaign.h"

namespace opane::test::campaign {
namespace {

constexpr std::uint64_t kSeed = 20;

/// Tries every so-many-th of the enumerated cases, and that many drawn ones.
void tryCases(simulator::PseudoTerminal* terminal, std::size_t everyEnumerated, std::size_t drawn) {
    Tally tally;
    const std::size_t enumerated = enumeratedCases().size();
    for (std::size_t number = 0; number < enumerated + drawn && !testing::Test::HasFailure();
         number = number < enumerated ? std::min(number + everyEnumerated, enumerated) : number + 1) {
        const Case tried = caseOf(kSeed, number);
        const Judgement outcome = run(tried, terminal);
        tally.add(outcome);
        EXPECT_EQ(outcome.complaint, "") << description(tried) << "\nagain: opane-campaign --seed " << kSeed
                                         << " --case " << number << (terminal != nullptr ? " --pty" : "");
    }
    // The cases are of every sort, and the referee did judge them.
    EXPECT_GT(tally.good, tally.cases / 10);
    EXPECT_GT(tally.failed, tally.cases / 20);
    EXPECT_GT(tally.raised, tally.cases / 50);
    EXPECT_LT(tally.borderline, tally.cases / 50);
}

TEST(FaultCampaign, FollowsTheRulesAndRecoversInMemory) {
    tryCases(nullptr, 29, 400);
}

TEST(FaultCampaign, FollowsTheRulesAndRecoversOnAPseudoTerminal) {
    simulator::PseudoTerminal terminal;
    tryCases(&terminal, 151, 80);
}

}  // namespace
}  // namespace opane::test::campaign
