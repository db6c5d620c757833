#include <gtest/gtest.h>

#include "automation/clsOPaneCommDLL.h"
#include "support/bench.h"
#include "support/campaign/referee.h"

namespace opane::test {
namespace {

// docs/bounds.md, "The pieces": what the fault campaign holds every exchange against.
static_assert(campaign::longestExchange(1000, false) == 1'376'370);
static_assert(campaign::longestExchange(1000, true) == 2'752'740);

TEST(SilentModule, CostsItsWaitsAndNoMore) {
    Bench bench;
    ScriptedPeer silence;
    bench.line.peer = &silence;
    clsOPaneCommDLL object;
    threadLink()->Baudrate(9600);
    std::int16_t status = 0;
    const auto costs = [&](double longestMs, const auto& call) {
        const auto start = bench.time.micros;
        call();
        EXPECT_EQ(std::exchange(status, 0), 1);
        EXPECT_LE(bench.time.since(start), longestMs);
        EXPECT_GE(bench.time.since(start), 0.97 * longestMs);
    };
    costs(102, [&] { object.Synchronize(2, 9600, 3, status); });
    threadLink()->CommunicationType("RS232");
    costs(18'762, [&] { object.ChangeBaudrate(19200, status); });
    costs(18'762, [&] { object.WriteStatus(1, 0, 1, 0, 1, status); });
    threadLink()->CommunicationType("RS485");
    costs(24'774, [&] { object.WriteStatus(1, 0, 1, 0, 1, status); });
}

}  // namespace
}  // namespace opane::test
