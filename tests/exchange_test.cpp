#include <gtest/gtest.h>

#include "support/bench.h"
#include "support/row_name.h"

namespace opane::test {
namespace {

using simulator::Fault;
using simulator::FaultOrder;

const std::string kSendVersion = "SEND : Mark:AA Leng:0 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:F5";
const std::string kNothingReceived = "RCV : Mark:0 Leng:0 Node:0 Aux1:0 Aux2:0 Type:0 Cksm:0";
const std::string kVersionReceived = "RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:9D";

class Exchange : public testing::Test {
protected:
    bool askVersion() { return bench.link().SendDataAndReceiveResponse(0, 0, 0, 8, ByteArray{0}, info); }

    LinkBench bench;
    ByteArray info{9, 9, 9, 9};
};

struct FrameCase {
    const char* name;
    std::uint8_t aux1, type;
    ByteArray data, frame;
};

class FrameOnTheWire : public Exchange, public testing::WithParamInterface<FrameCase> {};

TEST_P(FrameOnTheWire, IsTheOneWorkedOutOnPaper) {
    const auto& [name, aux1, type, data, frame] = GetParam();
    // Answered with the same type and no info; mark, node and checksum of the answer are anything.
    bench.scripted().answers = {{0x11, 0x00, 0x77, 0x00, 0x00, type, 0x99}};
    const auto length = static_cast<std::uint8_t>(frame.size() - 7);
    EXPECT_TRUE(bench.link().SendDataAndReceiveResponse(length, aux1, 0, type, data, info));
    EXPECT_EQ(bench.script.heard, std::vector<ByteArray>{frame});
    EXPECT_EQ(info, ByteArray{0}) << "an answer without info gives one 0 byte";
}

const FrameCase kFrames[]{
    {"without_data", 0, 8, {0}, {0xAA, 0, 3, 0, 0, 8, 0xF5}},
    {"two_bytes", 5, 0x10, {0x12, 0x34}, {0xAA, 2, 3, 5, 0, 0x10, 0x12, 0x34, 0xA0}},
    {"data_beyond_the_length", 5, 0x10, {0x12, 0x34, 0x56}, {0xAA, 2, 3, 5, 0, 0x10, 0x12, 0x34, 0xA0}},
    {"sum_of_256", 0xF0, 0x0D, {}, {0xAA, 0, 3, 0xF0, 0, 0x0D, 0x00}},
    {"mark_among_the_data", 0, 0x11, {0xAA}, {0xAA, 1, 3, 0, 0, 0x11, 0xAA, 0x41}},
};
INSTANTIATE_TEST_SUITE_P(Frames, FrameOnTheWire, testing::ValuesIn(kFrames), rowName);

TEST_F(Exchange, RefusesShortDataAndANodeBeyondAByteBeforeAnythingIsSentOrLogged) {
    bench.scripted().answers = {{0x00}};
    EXPECT_EQ(raisedNumber([&] { bench.link().SendDataAndReceiveResponse(3, 0, 0, 8, ByteArray{1, 2}, info); }), 9);
    EXPECT_TRUE(bench.script.heard.empty());
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(256));
    EXPECT_EQ(raisedNumber([&] { askVersion(); }), 6);
    EXPECT_EQ(bench.script.heard.size(), 1U);
    EXPECT_TRUE(bench.log.empty());
    EXPECT_EQ(info, (ByteArray{9, 9, 9, 9}));
}

TEST_F(Exchange, OfType0IsNeverTrue) {
    bench.scripted().answers = {{0xAA, 0, 3, 0, 0, 0, 0xFD}};
    EXPECT_FALSE(bench.link().SendDataAndReceiveResponse(0, 0, 0, 0, ByteArray{0}, info));
    EXPECT_EQ(bench.log.at(1), "Error, command erreur received");
}

struct FaultCase {
    const char* name;
    std::vector<FaultOrder> orders;
    bool result;
    std::string lines;  // behind the first SEND line
};

class SpoiledAnswer : public testing::TestWithParam<FaultCase> {};

TEST_P(SpoiledAnswer, GivesTheseLines) {
    LinkBench bench({.version = "V"});
    for (const FaultOrder& order : GetParam().orders)
        bench.module.fault(order);
    ByteArray info;
    EXPECT_EQ(bench.link().SendDataAndReceiveResponse(0, 0, 0, 8, ByteArray{0}, info), GetParam().result);
    EXPECT_EQ(bench.logged(), kSendVersion + '|' + GetParam().lines);
}

const std::string kAgain = "|Retry = 1|" + kSendVersion + '|' + kVersionReceived;
const std::string kReceived = "|RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:0";
const std::string kResynchronize = "|Try to resynchronize system|Resynchronize system ";
const std::string kSilence = "Timeout, no Mark received|" + kNothingReceived + kResynchronize;
const std::string kMissed = kSilence + "OK after 3 times, Retry to send" + kAgain;
const std::string kTypeZero = "Error, command erreur received|RCV : Mark:AA Leng:0 Node:3 Aux1:0 Aux2:0 Type:0 Cksm:0" +
                              kResynchronize + "OK after 0 times, Retry to send" + kAgain;
const std::string kWrongType =
    "Error, Type of command received not expected|RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:9 Cksm:0" + kAgain;
const std::string kCutInfo = "Timeout during INFO transmission" + kReceived + kAgain;
const std::string kNoChecksum = "Timeout, Checksum not received" + kReceived + kAgain;

const FaultCase kFaults[]{
    {"missed_request_and_three_handshakes", {{Fault::ignore, 1}, {Fault::ignoreHandshake, 3}}, true, kMissed},
    {"silent_module", {{Fault::silent}}, false, kSilence + "FAILED"},
    {"type_zero", {{Fault::typeZero, 1}}, true, kTypeZero},
    {"wrong_type", {{Fault::wrongType, 1}}, true, kWrongType},
    {"info_cut_short", {{.fault = Fault::cutInfo, .parameter = 1}}, true, kCutInfo},
    {"checksum_missing", {{Fault::noChecksum, 1}}, true, kNoChecksum},
    {"checksum_wrong", {{Fault::wrongChecksum, 1}}, true, kReceived.substr(1, kReceived.size() - 2) + "9E"},
};
INSTANTIATE_TEST_SUITE_P(Faults, SpoiledAnswer, testing::ValuesIn(kFaults), rowName);

TEST_F(Exchange, AHostEventMayUseTheCallersArray) {
    bench.services->eventHook = [this] { ByteArray().swap(info); };
    EXPECT_TRUE(askVersion());
}

TEST(ExchangeOnABus, ReadsTheEchoBeforeTheAnswer) {
    LinkBench bench({.bus = simulator::Bus::rs485});
    bench.link().CommunicationType("RS485");
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(3));
    // The echo of eight data bytes that look like an answer, then the real one.
    EXPECT_TRUE(bench.link().OPaneCmd_AffBloc1(1, 2, {0xAA, 0, 3, 0, 0, 3, 0x50, 0xAA}));
    EXPECT_EQ(bench.module.state().screen[8][2], 0xAA);
    EXPECT_EQ(bench.module.frames().size(), 1U);
}

}  // namespace
}  // namespace opane::test
