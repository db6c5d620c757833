#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/simulated_module.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Vlcd, 118 as it is set at the start: 2 + 3 + 18 + 118 = 141; 256 - 141 = 115
const Bytes kVlcdRequest{0xAA, 0, 3, 2, 0, 18, 0xE9};
const Bytes kVlcdAnswer{0xAA, 2, 3, 0, 0, 18, 118, 0, 115};

Bytes said(SimulatedModule& module, const Bytes& bytes, Micros now = 0) {
    module.receive(bytes, now);
    return module.takeOutput(now);
}

struct SpoiledCase {
    const char* name;
    std::vector<std::string> faults;
    Bytes first;  // what comes instead of kVlcdAnswer
};

class SpoiledAnswer : public testing::TestWithParam<SpoiledCase> {};

TEST_P(SpoiledAnswer, once_and_then_all_is_well) {
    SimulatedModule module;
    for (const auto& fault : GetParam().faults)
        module.fault(faultOrder(fault));
    EXPECT_EQ(said(module, kVlcdRequest), GetParam().first);
    EXPECT_EQ(said(module, kVlcdRequest), kVlcdAnswer);
    EXPECT_EQ(module.frames().size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, SpoiledAnswer,
    testing::Values(SpoiledCase{"ignore", {"ignore"}, {}},
                    SpoiledCase{"wrong_type", {"wrong-type"}, {0xAA, 2, 3, 0, 0, 19, 118, 0, 114}},
                    SpoiledCase{"type_zero", {"type-zero"}, {0xAA, 0, 3, 0, 0, 0, 0xFD}},
                    SpoiledCase{"aux", {"aux"}, {0xAA, 2, 3, 1, 0, 18, 118, 0, 114}},
                    SpoiledCase{"aux_of_7", {"aux:7"}, {0xAA, 2, 3, 7, 0, 18, 118, 0, 108}},
                    SpoiledCase{"cut_info", {"cut-info"}, {0xAA, 2, 3, 0, 0, 18}},
                    SpoiledCase{"cut_info_after_one", {"cut-info:1"}, {0xAA, 2, 3, 0, 0, 18, 118}},
                    SpoiledCase{"cut_info_after_all", {"cut-info:2"}, kVlcdAnswer},
                    SpoiledCase{"no_checksum", {"no-checksum"}, {0xAA, 2, 3, 0, 0, 18, 118, 0}},
                    SpoiledCase{"wrong_checksum", {"wrong-checksum"}, {0xAA, 2, 3, 0, 0, 18, 118, 0, 116}},
                    SpoiledCase{"garbage", {"garbage:2"}, {0x5A, 0x5A, 0xAA, 2, 3, 0, 0, 18, 118, 0, 115}},
                    SpoiledCase{"three_at_once", {"aux", "cut-info:1", "wrong-type"}, {0xAA, 2, 3, 1, 0, 19, 118}},
                    SpoiledCase{
                        "cut_and_without_checksum", {"cut-info:1", "no-checksum"}, {0xAA, 2, 3, 0, 0, 18, 118}}),
    [](const auto& row) { return std::string(row.param.name); });

struct WhenCase {
    const char* name;
    const char* fault;
    std::string answered;  // of one handshake (h) and request (r) after the other; a dot is silence
};

class WhenAFaultApplies : public testing::TestWithParam<WhenCase> {};

TEST_P(WhenAFaultApplies, is_counted) {
    SimulatedModule module;
    module.fault(faultOrder(GetParam().fault));
    std::string answered;
    for (int round = 0; round < 4; ++round) {
        answered += said(module, {0xA8}).empty() ? '.' : 'h';
        answered += said(module, kVlcdRequest).empty() ? '.' : 'r';
    }
    EXPECT_EQ(answered, GetParam().answered);
    EXPECT_EQ(module.handshakes(), 4U);
}

INSTANTIATE_TEST_SUITE_P(Orders, WhenAFaultApplies,
                         testing::Values(WhenCase{"ignore_two", "ignore:2", "h.h.hrhr"},
                                         WhenCase{"ignore_the_second", "ignore@1", "hrh.hrhr"},
                                         WhenCase{"ignore_two_after_one", "ignore:2@1", "hrh.h.hr"},
                                         WhenCase{"ignore_after_two_handshakes", "ignore@h2", "hrh.hrhr"},
                                         WhenCase{"handshakes", "ignore-handshake:3", ".r.r.rhr"},
                                         WhenCase{"handshakes_after_two", "ignore-handshake:9@h2", "hrhr.r.r"},
                                         WhenCase{"silent", "silent", "........"},
                                         WhenCase{"silent_after_one", "silent@1", "hr......"},
                                         WhenCase{"silent_after_a_handshake", "silent@h1", "h......."}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(FaultCount, spoils_that_many_answers_or_all) {
    SimulatedModule module;
    module.fault({.fault = Fault::noChecksum, .count = 2});
    module.fault({.fault = Fault::aux, .count = kForEver, .after = 3, .parameter = 255});
    std::vector<std::size_t> sizes;
    for (int i = 0; i < 3; ++i)
        sizes.push_back(said(module, kVlcdRequest).size());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{8, 8, 9}));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(said(module, kVlcdRequest).at(3), 255);
}

TEST(FaultCount, starts_at_the_order) {
    SimulatedModule module;
    said(module, kVlcdRequest);
    module.fault({.fault = Fault::ignore, .after = 1});
    EXPECT_EQ(said(module, kVlcdRequest), kVlcdAnswer);
    EXPECT_TRUE(said(module, kVlcdRequest).empty());
}

struct CarriedOutCase {
    const char* name;
    Fault fault;
    bool carriedOut;
};

class SpoiledRequest : public testing::TestWithParam<CarriedOutCase> {};

TEST_P(SpoiledRequest, is_carried_out_or_not) {
    SimulatedModule module;
    module.fault({.fault = GetParam().fault});
    said(module, {0xAA, 0, 3, 255, 0, 6, 0xF8});  // clear with 255
    EXPECT_EQ(module.state().screen[0][0], GetParam().carriedOut ? 255 : 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, SpoiledRequest,
                         testing::Values(CarriedOutCase{"ignore", Fault::ignore, false},
                                         CarriedOutCase{"silent", Fault::silent, false},
                                         CarriedOutCase{"type_zero", Fault::typeZero, false},
                                         CarriedOutCase{"aux", Fault::aux, false},
                                         CarriedOutCase{"unplug", Fault::unplug, false},
                                         CarriedOutCase{"wrong_type", Fault::wrongType, true},
                                         CarriedOutCase{"no_checksum", Fault::noChecksum, true},
                                         CarriedOutCase{"delay", Fault::delay, true}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Delay, makes_one_answer_late_and_what_follows_waits_for_it) {
    SimulatedModule module({.bus = Bus::rs485});
    module.fault({.fault = Fault::delay, .parameter = 300});
    EXPECT_EQ(said(module, kVlcdRequest, 1000), kVlcdRequest);
    EXPECT_EQ(said(module, {0xA8}, 2000), (Bytes{0xA8})) << "its echo is not late";
    EXPECT_EQ(module.nextOutputAt(), 301'000);
    EXPECT_TRUE(module.takeOutput(300'999).empty());
    Bytes both = kVlcdAnswer;
    both.push_back(0x18);
    EXPECT_EQ(module.takeOutput(301'000), both);
    EXPECT_EQ(module.nextOutputAt(), std::nullopt);
}

TEST(Delay, comes_on_top_of_the_time_on_the_line) {
    SimulatedModule module({.pace = true});
    module.fault({.fault = Fault::delay, .parameter = 10});
    module.receive(kVlcdRequest, 0);
    // 7 characters of 1041.67 us, 10 ms, 1 character
    EXPECT_NEAR(static_cast<double>(module.nextOutputAt().value_or(0)), 18'333.0, 2);
}

TEST(Unplug, at_the_second_request_until_it_is_plugged_in_again) {
    SimulatedModule module;
    module.fault(faultOrder("unplug@1"));
    EXPECT_EQ(said(module, kVlcdRequest), kVlcdAnswer);
    EXPECT_FALSE(module.unplugged());
    module.receive(Bytes{0xA8}, 0);
    EXPECT_TRUE(said(module, kVlcdRequest).empty()) << "what was on its way is lost";
    EXPECT_TRUE(module.unplugged());
    EXPECT_TRUE(said(module, {0xA8}).empty());
    module.replug();
    EXPECT_EQ(said(module, {0xA8}), (Bytes{0x18}));
    EXPECT_EQ(module.handshakes(), 2U) << "the one while it was unplugged went unheard";
}

struct OrderCase {
    const char* name;
    const char* text;
    FaultOrder order;
};

class GoodOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(GoodOrder, is_read) {
    const FaultOrder read = faultOrder(GetParam().text);
    const FaultOrder& order = GetParam().order;
    EXPECT_EQ(read.fault, order.fault);
    EXPECT_EQ(read.count, order.count);
    EXPECT_EQ(read.after, order.after);
    EXPECT_EQ(read.afterHandshakes, order.afterHandshakes);
    EXPECT_EQ(read.parameter, order.parameter);
}

INSTANTIATE_TEST_SUITE_P(Orders, GoodOrder,
                         testing::Values(OrderCase{"name", "unplug", {.fault = Fault::unplug}},
                                         OrderCase{"how_many", "ignore:2", {.fault = Fault::ignore, .count = 2}},
                                         OrderCase{"a_name_that_ends_in_x", "auxx3", {.fault = Fault::aux, .count = 3}},
                                         OrderCase{"everything",
                                                   "delay:500@4x2",
                                                   {.fault = Fault::delay, .count = 2, .after = 4, .parameter = 500}},
                                         OrderCase{"handshakes_and_for_ever",
                                                   "garbage@h1xall",
                                                   {.fault = Fault::garbage, .count = kForEver, .afterHandshakes = 1}}),
                         [](const auto& row) { return std::string(row.param.name); });

class BadOrder : public testing::TestWithParam<const char*> {};

TEST_P(BadOrder, is_refused_by_its_name) {
    try {
        faultOrder(GetParam());
        FAIL() << GetParam();
    } catch (const std::invalid_argument& error) {
        EXPECT_EQ(std::string(error.what()).find('"' + std::string(GetParam()) + "\": "), 6U) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, BadOrder,
                         testing::Values("", "mute", "ignore:0", "ignore:x", "ignore:2x2", "ignore:-1", "silent:3",
                                         "silentx2", "aux:0", "aux:256", "cut-info:256", "garbage:0", "delay:60001",
                                         "aux:1x0", "aux:1@", "aux:1@h", "aux:1x", "aux 1", "aux:9999999"));

TEST(BadParameter, is_refused_by_the_module) {
    SimulatedModule module;
    EXPECT_THROW(module.fault({.fault = Fault::aux, .parameter = 0}), std::invalid_argument);
    EXPECT_THROW(module.fault({.fault = Fault::ignore, .parameter = 1}), std::invalid_argument);
}

}  // namespace
}  // namespace opane::simulator
