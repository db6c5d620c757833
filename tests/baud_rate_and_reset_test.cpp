#include <gtest/gtest.h>

#include "support/bench.h"
#include "support/row_name.h"

namespace opane::test {
namespace {

using simulator::Fault;

/// A synchronised link at 9600 baud.
struct SpeedBench : LinkBench {
    explicit SpeedBench(int quartz = 2) : LinkBench({.quartz = quartz}) {
        link().Baudrate(9600);
        EXPECT_TRUE(link().SendSynchronizeCharacter(3));
        threadLog()->LogLevel(2);
    }
};

TEST(BaudRate, OfNeitherTableIsRefused) {
    SpeedBench bench;
    EXPECT_FALSE(bench.link().OPaneCmd_RS232Baudrate(14400, 2));
    EXPECT_TRUE(bench.log.empty());
    for (const std::int16_t quartz : std::initializer_list<std::int16_t>{0, 4})
        EXPECT_FALSE(bench.link().OPaneCmd_RS232Baudrate(19200, quartz));
    EXPECT_TRUE(bench.module.frames().empty() && bench.link().Baudrate() == 9600);
}

TEST(BaudRate, FollowsTheModuleToEveryRateThatItsCrystalOffers) {
    for (std::int16_t quartz = 1; quartz <= 3; ++quartz) {
        for (const std::int32_t rate : {1200, 2400, 4800, 9600, 19200, 38400, 57600}) {
            SCOPED_TRACE(std::to_string(rate) + " with quartz " + std::to_string(quartz));
            SpeedBench bench(quartz);
            const bool isOffered = rate <= 19200 || quartz == 3 || (rate == 38400 && quartz == 2);
            const bool isChange = isOffered && rate != 9600;
            EXPECT_EQ(bench.link().OPaneCmd_RS232Baudrate(rate, quartz), isOffered);
            EXPECT_EQ(bench.module.frames().size(), isChange ? 1U : 0U);
            EXPECT_EQ(bench.log.size(), isChange ? 5U : 3U);
            EXPECT_EQ(bench.module.state().baudRate, isOffered ? rate : 9600);
            EXPECT_TRUE(bench.link().OPaneCmd_RS232Baudrate(9600, quartz)) << "back again";
            EXPECT_EQ(bench.module.state().baudRate, 9600);
        }
    }
}

constexpr auto kModuleLost =
    "ERREUR DE COMMUNICATION: La vitesse de transmission a été changée sur le module OPANE\r\nmais il ne répond plus "
    "au caractère de synchronisation.";
constexpr auto kPortLost =
    "ERREUR DE COMMUNICATION: Impossible de changer la vitesse sur le PC. Le module est\r\nmaintenant complétement "
    "désynchronisé. Déconnecter-le et\r\nessayez de rétablir la communication).";

enum class What { rate, reset };
enum class Trouble { none, refused, portLost, moduleLost };

struct SpeedCase {
    const char* name;
    What what;
    Trouble trouble;
    std::int32_t rateAfter;
    bool synchronized;
    double takesMs;
    std::vector<std::string> boxes;
    const char* lines;  // of the log
};

class ChangeOfSpeed : public testing::TestWithParam<SpeedCase> {};

TEST_P(ChangeOfSpeed, LeavesTheLinkInThisState) {
    SpeedBench bench;
    const SpeedCase& row = GetParam();
    clsOPane& link = bench.link();
    if (row.trouble == Trouble::refused)
        bench.module.fault({.fault = Fault::aux, .count = 5});
    if (row.trouble == Trouble::moduleLost)
        bench.module.fault({.fault = Fault::ignoreHandshake, .count = 1});
    if (row.what == What::reset) {  // from another rate
        bench.module.state().baudRate = 19200;
        link.Baudrate(19200);
    }
    if (row.trouble == Trouble::portLost)  // it does not open again
        bench.line.missingPort = link.CommPort();
    bench.time.micros = (0x1'0000'0000LL - 300) * 1000;  // 300 ms before the tick counter wraps
    const auto start = bench.time.micros;
    EXPECT_EQ(row.what == What::rate ? link.OPaneCmd_RS232Baudrate(19200, 2) : link.OPaneCmd_Reset(0),
              row.trouble == Trouble::none);
    EXPECT_EQ(link.Baudrate(), row.rateAfter);
    EXPECT_EQ(link.IsSynchronized(), row.synchronized);
    EXPECT_EQ(bench.boxes, row.boxes);
    EXPECT_EQ(bench.logged(), row.lines);
    EXPECT_NEAR(bench.time.since(start), row.takesMs, 2);
}

constexpr auto kRateSent = "Cmd Type : 14|Actual Baudrate : 9600|New Baudrate : 19200";
constexpr auto kRateDone =
    "Cmd Type : 14|Actual Baudrate : 9600|New Baudrate : 19200|Baudrate changed on PC and module|Resynchronize OK";
constexpr auto kResetSent = "Cmd Type : 7|Reset Type : 0";
constexpr auto kResetDone = "Cmd Type : 7|Reset Type : 0|Baudrate changed on PC and module to 9600|Resynchronize OK";

const SpeedCase kChanges[]{
    {"rate_changed", What::rate, Trouble::none, 19200, true, 0, {}, kRateDone},
    {"rate_refused", What::rate, Trouble::refused, 9600, true, 0, {}, kRateSent},
    {"rate_port_lost", What::rate, Trouble::portLost, 9600, false, 0, {kPortLost}, kRateSent},
    {"rate_module_lost", What::rate, Trouble::moduleLost, 19200, false, 1001, {kModuleLost}, kRateSent},
    {"reset_done", What::reset, Trouble::none, 9600, true, 1001, {}, kResetDone},
    {"reset_refused", What::reset, Trouble::refused, 19200, false, 0, {}, kResetSent},
    {"reset_port_lost", What::reset, Trouble::portLost, 9600, false, 0, {kPortLost}, kResetSent},
    {"reset_module_lost", What::reset, Trouble::moduleLost, 9600, false, 2002, {kModuleLost}, kResetSent},
};
INSTANTIATE_TEST_SUITE_P(Changes, ChangeOfSpeed, testing::ValuesIn(kChanges), rowName);

}  // namespace
}  // namespace opane::test
