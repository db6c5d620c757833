#include <gtest/gtest.h>

#include <limits>

#include "support/bench.h"

// The order in which a link logs, sends, empties, reads and lets the host's events run.

namespace opane::test {
namespace {

/// Writes each line's level and procedure down among the steps.
class NotedLines final : public LineWriter {
public:
    explicit NotedLines(std::string& steps) : steps_(steps) {}
    void write(const std::string& /*fileName*/, const std::string& line, std::int16_t level) override {
        steps_ += "log" + std::to_string(level) + line.substr(line.rfind(' '));
    }

private:
    std::string& steps_;
};

class Steps : public testing::Test {
protected:
    Steps() {
        bench.scripted();
        threadGlobals()->gobjLog->writer(std::make_unique<NotedLines>(steps));
        EXPECT_EQ(steps, "binary ");
        steps.clear();
    }

    bool handshake() { return bench.link().SendSynchronizeCharacter(3); }
    void noteYields() {
        bench.services->eventHook = [this] { steps += "yield "; };
    }
    /// Runs an event once, when the host's events run for that time.
    void atYield(int number, std::function<void()> event) {
        yields = 0;
        bench.services->eventHook = [=, this] {
            if (++yields == number)
                event();
        };
    }

    LinkBench bench;
    std::string& steps = bench.line.steps;
    int yields = 0;
};

TEST_F(Steps, OfAHandshake) {
    noteYields();
    bench.script.answers = {{0x18}};
    EXPECT_TRUE(handshake());
    EXPECT_EQ(steps, "all yield read yield write yield one yield wait read yield ");
    steps.clear();
    bench.link().Timeout(0);
    EXPECT_FALSE(handshake());
    EXPECT_EQ(steps, "all yield read yield write yield one yield read yield ");
}

TEST_F(Steps, OfAnExchange) {
    noteYields();
    bench.script.answers = {{0xAA, 0, 3, 0, 0, 8, 0xF5}};
    ByteArray info;
    EXPECT_TRUE(bench.link().SendDataAndReceiveResponse(0, 0, 0, 8, {0}, info));
    const std::string logged = "log3 clsOpane,SendDataAndReceiveResponse\r\n";
    std::string expected = logged + "all yield read write yield one ";
    for (int byte = 0; byte < 7; ++byte)
        expected += "yield wait read yield ";
    EXPECT_EQ(steps, expected + logged);
}

TEST_F(Steps, AWaitAsksTheSystemOnceForWhatIsNotThereYetHoweverLongItIs) {
    bench.link().Timeout(std::numeric_limits<std::int32_t>::max());
    for (const Micros answerAfter : {50'000LL, 2'000'000'000'000LL}) {  // up to 23 days
        bench.script.answers = {{0x18}};
        bench.script.answerAfter = answerAfter;
        EXPECT_TRUE(handshake());
        EXPECT_EQ(std::exchange(steps, {}), "all read write one wait read ");
    }
}

TEST_F(Steps, AWaitKeepsTheTimeOutThatItBeganWith) {
    for (const int yield : {4, 5}) {  // the first and the second of the wait
        bench.link().Timeout(50);
        const auto start = bench.time.micros;
        atYield(yield, [this] { bench.link().Timeout(500); });
        EXPECT_FALSE(handshake());
        EXPECT_EQ(bench.link().Timeout(), 500);
        EXPECT_LE(bench.time.since(start), 53);
    }
}

TEST_F(Steps, ALongHostEventCountsAsWaiting) {
    bench.link().Timeout(100);
    for (const Micros answerAfter : {150'000, 350'000}) {  // during the event, and behind it
        bench.script.answers = {{0x18}};
        bench.script.answerAfter = answerAfter;
        atYield(6, [this] { bench.time.micros += 300'000; });
        EXPECT_FALSE(handshake()) << answerAfter;
    }
}

TEST_F(Steps, AHostEventMayReleaseTheLinkInAHandshake) {
    bench.script.answers = {{0x18}};
    bench.services->eventHook = [this] { bench.holder.globals().gobjOPane.reset(); };
    EXPECT_TRUE(handshake());
    EXPECT_EQ(bench.line.portEvents.back(), "close") << "it has ended behind the call";
}

}  // namespace
}  // namespace opane::test
