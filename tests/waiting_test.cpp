#include <gtest/gtest.h>

#include "link/connection.h"
#include "support/bench.h"
#include "support/row_name.h"

namespace opane::test {
namespace {

struct HandshakeWait {
    const char* name;
    std::int32_t timeoutMs;
    Micros answerAfter, startMicros;
    bool synchronized;
    double atLeastMs, atMostMs;
};

class WaitForAByte : public testing::TestWithParam<HandshakeWait> {};

TEST_P(WaitForAByte, TakesThisLong) {
    LinkBench bench;
    const HandshakeWait& row = GetParam();
    bench.time.micros = row.startMicros;
    bench.scripted().answerAfter = row.answerAfter;
    bench.script.answers = {{0x18}};
    bench.link().Timeout(row.timeoutMs);
    EXPECT_EQ(bench.link().SendSynchronizeCharacter(3), row.synchronized);
    EXPECT_GE(bench.time.since(row.startMicros), row.atLeastMs);
    EXPECT_LE(bench.time.since(row.startMicros), row.atMostMs);
}

constexpr Micros kBeforeTheWrap = 0x1'0000'0000LL * 1000 - 40'000;  // 40 ms before the counter wraps

const HandshakeWait kWaits[]{
    {"at_once", 100, 0, 1'000'000, true, 0, 0.5},
    {"in_time", 100, 99'000, 1'000'000, true, 99, 100},
    {"too_late", 100, 103'000, 1'000'000, false, 100, 102},
    {"across_the_wrap", 100, 80'000, kBeforeTheWrap, true, 80, 81},
    {"too_late_across_the_wrap", 100, 200'000, kBeforeTheWrap, false, 100, 102},
    {"no_time_but_there", 0, 0, 1'000'000, true, 0, 0.5},
    {"no_time", 0, 1'000, 1'000'000, false, 0, 0.5},
    {"negative_time", -5, 1'000, 1'000'000, false, 0, 0.5},
};
INSTANTIATE_TEST_SUITE_P(TimeOuts, WaitForAByte, testing::ValuesIn(kWaits), rowName);

TEST(Waiting, IsOverBehindItsDeadline) {
    EXPECT_FALSE(isPast(5, 1005, 1000));
    EXPECT_TRUE(isPast(5, 1006, 1000));
    EXPECT_TRUE(isPast(5, 5, -1));
}

TEST(Waiting, ASilentModuleCostsOneLongWaitAByteAndLeavesTheUsualTimeOut) {
    for (const int before : {50, 5000}) {
        LinkBench bench;
        bench.scripted();
        bench.link().Timeout(before);
        EXPECT_FALSE(bench.link().OPaneCmd_Clear(0));
        EXPECT_EQ(bench.link().Timeout(), 1000);
        EXPECT_EQ(bench.line.waits, 6 + 125);
    }
}

TEST(Waiting, AnotherHandshakeLetsOldBytesGoBy) {
    LinkBench bench;
    ScriptedPeer& peer = bench.scripted();
    const ConnectionChoice choice{1, 9600, 3, "RS232"};
    peer.answers = {{0x18, 0xAA}, {0x55}};
    peer.answerAfter = 150'000;  // too late for the first handshake, and no answer to the second
    EXPECT_FALSE(makeConnection(bench.link(), choice));
    EXPECT_FALSE(makeConnectionAgain(bench.link(), choice));
    const auto start = bench.time.micros;
    peer.answers = {{0x18}};
    peer.answerAfter = 0;
    EXPECT_TRUE(makeConnectionAgain(bench.link(), choice));
    EXPECT_NEAR(bench.time.since(start), 50 + 100, 5) << "the late byte, and the silence behind it";
}

TEST(Waiting, ALineThatIsNeverSilentIsNotWaitedForForEver) {
    struct Babbler final : Peer {
        explicit Babbler(VirtualTime& clock) : time(clock) {}
        void receive(std::span<const std::uint8_t>, Micros) override {}
        ByteArray takeOutput(Micros) override { return {0}; }
        std::optional<Micros> nextOutputAt() const override { return time.micros + 50'000; }
        VirtualTime& time;
    };
    LinkBench bench;
    Babbler peer(bench.time);
    bench.line.peer = &peer;
    const auto start = bench.time.micros;
    EXPECT_FALSE(makeConnectionAgain(bench.link(), {1, 9600, 3, "RS232"}));
    EXPECT_NEAR(bench.time.since(start), 2000, 110);
}

TEST(Waiting, AHostWithEventsIsServedEveryMillisecond) {
    LinkBench bench;
    bench.scripted();
    int served = 0;
    bench.services->eventHook = [&served] { ++served; };
    bench.link().Timeout(50);
    EXPECT_FALSE(bench.link().SendSynchronizeCharacter(3));
    EXPECT_NEAR(served, 55, 5);
}

}  // namespace
}  // namespace opane::test
