#include <gtest/gtest.h>

#include "support/bench.h"
#include "support/row_name.h"

// A call that is cancelled sends nothing new and ends at once, but for what must be seen to its end.

namespace opane::test {
namespace {

struct SentBytes final : LinkObserver {
    void bytesSent(std::span<const std::uint8_t> bytes) override { count += bytes.size(); }
    std::size_t count = 0;
};

enum class By { host, limit };

struct CancelCase {
    const char* name;
    bool silent;
    By by;
    std::int64_t atMs;  // of the call; negative: before it begins
    bool (*call)(clsOPane& link);
    bool succeeds;
    double endsMs;
    std::size_t sent;  // bytes
    const char* log;   // its lines of level 3, by their first word
};

class Cancelled : public testing::TestWithParam<CancelCase> {};

TEST_P(Cancelled, EndsInTimeAndSendsNothingNew) {
    const CancelCase& row = GetParam();
    LinkBench bench({.baudRate = 1200, .pace = true});
    Cancellation cancellation;
    bench.services->cancellation = &cancellation;
    bench.link().Baudrate(1200);
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(3));
    if (row.silent)
        bench.module.fault({.fault = simulator::Fault::silent});
    SentBytes sent;
    bench.link().observer(&sent);
    bench.link().Timeout(2000);
    const auto start = bench.time.micros;
    if (row.by == By::limit)
        cancellation.cancelAfter(bench.time, static_cast<std::int32_t>(row.atMs));
    else if (row.atMs < 0)
        cancellation.cancel();
    else
        bench.services->eventHook = [&] {
            if (bench.time.since(start) >= static_cast<double>(row.atMs))
                cancellation.cancel();
        };
    EXPECT_EQ(row.call(bench.link()), row.succeeds);
    EXPECT_NEAR(bench.time.since(start), row.endsMs, 2);
    EXPECT_EQ(sent.count, row.sent);
    std::string log;
    for (const std::string& line : bench.log)
        log += line.substr(0, line.find_first_of(" ,")) + ' ';
    EXPECT_EQ(log, row.log);
}

constexpr auto clear = [](clsOPane& link) { return link.OPaneCmd_Clear(0); };
constexpr auto handshake = [](clsOPane& link) { return link.SendSynchronizeCharacter(3) || link.IsSynchronized(); };
constexpr auto write = [](clsOPane& link) {
    return link.OPaneCmd_WriteEEPROMUser(0, 128, ByteArray(128, 7)) && !link.OPaneCmd_Clear(0);
};
constexpr auto reset = [](clsOPane& link) { return link.OPaneCmd_Reset(0); };

constexpr auto kSilent = "Cmd SEND Timeout RCV Try Resynchronize ";
constexpr auto kWritten = "Cmd Length Base SEND RCV Cmd SEND Timeout RCV Try Resynchronize ";
constexpr auto kUnwritten = "Cmd Length Base SEND Timeout RCV Try Resynchronize ";

const CancelCase kCalls[]{
    {"before_an_exchange", false, By::host, -1, clear, false, 0, 0, kSilent},
    {"before_a_handshake", false, By::host, -1, handshake, false, 0, 0, ""},
    {"waiting_for_the_answer", true, By::host, 1500, clear, false, 1500, 7, kSilent},
    {"in_a_resynchronisation", true, By::host, 12'150, clear, false, 12'150, 9, kSilent},
    {"at_its_limit", true, By::limit, 5000, clear, false, 5000, 7, kSilent},
    {"an_eeprom_write_is_seen_to_its_end", false, By::host, 100, write, true, 1183, 135, kWritten},
    {"but_no_longer_than_it_can_take", true, By::host, 100, write, false, 1484, 135, kUnwritten},
    {"reset_takes_its_second", false, By::limit, 500, reset, false, 1117, 7, "Cmd Reset SEND RCV "},
};
INSTANTIATE_TEST_SUITE_P(Calls, Cancelled, testing::ValuesIn(kCalls), rowName);

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

}  // namespace
}  // namespace opane::test
