#include <gtest/gtest.h>

#include "support/bench.h"

namespace opane::test {
namespace {

using simulator::Fault;
using simulator::FaultOrder;
using Lines = std::vector<std::string>;

const std::string kSendVersion = "SEND : Mark:AA Leng:0 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:F5";
const std::string kNothingReceived = "RCV : Mark:0 Leng:0 Node:0 Aux1:0 Aux2:0 Type:0 Cksm:0";

/// The answer that a module of node 3 gives to a version request for the text "V", with its closing byte.
const ByteArray kVersionAnswer{0xAA, 0x02, 0x03, 0x00, 0x00, 0x08, 0x56, 0x00, 0x9D};
const std::string kVersionReceived = "RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:9D";

bool askVersion(LinkBench& bench, ByteArray& info) {
    return bench.link().SendDataAndReceiveResponse(0, 0, 0, 8, ByteArray{0}, info);
}

struct FrameCase {
    const char* name;
    std::uint8_t aux1, aux2, type;
    ByteArray data;
    ByteArray frame;
};

class FrameOnTheWire : public testing::TestWithParam<FrameCase> {};

TEST_P(FrameOnTheWire, IsTheOneWorkedOutOnPaper) {
    LinkBench bench;
    ScriptedPeer& peer = bench.scripted();
    const FrameCase& row = GetParam();
    // Answered with the same type and no info; mark, node and checksum of the answer are anything.
    peer.answers = {{0x11, 0x00, 0x77, 0x00, 0x00, row.type, 0x99}};
    ByteArray info{1, 2, 3};
    EXPECT_TRUE(bench.link().SendDataAndReceiveResponse(static_cast<std::uint8_t>(row.frame.size() - 7), row.aux1,
                                                        row.aux2, row.type, row.data, info));
    EXPECT_EQ(peer.heard, std::vector<ByteArray>{row.frame});
    EXPECT_EQ(info, ByteArray{0}) << "an answer without info gives one 0 byte";
}

INSTANTIATE_TEST_SUITE_P(
    Frames, FrameOnTheWire,
    testing::Values(
        FrameCase{"without_data", 0, 0, 8, {0}, {0xAA, 0, 3, 0, 0, 8, 0xF5}},
        FrameCase{"two_bytes", 5, 0, 0x10, {0x12, 0x34}, {0xAA, 2, 3, 5, 0, 0x10, 0x12, 0x34, 0xA0}},
        FrameCase{
            "data_beyond_the_length_stays", 5, 0, 0x10, {0x12, 0x34, 0x56}, {0xAA, 2, 3, 5, 0, 0x10, 0x12, 0x34, 0xA0}},
        FrameCase{"sum_of_256", 0xF0, 0, 0x0D, {}, {0xAA, 0, 3, 0xF0, 0, 0x0D, 0x00}},
        FrameCase{"mark_among_the_data", 0, 0, 0x11, {0xAA}, {0xAA, 1, 3, 0, 0, 0x11, 0xAA, 0x41}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Exchange, RefusesShortDataBeforeAnythingIsSentOrLogged) {
    LinkBench bench;
    ScriptedPeer& peer = bench.scripted();
    ByteArray info{7};
    EXPECT_EQ(raisedNumber([&] { bench.link().SendDataAndReceiveResponse(3, 0, 0, 8, ByteArray{1, 2}, info); }), 9);
    EXPECT_TRUE(peer.heard.empty());
    EXPECT_TRUE(bench.log.empty());
    EXPECT_EQ(info, ByteArray{7});
}

TEST(Exchange, RefusesANodeBeyondAByteBeforeAnythingIsSentOrLogged) {
    LinkBench bench;
    ScriptedPeer& peer = bench.scripted();
    peer.answers = {{0x00}};
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(256));
    ByteArray info;
    EXPECT_EQ(raisedNumber([&] { bench.link().SendDataAndReceiveResponse(0, 0, 0, 8, ByteArray{0}, info); }), 6);
    EXPECT_EQ(peer.heard.size(), 1U);
    EXPECT_TRUE(bench.log.empty());
}

TEST(Exchange, AnAnswerOfType0IsAnErrorAlsoToARequestOfType0) {
    LinkBench bench;
    bench.scripted().answers = {{0xAA, 0, 3, 0, 0, 0, 0xFD}};
    ByteArray info;
    EXPECT_FALSE(bench.link().SendDataAndReceiveResponse(0, 0, 0, 0, ByteArray{0}, info));
    EXPECT_EQ(bench.log.at(1), "Error, command erreur received");
}

TEST(Exchange, ATrueResultReplacesTheInfo) {
    LinkBench bench;
    bench.scripted().answers = {kVersionAnswer};
    ByteArray info{9, 9, 9, 9};
    EXPECT_TRUE(askVersion(bench, info));
    EXPECT_EQ(info, (ByteArray{0x56, 0x00}));
    EXPECT_EQ(bench.log, (Lines{kSendVersion, kVersionReceived}));
}

// ---- what spoiled answers give -------------------------------------------------------------------------------------

struct FaultCase {
    const char* name;
    std::vector<FaultOrder> orders;
    bool result;
    std::size_t requests;
    Lines lines;  // between the first SEND line and the end
};

class SpoiledAnswer : public testing::TestWithParam<FaultCase> {};

TEST_P(SpoiledAnswer, GivesTheseLines) {
    simulator::ModuleOptions options;
    options.version = "V";
    LinkBench bench(options);
    for (const FaultOrder& order : GetParam().orders)
        bench.module.fault(order);
    ByteArray info;
    EXPECT_EQ(askVersion(bench, info), GetParam().result);
    EXPECT_EQ(bench.module.frames().size(), GetParam().requests);
    Lines expected{kSendVersion};
    expected.insert(expected.end(), GetParam().lines.begin(), GetParam().lines.end());
    EXPECT_EQ(bench.log, expected);
}

const std::string kResynchronised = "Resynchronize system OK after 0 times, Retry to send";
const std::string kAuxReceived = "RCV : Mark:AA Leng:2 Node:3 Aux1:1 Aux2:0 Type:8 Cksm:0";

Lines fiveRefusals() {
    Lines lines;
    for (int retry = 1; retry <= 5; ++retry) {
        if (retry > 1)
            lines.push_back(kSendVersion);
        lines.insert(lines.end(),
                     {"Error return, AUX1 or AUX2 <> 0", kAuxReceived, "Retry = " + std::to_string(retry)});
    }
    lines.push_back("Retry = 5. Exit SendDataAndReceiveResponse without success");
    return lines;
}

INSTANTIATE_TEST_SUITE_P(
    Faults, SpoiledAnswer,
    testing::Values(
        FaultCase{
            "missed_request_and_three_handshakes",
            {{Fault::ignore, 1}, {Fault::ignoreHandshake, 3}},
            true,
            2,
            {"Timeout, no Mark received", kNothingReceived, "Try to resynchronize system",
             "Resynchronize system OK after 3 times, Retry to send", "Retry = 1", kSendVersion, kVersionReceived}},
        FaultCase{"silent_module",
                  {{Fault::silent}},
                  false,
                  1,
                  {"Timeout, no Mark received", kNothingReceived, "Try to resynchronize system",
                   "Resynchronize system FAILED"}},
        FaultCase{"aux_five_times", {{Fault::aux, 5}}, false, 5, fiveRefusals()},
        FaultCase{"type_zero",
                  {{Fault::typeZero, 1}},
                  true,
                  2,
                  {"Error, command erreur received", "RCV : Mark:AA Leng:0 Node:3 Aux1:0 Aux2:0 Type:0 Cksm:0",
                   "Try to resynchronize system", kResynchronised, "Retry = 1", kSendVersion, kVersionReceived}},
        FaultCase{
            "wrong_type",
            {{Fault::wrongType, 1}},
            true,
            2,
            {"Error, Type of command received not expected", "RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:9 Cksm:0",
             "Retry = 1", kSendVersion, kVersionReceived}},
        FaultCase{"info_cut_short",
                  {{.fault = Fault::cutInfo, .parameter = 1}},
                  true,
                  2,
                  {"Timeout during INFO transmission", "RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:0",
                   "Retry = 1", kSendVersion, kVersionReceived}},
        FaultCase{"checksum_missing",
                  {{Fault::noChecksum, 1}},
                  true,
                  2,
                  {"Timeout, Checksum not received", "RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:0",
                   "Retry = 1", kSendVersion, kVersionReceived}},
        FaultCase{"checksum_wrong",
                  {{Fault::wrongChecksum, 1}},
                  true,
                  1,
                  {"RCV : Mark:AA Leng:2 Node:3 Aux1:0 Aux2:0 Type:8 Cksm:9E"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Exchange, SeveralErrorsOfOneAttemptAddUp) {
    LinkBench bench;
    // Aux1 is 1, one of two info bytes comes, and the type is not the request's: three errors an attempt.
    const ByteArray bad{0xAA, 0x02, 0x03, 0x01, 0x00, 0x09, 0x56};
    bench.scripted().answers = {bad, bad};
    ByteArray info;
    EXPECT_FALSE(askVersion(bench, info));
    EXPECT_EQ(bench.script.heard.size(), 2U);
    EXPECT_EQ(info, (ByteArray{0x56, 0x00})) << "what came, the rest 0";
    EXPECT_EQ(bench.log.at(10), kSendVersion) << "ten lines an attempt: SEND and three times three";
    EXPECT_EQ(bench.log[bench.log.size() - 2], "Retry = 6");
    EXPECT_EQ(bench.log.back(), "Retry = 6. Exit SendDataAndReceiveResponse without success");
}

TEST(Exchange, AFieldThatDoesNotComeKeepsItsEarlierValue) {
    LinkBench bench;
    ScriptedPeer& peer = bench.scripted();
    // A whole answer that lacks only its checksum, then a header of two bytes; no handshake is answered.
    peer.answers = {{0xAA, 0x00, 0x02, 0x00, 0x00, 0x08}, {0xAB, 0x01}};
    ByteArray info{5};
    EXPECT_FALSE(askVersion(bench, info));
    EXPECT_EQ(bench.log.at(6), "RCV : Mark:AB Leng:1 Node:2 Aux1:0 Aux2:0 Type:8 Cksm:0");
    EXPECT_EQ(info, ByteArray{0}) << "of the last answer with a whole header";
    EXPECT_EQ(peer.heard.size(), 2U + 125U);
}

TEST(Exchange, LateBytesAreNotTakenForTheNextAnswer) {
    LinkBench bench;
    bench.link().Timeout(200);
    ByteArray info;
    // 1.25 s: after the six time-outs of 200 ms, in the time of the handshakes.
    bench.module.fault({.fault = Fault::delay, .count = 1, .parameter = 1250});
    EXPECT_TRUE(askVersion(bench, info));
    const auto& version = bench.module.state().version;
    EXPECT_EQ(std::string(info.begin(), info.end() - 1), version);
    EXPECT_EQ(bench.link().Timeout(), 1000) << "whatever it was before a resynchronisation";
}

TEST(Exchange, AHostEventMayUseTheCallersArray) {
    LinkBench bench;
    ByteArray info;
    bench.services->eventHook = [&info] { ByteArray().swap(info); };
    EXPECT_TRUE(askVersion(bench, info));
}

// ---- the RS485 bus --------------------------------------------------------------------------------------------------

TEST(ExchangeOnABus, ReadsTheEchoBeforeTheAnswer) {
    simulator::ModuleOptions options;
    options.bus = simulator::Bus::rs485;
    LinkBench bench(options);
    bench.link().CommunicationType("RS485");
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(3));
    // The echo of eight data bytes that look like an answer, then the real one.
    const ByteArray data{0xAA, 0, 3, 0, 0, 3, 0x50, 0xAA};
    EXPECT_TRUE(bench.link().OPaneCmd_AffBloc1(1, 2, data));
    EXPECT_EQ(bench.module.state().screen[8][2], 0xAA);
    EXPECT_EQ(bench.module.frames().size(), 1U);
}

TEST(ExchangeOnABus, AMissingEchoCostsTimeOutsAndIsNoError) {
    LinkBench bench;
    bench.link().CommunicationType("RS485");
    ScriptedPeer& peer = bench.scripted();
    // No echo; the answer comes after 3.5 time-outs: three echo reads fail, the other three take its first half.
    peer.answerAfter = 3'500'000;
    peer.answers = {{0xAA, 0x00, 0x03, 0x00, 0x00, 0x08, 0xF5}};
    ByteArray info;
    const auto start = bench.time.micros;
    EXPECT_FALSE(askVersion(bench, info)) << "half of the answer has gone as the echo";
    EXPECT_EQ(bench.log[1], "Timeout, no Mark received");
    EXPECT_EQ(bench.log[2], "RCV : Mark:0 Leng:0 Node:8 Aux1:F5 Aux2:0 Type:0 Cksm:0");
    // Then two header reads fail, and the echo of each of the 125 handshakes.
    EXPECT_NEAR(bench.time.since(start), 3500 + 2 * 1000 + 125 * 100, 2 + 125 + 10);
}

}  // namespace
}  // namespace opane::test
