#include <gtest/gtest.h>

#include "support/bench.h"

// A call that is cancelled sends nothing new and ends at once, but for what must be seen to its end.

namespace opane::test {
namespace {

using simulator::Fault;

class SentBytes final : public LinkObserver {
public:
    void bytesSent(std::span<const std::uint8_t> bytes) override { count += bytes.size(); }
    std::size_t count = 0;
};

struct CancelCase {
    const char* name;
    bool silent;
    std::int64_t atMs;  // of the call; negative: before it begins
    bool byLimit;       // that many milliseconds are its limit, and nobody cancels
    bool (*call)(clsOPane& link);
    bool succeeds;
    double earliestMs, latestMs;  // its end
    std::size_t sent;             // bytes
    const char* log;              // its lines of level 3, by their first word
};

class Cancelled : public testing::TestWithParam<CancelCase> {};

TEST_P(Cancelled, EndsInTimeAndSendsNothingNew) {
    const CancelCase& row = GetParam();
    LinkBench bench({.baudRate = 1200, .pace = true});
    Cancellation cancellation;
    bench.services->cancellation = &cancellation;
    int boxes = 0;
    bench.services->messageBox = [&boxes](const std::string&, const std::string&, MessageBoxButtons) {
        ++boxes;
        return MessageBoxAnswer::ok;
    };
    bench.link().Baudrate(1200);
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(3));
    if (row.silent)
        bench.module.fault({.fault = Fault::silent});
    SentBytes sent;
    bench.link().observer(&sent);
    bench.link().Timeout(2000);
    const auto start = bench.time.micros;
    if (row.byLimit)
        cancellation.cancelAfter(bench.time, static_cast<std::int32_t>(row.atMs));
    else if (row.atMs < 0)
        cancellation.cancel();
    else
        bench.services->eventHook = [&] {
            if (bench.time.since(start) >= static_cast<double>(row.atMs))
                cancellation.cancel();
        };
    EXPECT_EQ(row.call(bench.link()), row.succeeds);
    EXPECT_GE(bench.time.since(start), row.earliestMs);
    EXPECT_LE(bench.time.since(start), row.latestMs);
    EXPECT_EQ(sent.count, row.sent);
    EXPECT_EQ(boxes, std::string(row.name).starts_with("reset") ? 1 : 0);
    std::string log;
    for (const std::string& line : bench.log)
        log += line.substr(0, line.find_first_of(" ,")) + ' ';
    EXPECT_EQ(log, row.log);
}

TEST(Cancellations, ANestedCallLeavesAnEepromWriteItsTime) {
    LinkBench bench({.pace = true});
    Cancellation cancellation;
    bench.services->cancellation = &cancellation;
    bench.services->eventHook = [&] {
        if (bench.line.waits < 3 || cancellation.cancelled())  // the frame is out when the third wait has begun
            return;
        cancellation.cancel();
        EXPECT_FALSE(bench.link().OPaneCmd_Clear(0));
    };
    EXPECT_TRUE(bench.link().OPaneCmd_WriteEEPROMUser(0, 128, ByteArray(128, 7)));
    EXPECT_TRUE(cancellation.cancelled());
    bench.services->eventHook = nullptr;
    cancellation.reset();
    EXPECT_TRUE(bench.link().OPaneCmd_Clear(0)) << "it is taken back";
}

bool clear(clsOPane& link) {
    ByteArray info;
    return link.SendDataAndReceiveResponse(0, 0, 0, 6, {0}, info);
}
bool handshake(clsOPane& link) {
    return link.SendSynchronizeCharacter(3) || link.IsSynchronized();
}
bool writeEeprom(clsOPane& link) {
    return link.OPaneCmd_WriteEEPROMUser(0, 128, ByteArray(128, 7)) && !link.OPaneCmd_Clear(0);
}
bool reset(clsOPane& link) {
    return link.OPaneCmd_Reset(0);
}

constexpr auto kSilent = "SEND Timeout RCV Try Resynchronize ";

INSTANTIATE_TEST_SUITE_P(
    Calls, Cancelled,
    testing::Values(CancelCase{"before_an_exchange", false, -1, false, clear, false, 0, 1, 0, kSilent},
                    CancelCase{"before_a_handshake", false, -1, false, handshake, false, 0, 1, 0, ""},
                    CancelCase{"waiting_for_the_answer", true, 1500, false, clear, false, 1500, 1502, 7, kSilent},
                    CancelCase{"in_a_resynchronisation", true, 12'150, false, clear, false, 12'150, 12'152, 9, kSilent},
                    CancelCase{"at_its_limit", true, 5000, true, clear, false, 5000, 5002, 7, kSilent},
                    CancelCase{"an_eeprom_write_is_seen_to_its_end", false, 100, false, writeEeprom, true, 1170, 1250,
                               135, "Cmd Length Base SEND RCV Cmd SEND Timeout RCV Try Resynchronize "},
                    CancelCase{"but_no_longer_than_it_can_take", true, 100, false, writeEeprom, false, 1480, 1490, 135,
                               "Cmd Length Base SEND Timeout RCV Try Resynchronize "},
                    CancelCase{"reset_takes_its_second", false, 500, true, reset, false, 1116, 1130, 7,
                               "Cmd Reset SEND RCV "}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace opane::test
