#include <gtest/gtest.h>

#include <limits>

#include "link/connection.h"
#include "support/bench.h"

// How long a link waits, and the order in which it logs, sends, empties, reads and lets the host's events run.

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

class Waiting : public testing::Test {
protected:
    Waiting() {
        threadLog()->writer(std::make_unique<NotedLines>(steps));
        EXPECT_EQ(std::exchange(steps, {}), "binary ");
    }

    bool handshake() { return link.SendSynchronizeCharacter(3); }
    bool handshakeAgain() { return makeConnectionAgain(link, {1, 9600, 3, "RS232"}); }
    void answer(ByteArray bytes, Micros after = 0) {
        script.answers = {std::move(bytes)};
        script.answerAfter = after;
    }
    /// Every time that the host's events run.
    void atYields(std::function<void(int number)> event) {
        bench.services->eventHook = [this, event] { event(++yields); };
        yields = 0;
    }

    LinkBench bench;
    clsOPane& link = bench.link();
    ScriptedPeer& script = bench.scripted();
    std::string& steps = bench.line.steps;
    const Micros start = bench.time.micros;
    int yields = 0;
};

TEST_F(Waiting, IsOverBehindItsDeadline) {
    EXPECT_FALSE(isPast(5, 1005, 1000));
    EXPECT_TRUE(isPast(5, 1006, 1000));
    EXPECT_TRUE(isPast(5, 5, -1));
    EXPECT_FALSE(isPast(0xFFFF'FF00, 0xFFFF'FF01, 1000)) << "before the counter wraps";
    EXPECT_TRUE(isPast(0xFFFF'FF00, 745, 1000)) << "after it";
}

TEST_F(Waiting, HasTheseStepsInAHandshake) {
    atYields([this](int) { steps += "yield "; });
    answer({0x18});
    EXPECT_TRUE(handshake());
    EXPECT_EQ(std::exchange(steps, {}), "all yield read yield write yield one yield wait read yield ");
    for (const std::int32_t noTime : {0, -5}) {
        link.Timeout(noTime);
        for (const bool isThere : {false, true}) {
            answer({0x18}, isThere ? 0 : 1000);
            EXPECT_EQ(handshake(), isThere);
            EXPECT_EQ(std::exchange(steps, {}), "all yield read yield write yield one yield read yield ");
        }
    }
}

TEST_F(Waiting, HasTheseStepsInAnExchange) {
    atYields([this](int) { steps += "yield "; });
    answer({0xAA, 0, 3, 0, 0, 8, 0xF5});
    ByteArray info;
    EXPECT_TRUE(link.SendDataAndReceiveResponse(0, 0, 0, 8, {0}, info));
    const std::string logged = "log3 clsOpane,SendDataAndReceiveResponse\r\n";
    std::string expected = logged + "all yield read write yield one ";
    for (int byte = 0; byte < 7; ++byte)
        expected += "yield wait read yield ";
    EXPECT_EQ(steps, expected + logged);
}

TEST_F(Waiting, AsksTheSystemOnceForWhatIsNotThereYetHoweverLongItTakes) {
    link.Timeout(std::numeric_limits<std::int32_t>::max());
    for (const Micros after : {50'000LL, 2'000'000'000'000LL}) {  // up to 23 days
        answer({0x18}, after);
        EXPECT_TRUE(handshake());
        EXPECT_EQ(std::exchange(steps, {}), "all read write one wait read ");
    }
}

TEST_F(Waiting, KeepsTheTimeOutThatItBeganWithAndServesTheHostEveryMillisecond) {
    for (const int yield : {4, 5}) {  // the first and the second of the wait
        link.Timeout(50);
        const Micros began = bench.time.micros;
        atYields([&](int number) { number == yield ? link.Timeout(500) : void(); });
        EXPECT_FALSE(handshake());
        EXPECT_EQ(link.Timeout(), 500);
        EXPECT_LE(bench.time.since(began), 53);
        EXPECT_NEAR(yields, 55, 5);
    }
}

TEST_F(Waiting, CountsALongHostEvent) {
    link.Timeout(100);
    for (const Micros after : {150'000, 350'000}) {  // during the event, and behind it
        answer({0x18}, after);
        atYields([this](int number) { bench.time.micros += number == 6 ? 300'000 : 0; });
        EXPECT_FALSE(handshake()) << after;
    }
}

TEST_F(Waiting, OutlivesTheReleaseOfItsLink) {
    answer({0x18});
    atYields([this](int) { bench.holder.adopt(std::shared_ptr<clsOPane>()); });
    EXPECT_TRUE(handshake());
    EXPECT_EQ(bench.line.portEvents.back(), "close") << "it has ended behind the call";
}

TEST_F(Waiting, OfAnotherHandshakeLetsOldBytesGoBy) {
    answer({0x18, 0xAA}, 150'000);  // too late for the first handshake, and no answer to the second
    script.answers.push_back({0x55});
    EXPECT_FALSE(makeConnection(link, {1, 9600, 3, "RS232"}));
    EXPECT_FALSE(handshakeAgain());
    const Micros began = bench.time.micros;
    answer({0x18});
    EXPECT_TRUE(handshakeAgain());
    EXPECT_NEAR(bench.time.since(began), 50 + 100, 5) << "the late byte, and the silence behind it";
}

TEST_F(Waiting, ForSilenceOnALineThatIsNeverSilentEnds) {
    atYields([this](int) {  // a byte every 50 ms
        if (!script.nextOutputAt()) {
            answer({0}, 50'000);
            script.receive({}, bench.time.micros);
        }
    });
    EXPECT_FALSE(handshakeAgain());
    EXPECT_NEAR(bench.time.since(start), 2000, 110);
}

}  // namespace
}  // namespace opane::test
