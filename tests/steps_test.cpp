#include <gtest/gtest.h>

#include <limits>

#include "support/bench.h"
#include "support/forwarding_control.h"

// The order in which a link logs, sends, empties, reads and lets the host's events run.

namespace opane::test {
namespace {

class NotedControl final : public ForwardingControl {
public:
    NotedControl(std::unique_ptr<SerialControl> inner, std::string& notes)
        : ForwardingControl(std::move(inner)), notes_(notes) {}

    using ForwardingControl::InputLen;
    using ForwardingControl::InputMode;

    void InputMode(std::int16_t intInputMode) override {
        notes_ += intInputMode == 1 ? "binary " : "text ";
        ForwardingControl::InputMode(intInputMode);
    }
    void InputLen(std::int16_t intInputLen) override {
        notes_ += intInputLen == 0 ? "all " : "one ";
        ForwardingControl::InputLen(intInputLen);
    }
    std::span<const std::uint8_t> Input() override {
        notes_ += "read ";
        return ForwardingControl::Input();
    }
    void Output(std::span<const std::uint8_t> arrbytOutput) override {
        notes_ += "write ";
        ForwardingControl::Output(arrbytOutput);
    }
    bool WaitForInput(std::int32_t limitMs) override {
        if (!services().eventHook)  // with one a wait is a row of short ones
            notes_ += "wait ";
        return ForwardingControl::WaitForInput(limitMs);
    }

private:
    std::string& notes_;
};

/// Writes down that an exchange, and nothing else, has logged.
class NotedLines final : public LineWriter {
public:
    explicit NotedLines(std::string& notes) : notes_(notes) {}
    void write(const std::string& /*fileName*/, const std::string& line, std::int16_t level) override {
        const bool ofExchange = level == 3 && line.ends_with(" clsOpane,SendDataAndReceiveResponse\r\n");
        notes_ += ofExchange ? "log " : line;
    }

private:
    std::string& notes_;
};

class Steps : public testing::Test {
protected:
    Steps() {
        bench.services->makeSerialControl = [this] {
            return std::make_unique<NotedControl>(std::make_unique<MemorySerialControl>(bench.line), notes);
        };
        bench.holder.adopt(clsOPane::create());
        EXPECT_EQ(notes, "binary ");
        notes.clear();
        link().Initialize();
        link().CommunicationType("RS232");
        threadLog()->writer(std::make_unique<NotedLines>(notes));
        bench.scripted();
    }

    clsOPane& link() { return bench.link(); }
    void noteYields() {
        bench.services->eventHook = [this] { notes += "yield "; };
    }
    bool exchange() {
        ByteArray info;
        return link().SendDataAndReceiveResponse(0, 0, 0, 8, {0}, info);
    }

    std::string notes;
    LinkBench bench;
};

const ByteArray kAnswer{0xAA, 0, 3, 0, 0, 8, 0xF5};

TEST_F(Steps, OfAHandshake) {
    noteYields();
    bench.script.answers = {{0x18}};
    EXPECT_TRUE(link().SendSynchronizeCharacter(3));
    EXPECT_EQ(notes, "all yield read yield write yield one yield read yield ");
}

TEST_F(Steps, OfAHandshakeWithoutTime) {
    noteYields();
    link().Timeout(0);
    EXPECT_FALSE(link().SendSynchronizeCharacter(3));
    EXPECT_EQ(notes, "all yield read yield write yield one yield read yield ");
}

TEST_F(Steps, OfAnExchange) {
    noteYields();
    bench.script.answers = {kAnswer};
    EXPECT_TRUE(exchange());
    std::string bytes;
    for (std::size_t i = 0; i < kAnswer.size(); ++i)
        bytes += "yield read yield ";
    EXPECT_EQ(notes, "log all yield read write yield one " + bytes + "log ");
}

TEST_F(Steps, AWaitAsksTheSystemOnceForWhatIsNotThereYet) {
    bench.script.answers = {{0x18}};
    bench.script.answerAfter = 50'000;
    EXPECT_TRUE(link().SendSynchronizeCharacter(3));
    EXPECT_EQ(notes, "all read write one wait read ");
}

TEST_F(Steps, AWaitKeepsTheTimeOutThatItBeganWith) {
    for (const int yieldOfTheWait : {1, 2}) {
        link().Timeout(50);
        const auto start = bench.time.micros;
        int yields = 0;
        bench.services->eventHook = [&] {
            if (++yields == 3 + yieldOfTheWait)  // three come before it
                link().Timeout(500);
        };
        EXPECT_FALSE(link().SendSynchronizeCharacter(3));
        EXPECT_EQ(link().Timeout(), 500);
        EXPECT_LE(bench.time.since(start), 53);
    }
}

TEST_F(Steps, ALongHostEventCountsAsWaiting) {
    link().Timeout(100);
    for (const Micros answerAfter : {150'000, 350'000}) {  // during the event, and behind it
        bench.script.answers = {{0x18}};
        bench.script.answerAfter = answerAfter;
        int yields = 0;
        bench.services->eventHook = [&] {
            if (++yields == 6)
                bench.time.micros += 300'000;
        };
        EXPECT_FALSE(link().SendSynchronizeCharacter(3)) << answerAfter;
    }
}

TEST_F(Steps, TheLongestTimeOutIsWaitedFor) {
    link().Timeout(std::numeric_limits<std::int32_t>::max());
    bench.script.answers = {{0x18}};
    bench.script.answerAfter = 2'000'000'000'000;  // 23 days
    EXPECT_TRUE(link().SendSynchronizeCharacter(3));
    EXPECT_EQ(notes, "all read write one wait read ");
}

TEST_F(Steps, AHostEventMayReleaseTheLinkInAHandshake) {
    bench.script.answers = {{0x18}};
    clsOPane& released = link();
    bench.services->eventHook = [&] { bench.holder.adopt(std::shared_ptr<clsOPane>()); };
    EXPECT_TRUE(released.SendSynchronizeCharacter(3));
    EXPECT_EQ(bench.line.portEvents.back(), "close") << "it has ended behind the call";
}

}  // namespace
}  // namespace opane::test
