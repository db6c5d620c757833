#include <gtest/gtest.h>

#include "automation/clsOPaneCommDLL.h"
#include "support/bench.h"
#include "support/campaign/referee.h"

namespace opane::test {
namespace {

// docs/bounds.md, "The pieces": what the fault campaign holds every exchange against.
static_assert(campaign::longestExchange(1000, false) == 1'376'370);
static_assert(campaign::longestExchange(1000, true) == 2'752'740);

/// Calls a public method; whether it failed.
template <auto method, auto... arguments>
bool fails(clsOPaneCommDLL& object) {
    std::int16_t status = -1;
    (object.*method)(arguments..., status);
    return status == 1;
}

struct SilentCase {
    const char* name;
    bool (*fails)(clsOPaneCommDLL& object);
    double longestMs;  // docs/bounds.md
    const char* busType = "RS232";
};

class SilentModule : public testing::TestWithParam<SilentCase> {};

TEST_P(SilentModule, CostsItsWaitsAndNoMore) {
    Bench bench;
    ScriptedPeer silence;
    bench.line.peer = &silence;
    clsOPaneCommDLL object;
    threadLink()->Baudrate(9600);
    threadLink()->CommunicationType(GetParam().busType);
    const auto start = bench.time.micros;
    EXPECT_TRUE(GetParam().fails(object));
    EXPECT_LE(bench.time.since(start), GetParam().longestMs);
    EXPECT_GE(bench.time.since(start), 0.97 * GetParam().longestMs);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, SilentModule,
    testing::Values(SilentCase{"Synchronize", fails<&clsOPaneCommDLL::Synchronize, 2, 9600, 3>, 102},
                    SilentCase{"ChangeBaudrate", fails<&clsOPaneCommDLL::ChangeBaudrate, 19200>, 18'762},
                    SilentCase{"WriteStatus", fails<&clsOPaneCommDLL::WriteStatus, 1, 0, 1, 0, 1>, 18'762},
                    SilentCase{"exchange_on_a_bus", [](auto&) { return !threadLink()->OPaneCmd_Clear(0); }, 24'774,
                               "RS485"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace opane::test
