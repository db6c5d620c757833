#include <gtest/gtest.h>

#include "support/bench.h"

namespace opane::test {
namespace {

using simulator::Fault;
using simulator::FaultOrder;

constexpr std::int32_t kRates[]{1200, 2400, 4800, 9600, 19200, 38400, 57600};

/// A synchronised link at 9600 baud that records message boxes.
class SpeedBench : public LinkBench {
public:
    explicit SpeedBench(int quartz = 2) : LinkBench({.quartz = quartz}) {
        services->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons buttons) {
            boxes.push_back(title + ": " + text);
            EXPECT_EQ(buttons, MessageBoxButtons::ok);
            return MessageBoxAnswer::ok;
        };
        link().Baudrate(9600);
        EXPECT_TRUE(link().SendSynchronizeCharacter(3));
        threadLog()->LogLevel(2);
    }

    std::vector<std::string> boxes;
};

struct RateCodes {
    const char* name;
    std::int16_t quartz;
    // Code and flag for 1200 to 57600 baud; -1: not offered.
    int code[7];
    int flag[7];
};

class RateTable : public testing::TestWithParam<RateCodes> {};

TEST_P(RateTable, SendsTheseCodesAndTheModuleFollows) {
    const RateCodes& row = GetParam();
    for (int i = 0; i < 7; ++i) {
        SpeedBench bench(row.quartz);
        const std::int32_t rate = kRates[i];
        const std::size_t before = bench.module.frames().size();
        const bool changed = bench.link().OPaneCmd_RS232Baudrate(rate, row.quartz);
        EXPECT_EQ(changed, row.code[i] >= 0) << rate;
        if (rate == 9600 || row.code[i] < 0) {
            EXPECT_EQ(bench.module.frames().size(), before) << "nothing is sent at " << rate;
            EXPECT_EQ(bench.log.size(), 3U);
            EXPECT_EQ(bench.link().Baudrate(), 9600);
            continue;
        }
        const auto& frame = bench.module.frames().back();
        EXPECT_EQ(frame[3], row.code[i]) << rate;
        EXPECT_EQ(frame[4], row.flag[i]) << rate;
        EXPECT_EQ(bench.module.state().baudRate, rate);
        EXPECT_TRUE(bench.link().IsSynchronized());
        EXPECT_TRUE(bench.link().OPaneCmd_Clear(0)) << "at the new rate";
        EXPECT_TRUE(bench.boxes.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Crystals, RateTable,
                         testing::Values(RateCodes{"type_1", 1, {232, 244, 250, 253, 253, -1, -1}, {0, 0, 0, 0, 1}},
                                         RateCodes{"type_2", 2, {224, 240, 248, 252, 254, 255, -1}, {}},
                                         RateCodes{
                                             "type_3", 3, {187, 239, 247, 247, 254, 255, 255}, {1, 0, 0, 1, 0, 0, 1}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(BaudRate, RefusesWhatIsNoRateOrCrystal) {
    SpeedBench bench;
    EXPECT_FALSE(bench.link().OPaneCmd_RS232Baudrate(14400, 2));
    EXPECT_TRUE(bench.log.empty());
    EXPECT_FALSE(bench.link().OPaneCmd_RS232Baudrate(19200, 0));
    EXPECT_FALSE(bench.link().OPaneCmd_RS232Baudrate(19200, 4));
    EXPECT_TRUE(bench.module.frames().empty());
    EXPECT_EQ(bench.link().Baudrate(), 9600);
}

constexpr auto kModuleLost =
    "ERREUR DE COMMUNICATION: La vitesse de transmission a été changée sur le module OPANE\r\nmais il ne répond plus "
    "au "
    "caractère de synchronisation.";
constexpr auto kPortLost =
    "ERREUR DE COMMUNICATION: Impossible de changer la vitesse sur le PC. Le module est\r\nmaintenant complétement "
    "désynchronisé. Déconnecter-le et\r\nessayez de rétablir la communication).";

enum class What { baudRate, reset };

struct SpeedCase {
    const char* name;
    What what;
    std::vector<FaultOrder> faults;
    bool portFails;  // it does not open again
    bool result;
    std::int32_t rateAfter;
    bool synchronized;
    std::vector<std::string> boxes;
    std::vector<std::string> lastLines;
};

class ChangeOfSpeed : public testing::TestWithParam<SpeedCase> {};

TEST_P(ChangeOfSpeed, LeavesTheLinkInThisState) {
    SpeedBench bench;
    const SpeedCase& row = GetParam();
    for (const FaultOrder& fault : row.faults)
        bench.module.fault(fault);
    clsOPane& link = bench.link();
    if (row.what == What::reset) {  // from another rate
        bench.module.state().baudRate = 19200;
        link.Baudrate(19200);
    }
    bench.line.missingPort = row.portFails ? link.CommPort() : std::int16_t{0};
    const auto start = bench.time.micros;
    const bool result = row.what == What::baudRate ? link.OPaneCmd_RS232Baudrate(19200, 2) : link.OPaneCmd_Reset(0);
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(link.Baudrate(), row.rateAfter);
    EXPECT_EQ(link.IsSynchronized(), row.synchronized);
    EXPECT_EQ(bench.boxes, row.boxes);
    ASSERT_GE(bench.log.size(), row.lastLines.size());
    EXPECT_EQ(std::vector(bench.log.end() - static_cast<std::ptrdiff_t>(row.lastLines.size()), bench.log.end()),
              row.lastLines);
    if (row.what == What::reset && row.result) {
        EXPECT_GE(bench.time.since(start), 1000);
        EXPECT_LE(bench.time.since(start), 1010);
    }
}

const FaultOrder kRefusing{.fault = Fault::aux, .count = 5};
const FaultOrder kMutedHandshake{.fault = Fault::ignoreHandshake, .count = 1};

INSTANTIATE_TEST_SUITE_P(
    Steps, ChangeOfSpeed,
    testing::Values(
        SpeedCase{"rate_changed",
                  What::baudRate,
                  {},
                  false,
                  true,
                  19200,
                  true,
                  {},
                  {"Cmd Type : 14", "Actual Baudrate : 9600", "New Baudrate : 19200",
                   "Baudrate changed on PC and module", "Resynchronize OK"}},
        SpeedCase{"rate_refused", What::baudRate, {kRefusing}, false, false, 9600, true, {}, {"New Baudrate : 19200"}},
        SpeedCase{
            "rate_port_lost", What::baudRate, {}, true, false, 9600, false, {kPortLost}, {"New Baudrate : 19200"}},
        SpeedCase{"rate_module_lost",
                  What::baudRate,
                  {kMutedHandshake},
                  false,
                  false,
                  19200,
                  false,
                  {kModuleLost},
                  {"New Baudrate : 19200"}},
        SpeedCase{"reset_done",
                  What::reset,
                  {},
                  false,
                  true,
                  9600,
                  true,
                  {},
                  {"Cmd Type : 7", "Reset Type : 0", "Baudrate changed on PC and module to 9600", "Resynchronize OK"}},
        SpeedCase{"reset_refused", What::reset, {kRefusing}, false, false, 19200, false, {}, {"Reset Type : 0"}},
        SpeedCase{"reset_port_lost", What::reset, {}, true, false, 9600, false, {kPortLost}, {"Reset Type : 0"}},
        SpeedCase{"reset_module_lost",
                  What::reset,
                  {kMutedHandshake},
                  false,
                  false,
                  9600,
                  false,
                  {kModuleLost},
                  {"Reset Type : 0"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Reset, WaitsASecondAlsoAcrossTheWrapOfTheTickCounter) {
    SpeedBench bench;
    bench.time.micros = (0x1'0000'0000LL - 300) * 1000;  // 300 ms before it
    const auto start = bench.time.micros;
    EXPECT_TRUE(bench.link().OPaneCmd_Reset(0));
    EXPECT_NEAR(bench.time.since(start), 1001, 5);
}

}  // namespace
}  // namespace opane::test
