#include <gtest/gtest.h>

#include "support/campaign/campaign.h"

namespace opane::test::campaign {
namespace {

constexpr std::uint64_t kSeed = 20;

struct Stretch {
    const char* name;
    std::unique_ptr<Carrier> (*carrier)();
    std::size_t everyEnumerated;  // every how many of them
    std::size_t drawn;
};

class FaultCampaign : public testing::TestWithParam<Stretch> {};

TEST_P(FaultCampaign, FollowsTheRulesAndRecovers) {
    const Stretch& stretch = GetParam();
    const auto carrier = stretch.carrier();
    Tally tally;
    const auto tryCase = [&](std::size_t number) {
        const Case tried = caseOf(kSeed, number);
        const Outcome outcome = run(tried, *carrier);
        tally.add(tried, outcome);
        EXPECT_EQ(outcome.complaint, "") << description(tried) << "\nagain: opane-campaign --seed " << kSeed
                                         << " --case " << number << ", with --pty for " << stretch.name;
    };
    for (std::size_t number = 0; number < enumeratedCases() && !HasFailure(); number += stretch.everyEnumerated)
        tryCase(number);
    for (std::size_t i = 0; i < stretch.drawn && !HasFailure(); ++i)
        tryCase(enumeratedCases() + i);
    // The cases are of every sort, and the referee did judge them.
    EXPECT_GT(tally.good, tally.cases / 10);
    EXPECT_GT(tally.failed, tally.cases / 20);
    EXPECT_GT(tally.raised, tally.cases / 50);
    EXPECT_LT(tally.borderline, tally.cases / 50);
}

INSTANTIATE_TEST_SUITE_P(Carriers, FaultCampaign,
                         testing::Values(Stretch{"in_memory", memoryCarrier, 29, 400},
                                         Stretch{"on_a_pseudo_terminal", terminalCarrier, 151, 80}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace opane::test::campaign
