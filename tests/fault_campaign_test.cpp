#include <gtest/gtest.h>

#include <algorithm>

#include "support/campaign/campaign.h"

namespace opane::test::campaign {
namespace {

/// @param everyEnumerated  every how many of them
void followsTheRulesAndRecovers(Carrier& carrier, std::size_t everyEnumerated, std::size_t drawn) {
    constexpr std::uint64_t kSeed = 20;
    Tally tally;
    const auto next = [everyEnumerated](std::size_t number) {
        return number < enumeratedCases() ? std::min(number + everyEnumerated, enumeratedCases()) : number + 1;
    };
    for (std::size_t number = 0; number < enumeratedCases() + drawn && !testing::Test::HasFailure();
         number = next(number)) {
        const Case tried = caseOf(kSeed, number);
        const Outcome outcome = run(tried, carrier);
        tally.add(tried, outcome);
        EXPECT_EQ(outcome.complaint, "") << description(tried) << "\nagain: opane-campaign --seed " << kSeed
                                         << " --case " << number << (carrier.device().empty() ? "" : " --pty");
    }
    // The cases are of every sort, and the referee did judge them.
    EXPECT_GT(tally.good, tally.cases / 10);
    EXPECT_GT(tally.failed, tally.cases / 20);
    EXPECT_GT(tally.raised, tally.cases / 50);
    EXPECT_LT(tally.borderline, tally.cases / 50);
}

TEST(FaultCampaign, FollowsTheRulesAndRecoversInMemory) {
    followsTheRulesAndRecovers(*memoryCarrier(), 29, 400);
}

TEST(FaultCampaign, FollowsTheRulesAndRecoversOnAPseudoTerminal) {
    followsTheRulesAndRecovers(*terminalCarrier(), 151, 80);
}

}  // namespace
}  // namespace opane::test::campaign
