#include <gtest/gtest.h>

#include "link/connection.h"
#include "support/bench.h"

namespace opane::test {
namespace {

using simulator::Fault;

struct WaitCase {
    const char* name;
    std::uint32_t start, now;
    std::int32_t limitMs;
    bool past;
};

class Wait : public testing::TestWithParam<WaitCase> {};

TEST_P(Wait, IsPast) {
    EXPECT_EQ(isPast(GetParam().start, GetParam().now, GetParam().limitMs), GetParam().past);
}

INSTANTIATE_TEST_SUITE_P(Edges, Wait,
                         testing::Values(WaitCase{"at_deadline", 5, 1005, 1000, false},
                                         WaitCase{"past_deadline", 5, 1006, 1000, true},
                                         WaitCase{"before_the_wrap", 0xFFFF'FF00, 0xFFFF'FF01, 1000, false},
                                         WaitCase{"past_it_after_wrap", 0xFFFF'FF00, 745, 1000, true},
                                         WaitCase{"negative_limit", 5, 5, -1, true}),
                         [](const auto& row) { return std::string(row.param.name); });

struct HandshakeWait {
    const char* name;
    std::int32_t timeoutMs;
    Micros answerAfter;
    std::int64_t startMicros;
    bool synchronized;
    double atLeastMs, atMostMs;
};

class WaitForAByte : public testing::TestWithParam<HandshakeWait> {};

TEST_P(WaitForAByte, TakesThisLong) {
    LinkBench bench;
    const HandshakeWait& row = GetParam();
    ScriptedPeer& peer = bench.scripted();
    bench.time.micros = row.startMicros;
    peer.answerAfter = row.answerAfter;
    peer.answers = {{0x18}};
    bench.link().Timeout(row.timeoutMs);
    EXPECT_EQ(bench.link().SendSynchronizeCharacter(3), row.synchronized);
    EXPECT_GE(bench.time.since(row.startMicros), row.atLeastMs);
    EXPECT_LE(bench.time.since(row.startMicros), row.atMostMs);
}

constexpr std::int64_t kBeforeTheWrap = 0x1'0000'0000LL * 1000 - 40'000;  // 40 ms before the counter wraps

INSTANTIATE_TEST_SUITE_P(TimeOuts, WaitForAByte,
                         testing::Values(HandshakeWait{"at_once", 100, 0, 1'000'000, true, 0, 0.5},
                                         HandshakeWait{"in_time", 100, 99'000, 1'000'000, true, 99, 100},
                                         HandshakeWait{"too_late", 100, 103'000, 1'000'000, false, 100, 102},
                                         HandshakeWait{"across_the_wrap", 100, 80'000, kBeforeTheWrap, true, 80, 81},
                                         HandshakeWait{"too_late_across_the_wrap", 100, 200'000, kBeforeTheWrap, false,
                                                       100, 102},
                                         HandshakeWait{"no_time_but_there", 0, 0, 1'000'000, true, 0, 0.5},
                                         HandshakeWait{"no_time", 0, 1'000, 1'000'000, false, 0, 0.5},
                                         HandshakeWait{"negative_time", -5, 1'000, 1'000'000, false, 0, 0.5}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Waiting, ASilentModuleTakesSixTimeOutsAnd125Handshakes) {
    LinkBench bench;
    bench.module.fault({.fault = Fault::silent});
    const auto start = bench.time.micros;
    EXPECT_FALSE(bench.link().OPaneCmd_Clear(0));
    EXPECT_NEAR(bench.time.since(start), 6 * 1000 + 125 * 100, 6 + 125 + 10);
    EXPECT_LE(bench.line.waits, 6 + 125) << "one long wait a byte, so that a waiting link burns no core";
}

TEST(Waiting, AResynchronisationLeavesTheUsualTimeOut) {
    for (const int before : {50, 5000}) {
        LinkBench bench;
        bench.module.fault({.fault = Fault::silent});
        bench.link().Timeout(before);
        EXPECT_FALSE(bench.link().OPaneCmd_Clear(0));
        EXPECT_EQ(bench.link().Timeout(), 1000);
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
    class Babbler final : public Peer {
    public:
        explicit Babbler(VirtualTime& time) : time_(time) {}
        void receive(std::span<const std::uint8_t>, Micros) override {}
        ByteArray takeOutput(Micros) override { return {0}; }
        std::optional<Micros> nextOutputAt() const override { return time_.micros + 50'000; }

    private:
        VirtualTime& time_;
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
    bench.module.fault({.fault = Fault::silent});
    int served = 0;
    bench.services->eventHook = [&served] { ++served; };
    bench.link().Timeout(50);
    EXPECT_FALSE(bench.link().SendSynchronizeCharacter(3));
    EXPECT_GE(served, 50);
    EXPECT_LE(served, 60);
}

}  // namespace
}  // namespace opane::test
