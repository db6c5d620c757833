#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "simulator/simulated_module.h"
#include "simulator/wire.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct FrameCase {
    const char* name;
    std::uint8_t node, aux1, aux2, type;
    Bytes data;
    Bytes bytes;
};

class FrameOnPaper : public testing::TestWithParam<FrameCase> {};

TEST_P(FrameOnPaper, is_written_and_read) {
    const auto& [name, node, aux1, aux2, type, data, bytes] = GetParam();
    EXPECT_EQ(wireBytes({node, aux1, aux2, type, data}), bytes);
    const Frame read = frameOf(bytes);
    EXPECT_EQ(std::tie(read.node, read.aux1, read.aux2, read.type, read.data), std::tie(node, aux1, aux2, type, data));
    EXPECT_TRUE(balances(bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Frames, FrameOnPaper,
    testing::Values(FrameCase{"no_data", 3, 0, 0, 8, {}, {0xAA, 0, 3, 0, 0, 8, 0xF5}},
                    FrameCase{"two_data_bytes", 3, 5, 0, 16, {0x12, 0x34}, {0xAA, 2, 3, 5, 0, 16, 0x12, 0x34, 0xA0}},
                    FrameCase{"all_zero", 0, 0, 0, 0, {}, {0xAA, 0, 0, 0, 0, 0, 0}},
                    // 1 + 3 + 0 + 0 + 17 + 170 = 191; 256 - 191 = 65
                    FrameCase{"a_mark_as_data", 3, 0, 0, 17, {0xAA}, {0xAA, 1, 3, 0, 0, 17, 0xAA, 65}}),
    [](const auto& row) { return std::string(row.param.name); });

const Bytes kVersionRequest{0xAA, 0, 3, 0, 0, 8, 0xF5};
const Bytes kStatusRequest{0xAA, 0, 3, 0, 0, 9, 0xF4};
const Bytes kStatusAnswer{0xAA, 1, 3, 0, 0, 9, 0x38, 0xBB};

Bytes said(SimulatedModule& module, const Bytes& bytes, Micros now = 0) {
    module.receive(bytes, now);
    return module.takeOutput(now);
}

Bytes joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

struct HandshakeCase {
    const char* name;
    int node;
    std::uint8_t sent;
    Bytes answer;
};

class Handshake : public testing::TestWithParam<HandshakeCase> {};

TEST_P(Handshake, is_answered_by_its_own_node_only) {
    SimulatedModule module({.node = GetParam().node});
    EXPECT_EQ(said(module, {GetParam().sent}), GetParam().answer);
    EXPECT_EQ(module.handshakes(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Nodes, Handshake,
                         testing::Values(HandshakeCase{"node_0", 0, 0xA5, {0x15}},
                                         HandshakeCase{"node_1", 1, 0xA6, {0x16}},
                                         HandshakeCase{"node_2", 2, 0xA7, {0x17}},
                                         HandshakeCase{"node_3", 3, 0xA8, {0x18}},
                                         HandshakeCase{"another_node", 1, 0xA7, {}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Listening, passes_over_what_is_neither_mark_nor_handshake) {
    SimulatedModule module;
    EXPECT_EQ(said(module, joined({0x00, 0xA4, 0xA9, 0x15, 0xFF}, kStatusRequest)), kStatusAnswer);
    EXPECT_EQ(module.handshakes(), 0U);
}

TEST(Listening, takes_handshake_characters_within_a_frame_as_data) {
    SimulatedModule module;
    // 1 + 3 + 17 + 168 = 189; 256 - 189 = 67
    EXPECT_EQ(said(module, {0xAA, 1, 3, 0, 0, 17, 0xA8, 67}), (Bytes{0xAA, 0, 3, 0, 0, 17, 0xEC}));
    EXPECT_EQ(module.state().sed1530[0], 0xA8);
    EXPECT_EQ(module.handshakes(), 0U);
}

TEST(Listening, takes_a_frame_in_pieces_and_several_at_once) {
    SimulatedModule module;
    for (std::size_t i = 0; i + 1 < kStatusRequest.size(); ++i)
        EXPECT_TRUE(said(module, {kStatusRequest[i]}, static_cast<Micros>(i) * 49'000).empty());
    EXPECT_EQ(said(module, {kStatusRequest.back()}, 6 * 49'000), kStatusAnswer);
    EXPECT_EQ(said(module, joined({0xA8}, joined(kStatusRequest, kStatusRequest)), 400'000),
              joined({0x18}, joined(kStatusAnswer, kStatusAnswer)));
    EXPECT_EQ(module.frames().size(), 3U);
    EXPECT_EQ(module.frames()[0], kStatusRequest);
}

TEST(Listening, drops_a_cut_frame_after_the_quiet_gap) {
    SimulatedModule module;
    EXPECT_TRUE(said(module, {0xAA, 0xFF, 3}).empty());
    EXPECT_TRUE(said(module, {0xA8}, 50'000).empty()) << "still within the frame";
    EXPECT_EQ(said(module, {0xA8}, 100'001), (Bytes{0x18}));
}

TEST(Listening, waits_longer_at_a_slow_rate) {
    SimulatedModule module({.baudRate = 1200});  // 8 characters of 10 bits take 66.67 ms
    EXPECT_TRUE(said(module, {0xAA, 0}).empty());
    EXPECT_TRUE(said(module, {3, 0, 0, 9}, 66'000).empty());
    EXPECT_EQ(said(module, {0xF4}, 132'000), kStatusAnswer);
    EXPECT_TRUE(said(module, {0xAA, 0}, 200'000).empty());
    EXPECT_EQ(said(module, {0xA8}, 266'700), (Bytes{0x18}));
}

TEST(Listening, ignores_frames_for_another_node) {
    SimulatedModule module({.node = 2});
    EXPECT_TRUE(said(module, kVersionRequest).empty());
    EXPECT_EQ(module.frames().size(), 1U);
}

TEST(Listening, answers_a_wrong_checksum_with_type_0_and_changes_nothing) {
    SimulatedModule module;
    EXPECT_EQ(said(module, {0xAA, 0, 3, 255, 0, 6, 0xF9}), (Bytes{0xAA, 0, 3, 0, 0, 0, 0xFD}));
    EXPECT_EQ(module.state().screen, ScreenImage{});
    EXPECT_TRUE(module.frames().empty());
}

TEST(Rs485, echoes_everything_before_the_answer) {
    SimulatedModule module({.bus = Bus::rs485});
    EXPECT_EQ(said(module, {0xA8}), (Bytes{0xA8, 0x18}));
    EXPECT_EQ(said(module, {0xA5}), (Bytes{0xA5}));
    EXPECT_EQ(said(module, kStatusRequest), joined(kStatusRequest, kStatusAnswer));
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
    SimulatedModule module({.bus = Bus::rs485});
    module.receive(kStatusRequest, 0);
    module.hostBaudRate(4800);
    const auto heard = module.takeOutput(0);
    ASSERT_EQ(heard.size(), kStatusRequest.size() + kStatusAnswer.size());
    for (std::size_t i = 0; i < heard.size(); ++i) {
        if (i < kStatusRequest.size()) {
            EXPECT_EQ(heard[i], kStatusRequest[i]);
        } else {
            EXPECT_NE(heard[i], kStatusAnswer[i - kStatusRequest.size()]);
        }
    }
}

TEST(Speeds, noise_is_the_same_in_every_run) {
    const auto noiseOf = [] {
        SimulatedModule module;
        module.receive(kStatusRequest, 0);
        module.hostBaudRate(4800);
        return module.takeOutput(0);
    };
    EXPECT_EQ(noiseOf(), noiseOf());
}

TEST(Options, are_refused_out_of_range) {
    EXPECT_THROW(SimulatedModule({.node = 4}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.node = -1}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.quartz = 4}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.baudRate = 38400, .quartz = 1}), std::invalid_argument);
}

struct PaceCase {
    const char* name;
    int baudRate;
    Bus bus;
    Micros lastRequestByte;
    Micros lastAnswerByte;
};

class Pacing : public testing::TestWithParam<PaceCase> {};

// 7 bytes there and 8 back, of 10 bits each.
TEST_P(Pacing, gives_every_byte_its_time) {
    const auto& row = GetParam();
    SimulatedModule module({.bus = row.bus, .baudRate = row.baudRate, .quartz = 3, .pace = true});
    constexpr Micros kStart = 1'000'000;
    module.receive(kStatusRequest, kStart);
    std::vector<Micros> arrivals;
    while (const auto at = module.nextOutputAt()) {
        EXPECT_TRUE(module.takeOutput(*at - 1).empty());
        EXPECT_EQ(module.takeOutput(*at).size(), 1U);
        arrivals.push_back(*at - kStart);
    }
    const std::size_t echoed = row.bus == Bus::rs485 ? 7 : 0;
    ASSERT_EQ(arrivals.size(), echoed + 8);
    if (echoed != 0) {
        EXPECT_NEAR(static_cast<double>(arrivals[echoed - 1]), static_cast<double>(row.lastRequestByte), 2);
    }
    EXPECT_NEAR(static_cast<double>(arrivals.back()), static_cast<double>(row.lastAnswerByte), 2);
}

INSTANTIATE_TEST_SUITE_P(Rates, Pacing,
                         testing::Values(PaceCase{"slowest", 1200, Bus::rs232, 58'333, 125'000},
                                         PaceCase{"usual", 9600, Bus::rs232, 7'292, 15'625},
                                         PaceCase{"with_echo", 9600, Bus::rs485, 7'292, 15'625},
                                         PaceCase{"fastest", 57600, Bus::rs232, 1'215, 2'604}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Pacing, a_host_that_speaks_too_early_is_heard_after_the_answer) {
    SimulatedModule module({.pace = true});
    module.receive(Bytes{0xA8, 0xA8}, 0);  // answers: 1 character after the first, then the second one
    EXPECT_EQ(module.takeOutput(2'084), (Bytes{0x18}));
    EXPECT_TRUE(module.takeOutput(4'160).empty());
    EXPECT_EQ(module.takeOutput(4'170), (Bytes{0x18}));
}

TEST(Pacing, frames_for_another_node_take_their_time_too) {
    SimulatedModule module({.node = 2, .pace = true});
    module.receive(kStatusRequest, 0);
    module.receive(Bytes{0xA7}, 0);
    // 7 + 1 + 1 characters of 1041.67 us
    EXPECT_NEAR(static_cast<double>(module.nextOutputAt().value_or(0)), 9'375.0, 2);
}

}  // namespace
}  // namespace opane::simulator
