#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/simulated_module.h"
#include "simulator/wire.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Frame, is_written_as_on_paper) {
    EXPECT_EQ(wireBytes({3, 5, 0, 16, {0x12, 0x34}}), (Bytes{0xAA, 2, 3, 5, 0, 16, 0x12, 0x34, 0xA0}));
    EXPECT_EQ(wireBytes({0, 0, 0, 0}), (Bytes{0xAA, 0, 0, 0, 0, 0, 0}));
}

const Bytes kStatusRequest{0xAA, 0, 3, 0, 0, 9, 0xF4};
const Bytes kStatusAnswer{0xAA, 1, 3, 0, 0, 9, 0x38, 0xBB};

Bytes said(SimulatedModule& module, const Bytes& bytes, Micros now = 0) {
    module.receive(bytes, now);
    return module.takeOutput(now);
}

Bytes bytesOf(const std::string& hexadecimal) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < hexadecimal.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16)));
    return bytes;
}

// Moment in milliseconds, what the host says, what comes back at once (a dash: nothing), and so on.
struct ListeningCase {
    const char* name;
    Bus bus;
    int baudRate;
    std::string conversation;
    std::size_t framesHeard;
    std::size_t handshakes;
};

class Listening : public testing::TestWithParam<ListeningCase> {};

TEST_P(Listening, gives_these_answers) {
    SimulatedModule module({.bus = GetParam().bus, .baudRate = GetParam().baudRate});
    std::istringstream conversation(GetParam().conversation);
    Micros atMs = 0;
    for (std::string bytes, answer; conversation >> atMs >> bytes >> answer;)
        EXPECT_EQ(said(module, bytesOf(bytes), atMs * 1000), bytesOf(answer)) << atMs << " ms";
    EXPECT_EQ(module.frames().size(), GetParam().framesHeard);
    EXPECT_EQ(module.handshakes(), GetParam().handshakes);
    EXPECT_EQ(module.state().screen, ScreenImage{});
}

constexpr Bus kDirect = Bus::rs232;
const std::string kStatus = "AA0003000009F4 ";
const std::string kItsAnswer = "AA010300000938BB ";

INSTANTIATE_TEST_SUITE_P(
    Conversations, Listening,
    testing::Values(
        ListeningCase{"bytes_between_frames", kDirect, 9600, "0 00A4A915FF - 0 " + kStatus + kItsAnswer, 1, 0},
        ListeningCase{"frame_for_another_node", kDirect, 9600, "0 AA0002000009F5 -", 1, 0},
        // 2 + 3 + 13 + 168 + 170 = 356; 512 - 356 = 156
        ListeningCase{"marks_and_handshakes_as_data", kDirect, 9600, "0 AA020300000DA8AA9C AA000300000DF0", 1, 0},
        ListeningCase{"frame_in_pieces", kDirect, 9600, "0 AA - 49 00 - 98 030000 - 147 09 - 196 F4 " + kItsAnswer, 1,
                      0},
        ListeningCase{"several_at_once", kDirect, 9600,
                      "0 A8AA0003000008F4AA0003000009F4 18AA0003000000FDAA010300000938BB", 1, 1},
        ListeningCase{"cut_frame", kDirect, 9600, "0 AAFF03 - 50 A8 - 101 A8 18", 0, 1},
        // 8 characters of 10 bits take 66.67 ms
        ListeningCase{"slow_frame", kDirect, 1200, "0 AA - 66 0003000009 - 132 F4 " + kItsAnswer, 1, 0},
        ListeningCase{"slow_cut_frame", kDirect, 1200, "0 AA00 - 67 A8 18", 0, 1},
        ListeningCase{"wrong_checksum", kDirect, 9600, "0 AA0003FF0006F9 AA0003000000FD", 0, 0},
        ListeningCase{"echo", Bus::rs485, 9600, "0 A8 A818 0 A5 A5 0 AA0003000008F6 AA0003000008F6AA0003000000FD", 0,
                      2}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Handshake, is_answered_by_its_own_node_only) {
    for (int node = 0; node < 4; ++node) {
        SimulatedModule module({.node = node});
        EXPECT_EQ(said(module, {0xA5, 0xA6, 0xA7, 0xA8}), Bytes{static_cast<std::uint8_t>(0x15 + node)});
    }
}

TEST(Speeds, noise_while_they_differ_and_none_after) {
    SimulatedModule module;
    module.hostBaudRate(19200);
    for (int i = 0; i < 300; ++i)
        for (const std::uint8_t byte : said(module, {0xA8}, i * 100'000))
            EXPECT_NE(byte, 0x18);
    EXPECT_TRUE(module.frames().empty());
    module.hostBaudRate(9600);
    EXPECT_EQ(said(module, {0xA8}, 40'000'000), (Bytes{0x18}));
}

TEST(Speeds, an_answer_is_noise_to_a_host_that_has_changed_its_speed_but_an_echo_is_not) {
    const auto heard = [] {
        SimulatedModule module({.bus = Bus::rs485});
        module.receive(kStatusRequest, 0);
        module.hostBaudRate(4800);
        return module.takeOutput(0);
    };
    const Bytes bytes = heard();
    ASSERT_EQ(bytes.size(), 7U + 8U);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 7), kStatusRequest);
    for (std::size_t i = 0; i < kStatusAnswer.size(); ++i)
        EXPECT_NE(bytes[7 + i], kStatusAnswer[i]) << i;
    EXPECT_EQ(heard(), bytes) << "the same noise in every run";
}

TEST(Options, are_refused_out_of_range) {
    EXPECT_THROW(SimulatedModule({.node = 4}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.node = -1}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.quartz = 4}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.baudRate = 38400, .quartz = 1}), std::invalid_argument);
}

struct PaceCase {
    int baudRate;
    Micros lastRequestByte;
    Micros lastAnswerByte;
};

// 7 bytes there, which are echoed, and 8 back, of 10 bits each.
TEST(Pacing, gives_every_byte_its_time) {
    for (const auto& row : {PaceCase{1200, 58'333, 125'000}, {9600, 7'292, 15'625}, {57600, 1'215, 2'604}}) {
        SimulatedModule module({.bus = Bus::rs485, .baudRate = row.baudRate, .quartz = 3, .pace = true});
        constexpr Micros kStart = 1'000'000;
        module.receive(kStatusRequest, kStart);
        std::vector<Micros> arrivals;
        while (const auto at = module.nextOutputAt()) {
            EXPECT_TRUE(module.takeOutput(*at - 1).empty());
            EXPECT_EQ(module.takeOutput(*at).size(), 1U);
            arrivals.push_back(*at - kStart);
        }
        ASSERT_EQ(arrivals.size(), 7U + 8U);
        EXPECT_NEAR(static_cast<double>(arrivals[6]), static_cast<double>(row.lastRequestByte), 2);
        EXPECT_NEAR(static_cast<double>(arrivals.back()), static_cast<double>(row.lastAnswerByte), 2);
    }
}

TEST(Pacing, one_direction_at_a_time_and_delays_on_top) {
    SimulatedModule module({.pace = true});  // a character takes 1041.67 us
    module.receive(Bytes{0xA8, 0xA8}, 0);    // the second one is heard after the answer to the first
    EXPECT_EQ(module.takeOutput(2'084), (Bytes{0x18}));
    EXPECT_TRUE(module.takeOutput(4'160).empty());
    EXPECT_EQ(module.takeOutput(4'170), (Bytes{0x18}));

    module.fault(faultOrder("delay:10"));
    module.receive({{0xAA, 0, 2, 0, 0, 9, 0xF5}}, 100'000);  // for another node: 7 characters all the same
    module.receive(kStatusRequest, 100'000);
    // 7 + 7 characters, 10 ms, 1 character
    EXPECT_NEAR(static_cast<double>(module.nextOutputAt().value_or(0)), 125'625.0, 2);
}

TEST(LongLife, of_a_module_whose_host_never_reads_needs_no_more_and_more_memory) {
    SimulatedModule module({.keepFrames = false});
    constexpr std::size_t kFrames = 20'000;  // answered by more than can be on its way
    for (std::size_t i = 0; i < kFrames; ++i)
        module.receive(kStatusRequest, 0);
    EXPECT_EQ(module.framesHeard(), kFrames);
    EXPECT_TRUE(module.frames().empty());
    EXPECT_EQ(module.takeOutput(0).size(), kMostOnItsWay);
    EXPECT_EQ(said(module, kStatusRequest), kStatusAnswer) << "and nothing is lost any more";
}

}  // namespace
}  // namespace opane::simulator
