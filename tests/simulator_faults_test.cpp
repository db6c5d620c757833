#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "simulator/simulated_module.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The last key: 2 + 3 + 18 + 0xF3 + 7 = 273; 512 - 273 = 239
const Bytes kKeyRequest{0xAA, 0, 3, 1, 0, 18, 0xEA};
const Bytes kKeyAnswer{0xAA, 2, 3, 0, 0, 18, 0xF3, 7, 239};

Bytes said(SimulatedModule& module, const Bytes& bytes, Micros now = 0) {
    module.receive(bytes, now);
    return module.takeOutput(now);
}

Bytes bytesOf(const std::string& hexadecimal) {  // a dash: none
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < hexadecimal.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16)));
    return bytes;
}

TEST(SpoiledAnswer, once_and_then_all_is_well) {
    std::istringstream rows(  // faults, and what comes instead of kKeyAnswer
        "ignore -  wrong-type AA0203000013F307EE  type-zero AA0003000000FD  aux AA0203010012F307EE "
        "aux:7 AA0203070012F307E8  cut-info AA0203000012  cut-info:1 AA0203000012F3  cut-info:2 AA0203000012F307EF "
        "no-checksum AA0203000012F307  wrong-checksum AA0203000012F307F0  garbage:2 5A5AAA0203000012F307EF "
        "aux,cut-info:1,wrong-type AA0203010013F3  cut-info:1,no-checksum AA0203000012F3");
    for (std::string faults, first; rows >> faults >> first;) {
        SimulatedModule module;
        module.pressKey(1);
        std::istringstream each(faults);
        for (std::string fault; std::getline(each, fault, ',');)
            module.fault(faultOrder(fault));
        EXPECT_EQ(said(module, kKeyRequest), bytesOf(first)) << faults;
        EXPECT_EQ(said(module, kKeyRequest), kKeyAnswer) << faults;
        EXPECT_EQ(module.frames().size(), 2U);
    }
}

// Four times a handshake (h) and a request (r); a dot is silence, a capital has Aux1 255.
TEST(Fault, is_counted_from_the_order_on) {
    std::istringstream rows(
        "ignore@1 hrh.hrhr  ignore:2@1 hrh.h.hr  ignore@h2 hrh.hrhr  ignore-handshake:3 .r.r.rhr "
        "ignore-handshake:9@h2 hrhr.r.r  silent ........  silent@1 hr......  silent@h1 h....... "
        "aux:255x2 hRhRhrhr  aux:255@1xall hrhRhRhR");
    for (std::string fault, expected; rows >> fault >> expected;) {
        SimulatedModule module;
        said(module, kKeyRequest);
        said(module, {0xA8});
        module.fault(faultOrder(fault));
        std::string answered;
        for (int round = 0; round < 4; ++round) {
            answered += said(module, {0xA8}).empty() ? '.' : 'h';
            const Bytes answer = said(module, kKeyRequest);
            answered += answer.empty() ? '.' : answer.at(3) == 255 ? 'R' : 'r';
        }
        EXPECT_EQ(answered, expected) << fault;
        EXPECT_EQ(module.handshakes(), 5U);
    }
}

TEST(SpoiledRequest, is_carried_out_only_where_the_answer_says_so) {
    for (const std::string fault : {"ignore", "silent", "type-zero", "aux", "unplug", "wrong-type", "no-checksum"}) {
        SimulatedModule module;
        module.fault(faultOrder(fault));
        said(module, {0xAA, 0, 3, 255, 0, 6, 0xF8});  // clear with 255
        EXPECT_EQ(module.state().screen[0][0], fault == "wrong-type" || fault == "no-checksum" ? 255 : 0) << fault;
    }
}

TEST(Delay, makes_one_answer_late_and_what_follows_waits_for_it) {
    SimulatedModule module({.bus = Bus::rs485});
    module.pressKey(1);
    module.fault(faultOrder("delay:300"));
    EXPECT_EQ(said(module, kKeyRequest, 1000), kKeyRequest);
    EXPECT_EQ(said(module, {0xA8}, 2000), (Bytes{0xA8})) << "its echo is not late";
    EXPECT_EQ(module.nextOutputAt(), 301'000);
    EXPECT_TRUE(module.takeOutput(300'999).empty());
    Bytes both = kKeyAnswer;
    both.push_back(0x18);
    EXPECT_EQ(module.takeOutput(301'000), both);
    EXPECT_EQ(module.nextOutputAt(), std::nullopt);
}

TEST(Unplug, at_the_second_request_until_it_is_plugged_in_again) {
    SimulatedModule module;
    module.fault(faultOrder("unplug@1"));
    EXPECT_FALSE(said(module, kKeyRequest).empty());
    EXPECT_FALSE(module.unplugged());
    module.receive(Bytes{0xA8}, 0);
    EXPECT_TRUE(said(module, kKeyRequest).empty()) << "what was on its way is lost";
    EXPECT_TRUE(module.unplugged());
    EXPECT_TRUE(said(module, {0xA8}).empty());
    module.replug();
    EXPECT_EQ(said(module, {0xA8}), (Bytes{0x18}));
    EXPECT_EQ(module.handshakes(), 2U) << "the one while it was unplugged went unheard";
}

TEST(LostRate, keeps_the_old_speed_after_a_change_that_it_has_answered) {
    SimulatedModule module;
    module.fault(faultOrder("lost-rate"));
    said(module, kKeyRequest);  // no change of speed
    EXPECT_EQ(said(module, {0xAA, 0, 3, 253, 0, 14, 0xF2})[3], 2) << "one refused is none";
    for (const bool lost : {true, false}) {
        EXPECT_EQ(said(module, {0xAA, 0, 3, 254, 0, 14, 0xF1}), (Bytes{0xAA, 0, 3, 0, 0, 14, 0xEF}));
        module.hostBaudRate(19200);
        EXPECT_EQ(said(module, {0xA8}), lost ? Bytes{} : Bytes{0x18});
        module.hostBaudRate(9600);
        EXPECT_EQ(said(module, {0xA8}) == Bytes{0x18}, lost);
    }
}

TEST(LostRate, makes_a_reset_module_deaf_at_9600_until_it_is_plugged_in_again) {
    SimulatedModule module;
    module.fault(faultOrder("lost-rate"));
    module.pressKey(1);
    EXPECT_EQ(said(module, {0xAA, 0, 3, 0, 0, 7, 0xF6}), (Bytes{0xAA, 0, 3, 0, 0, 7, 0xF6}));
    EXPECT_EQ(module.state().lastKey, kNoKey) << "it is reset all the same";
    EXPECT_TRUE(said(module, {0xA8}).empty());
    EXPECT_TRUE(said(module, kKeyRequest).empty());
    module.replug();
    EXPECT_EQ(said(module, {0xA8}), (Bytes{0x18}));
}

TEST(FaultOrder, is_read) {
    EXPECT_EQ(faultOrder("auxx3").count, 3U) << "a name that ends in x";
    EXPECT_EQ(faultOrder("ignore:010").count, 10U);
    EXPECT_EQ(faultOrder("aux:0x1F").parameter, 31);
    EXPECT_EQ(faultOrder("aux:0x1x0x1f").count, 31U);
    const FaultOrder everything = faultOrder("delay:500@4x2");
    EXPECT_EQ(std::tie(everything.fault, everything.parameter, everything.after, everything.count),
              std::tuple(Fault::delay, 500, 4U, 2U));
}

TEST(FaultOrder, is_refused_by_its_name) {
    for (const std::string order :
         {"",        "mute",    "ignore:0",     "ignore:x",    "ignore:2x2",  "ignore:-1",   "silent:3", "silentx2",
          "aux:0",   "aux:256", "cut-info:256", "garbage:0",   "delay:60001", "lost-rate:1", "aux:1x0",  "aux:1@",
          "aux:1@h", "aux:1x",  "aux 1",        "aux:9999999", "aux@0x2",     "cut-info:0x2"})
        try {
            faultOrder(order);
            ADD_FAILURE() << order;
        } catch (const std::invalid_argument& error) {
            EXPECT_EQ(std::string(error.what()).find("fault \"" + order + "\": "), 0U) << error.what();
        }
    EXPECT_THROW(faultOrder(std::string(200'000, 'a')), std::invalid_argument) << "of any length";
    SimulatedModule module;
    EXPECT_THROW(module.fault({.fault = Fault::aux, .parameter = 0}), std::invalid_argument);
    EXPECT_THROW(module.fault({.fault = Fault::ignore, .parameter = 1}), std::invalid_argument);
}

}  // namespace
}  // namespace opane::simulator
