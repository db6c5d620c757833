#include <gtest/gtest.h>

#include <deque>
#include <functional>

#include "automation/clsOPaneCommDLL.h"
#include "support/bench.h"
#include "support/campaign/bounds.h"
#include "support/glyph_bytes.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using campaign::longestExchange;
using campaign::longestHandshake;

/// The slowest module that there can be: every byte comes just before its deadline. Of each exchange it rejects the
/// first four requests in 261 bytes and takes the fifth in 262; every resynchronisation takes all its handshakes. On a
/// bus it spoils the echo so that it is as long.
class SlowestModule final : public Peer {
public:
    explicit SlowestModule(bool onBus) : onBus_(onBus) {}

    void receive(std::span<const std::uint8_t> bytes, Micros now) override {
        due_ = now;
        if (bytes.size() == 1) {
            ++handshakes_;
            const bool resynchronising = attempt_ > 0 && attempt_ < kAttempts;
            if (onBus_)
                send(0);
            send(resynchronising && handshakes_ < 125 ? 0 : 0x18);
            return;
        }
        attempt_ = attempt_ % kAttempts + 1;
        handshakes_ = 0;
        if (onBus_)
            sendFrame(0, true);
        sendFrame(attempt_ < kAttempts ? 0 : bytes[5], attempt_ == kAttempts);
    }
    ByteArray takeOutput(Micros now) override {
        ByteArray arrived;
        for (; !onItsWay_.empty() && onItsWay_.front().first <= now; onItsWay_.pop_front())
            arrived.push_back(onItsWay_.front().second);
        return arrived;
    }
    std::optional<Micros> nextOutputAt() const override {
        return onItsWay_.empty() ? std::nullopt : std::optional(onItsWay_.front().first);
    }

private:
    static constexpr int kAttempts = 5;

    void sendFrame(std::uint8_t type, bool withChecksum) {
        for (const std::uint8_t byte :
             {std::uint8_t{0xAA}, std::uint8_t{255}, std::uint8_t{3}, std::uint8_t{0}, std::uint8_t{0}, type})
            send(byte);
        for (int left = 255 + (withChecksum ? 1 : 0); left > 0; --left)
            send(0);
    }
    void send(std::uint8_t byte) {
        due_ += Micros{threadLink()->Timeout()} * 1000;
        onItsWay_.emplace_back(due_, byte);
    }

    bool onBus_;
    int attempt_ = 0;
    int handshakes_ = 0;
    Micros due_ = 0;
    std::deque<std::pair<Micros, std::uint8_t>> onItsWay_;
};

struct Host {
    clsOPaneCommDLL& object;
    clsOPane& link;
    std::string generator;
    std::string bitmap;
    std::int16_t status = -1;
    std::int16_t value = 0;
    std::int32_t reading = 0;
    ByteArray bytes{};
};

struct BoundCase {
    const char* name;
    bool (*run)(Host& host);  // whether it did what it is for
    std::int64_t exchanges;   // of docs/bounds.md
    std::int64_t more = 0;    // milliseconds beside them
};

class LongestTime : public testing::TestWithParam<std::tuple<BoundCase, bool>> {};

TEST_P(LongestTime, IsNearlyReachedAndNeverExceeded) {
    const auto& [row, onBus] = GetParam();
    const TemporaryFolder folder;
    const ByteArray glyphs = generator();
    SlowestModule module(onBus);
    Bench bench;
    bench.line.peer = &module;
    clsOPaneCommDLL object;
    const auto link = threadLink();
    link->Baudrate(9600);
    link->CommunicationType(onBus ? "RS485" : "RS232");
    Host host{object, *link, folder.write("test.gen", std::string(glyphs.begin(), glyphs.end())),
              folder.write("test.bmp", std::string(62 + 64 * 16, '\x01'))};
    const auto start = bench.time.micros;
    EXPECT_TRUE(row.run(host));
    const auto longest = static_cast<double>(row.exchanges * longestExchange(1000, onBus) + row.more * (onBus ? 2 : 1));
    EXPECT_LE(bench.time.since(start), longest);
    EXPECT_GE(bench.time.since(start), 0.97 * longest);
}

const ByteArray kBlock(8, 0);

INSTANTIATE_TEST_SUITE_P(
    Public, LongestTime,
    testing::Combine(testing::Values(BoundCase{"DisplayString",
                                               [](Host& host) {
                                                   host.object.DisplayString("ABCDEFGHIJKLMNOPQRST", 0, 0, 0, 0,
                                                                             host.generator, host.status);
                                                   return host.status == 0;
                                               },
                                               15},
                                     BoundCase{"Synchronize",
                                               [](Host& host) {
                                                   host.object.Synchronize(2, 9600, 3, host.status);
                                                   return host.status == 0;
                                               },
                                               0, longestHandshake(100, false)},
                                     BoundCase{"Version",
                                               [](Host& host) {
                                                   std::string version;
                                                   host.object.Version(version);
                                                   return !version.empty();
                                               },
                                               0},
                                     BoundCase{"ChangeBaudrate",
                                               [](Host& host) {
                                                   host.object.ChangeBaudrate(19200, host.status);
                                                   return host.status == 0;
                                               },
                                               1, longestHandshake(1000, false)},
                                     BoundCase{"ReadStatus",
                                               [](Host& host) {
                                                   std::array<std::int16_t, 5> flags{};
                                                   host.object.ReadStatus(flags[0], flags[1], flags[2], flags[3],
                                                                          flags[4], host.status);
                                                   return host.status == 0;
                                               },
                                               1},
                                     BoundCase{"WriteStatus",
                                               [](Host& host) {
                                                   host.object.WriteStatus(1, 0, 1, 0, 1, host.status);
                                                   return host.status == 0;
                                               },
                                               6},
                                     BoundCase{"DisplayBMP",
                                               [](Host& host) {
                                                   host.object.DisplayBMP(host.bitmap, host.status);
                                                   return host.status == 0;
                                               },
                                               8},
                                     BoundCase{"ReadIRLastKey",
                                               [](Host& host) {
                                                   host.object.ReadIRLastKey(host.value, host.value, host.status);
                                                   return host.status == 0;
                                               },
                                               1}),
                     testing::Values(false)),
    [](const auto& row) { return std::string(std::get<0>(row.param).name); });

INSTANTIATE_TEST_SUITE_P(
    OfTheLink, LongestTime,
    testing::Combine(
        testing::Values(
            BoundCase{"handshake", [](Host& host) { return host.link.SendSynchronizeCharacter(3); }, 0,
                      longestHandshake(1000, false)},
            BoundCase{"pattern", [](Host& host) { return host.link.OPaneCmd_AffBloc1(0, 0, kBlock); }, 1},
            BoundCase{"reading", [](Host& host) { return host.link.OPaneCmd_ReadADC(0, host.reading); }, 1},
            BoundCase{"register", [](Host& host) { return host.link.OPaneCmd_ReadVert(0, host.value); }, 1},
            BoundCase{"eeprom", [](Host& host) { return host.link.OPaneCmd_ReadEEPROMUser(0, 128, host.bytes); }, 1},
            BoundCase{"status", [](Host& host) { return host.link.OPaneCmd_WriteStatus(true, true, true, true, true); },
                      5},
            BoundCase{"bitmap",
                      [](Host& host) {
                          ScreenImage image{};
                          return host.link.OPaneCmd_AfficheBMP(host.bitmap, image);
                      },
                      8},
            BoundCase{"baud_rate", [](Host& host) { return host.link.OPaneCmd_RS232Baudrate(4800, 2); }, 1,
                      longestHandshake(1000, false)},
            BoundCase{"reset_of_the_module", [](Host& host) { return host.link.OPaneCmd_Reset(0); }, 1,
                      1002 + longestHandshake(1000, false)},
            BoundCase{"reset_of_the_light", [](Host& host) { return host.link.OPaneCmd_Reset(1); }, 1}),
        testing::Bool()),
    [](const auto& row) {
        return std::string(std::get<0>(row.param).name) + (std::get<1>(row.param) ? "_on_a_bus" : "");
    });

TEST(LongestTime, OfASilentModule) {
    for (const bool onBus : {false, true}) {
        LinkBench bench;
        bench.scripted();
        bench.link().CommunicationType(onBus ? "RS485" : "RS232");
        const auto start = bench.time.micros;
        EXPECT_FALSE(bench.link().OPaneCmd_Clear(0));
        EXPECT_LE(bench.time.since(start), campaign::silentExchange(1000, onBus));
        EXPECT_GE(bench.time.since(start), 0.97 * static_cast<double>(campaign::silentExchange(1000, onBus)));
    }
}

TEST(LongestTime, OfARefusalOnALineWithItsOwnPace) {
    for (const bool onBus : {false, true}) {
        LinkBench bench({.bus = onBus ? simulator::Bus::rs485 : simulator::Bus::rs232, .pace = true});
        bench.link().CommunicationType(onBus ? "RS485" : "RS232");
        bench.module.fault({.fault = simulator::Fault::aux, .count = simulator::kForEver});
        for (const bool again : {false, true}) {
            const auto start = bench.time.micros;
            EXPECT_FALSE(bench.link().OPaneCmd_Clear(0));
            const double good = 10'000.0 * (onBus ? 21 : 14) / 9600;
            const auto longest = 5 * good + static_cast<double>(campaign::waitsOfARefusal(1000, onBus, again));
            EXPECT_LE(bench.time.since(start), longest);
            EXPECT_GE(bench.time.since(start), 0.97 * longest);
        }
    }
}

}  // namespace
}  // namespace opane::test
