#include <gtest/gtest.h>

#include "support/bench.h"
#include "support/row_name.h"

namespace opane::test {
namespace {

using Events = std::vector<std::string>;
constexpr auto kOpen = "open 1 9600,N,8,1";

TEST(PortSettings, ANewLinkOpensPort1At9600UntilASettingIsWritten) {
    Bench bench;
    GlobalsHolder holder;
    Globals& globals = holder.globals();
    holder.adopt(clsOPane::create());
    globals.gintCommPort = 2;
    clsOPane& link = *holder.link();
    EXPECT_FALSE(link.IsOpen());
    EXPECT_EQ(link.Timeout(), 1000);
    link.Initialize();
    EXPECT_EQ(link.CommPort(), 2);
    EXPECT_EQ(link.Baudrate(), 0);
    link.Baudrate(19200);
    EXPECT_EQ(bench.line.portEvents, (Events{kOpen, "close", "open 2 19200,N,8,1"}));
    link.Terminate();
    EXPECT_FALSE(link.IsOpen());
    globals.glngBaudrate = 38400;
    link.Initialize();
    EXPECT_EQ(bench.line.portEvents.back(), "open 2 19200,N,8,1") << "what was written last";
    link.CommPort(3);  // as good as a rate for writing both
    EXPECT_EQ(bench.line.portEvents.back(), "open 3 38400,N,8,1");
    holder.adopt(std::shared_ptr<clsOPane>());
    EXPECT_EQ(bench.line.portEvents.back(), "close");
}

TEST(PortSettings, EveryWriteReopensAndClearsTheFlag) {
    LinkBench bench;
    clsOPane& link = bench.link();
    link.Baudrate(9600);
    bench.line.portEvents.clear();
    for (const bool isRate : {true, false}) {
        ASSERT_TRUE(link.SendSynchronizeCharacter(3));
        isRate ? link.Baudrate(9600) : link.CommPort(1);
        EXPECT_FALSE(link.IsSynchronized());
    }
    link.CloseCommunication();
    link.CloseCommunication();
    EXPECT_TRUE(link.OpenCommunication());
    EXPECT_EQ(bench.line.portEvents, (Events{"close", kOpen, "close", kOpen, "close", kOpen}));
}

TEST(PortSettings, AVanishedDeviceEndsTheSynchronisation) {
    LinkBench bench;
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(3));
    bench.module.fault({.fault = simulator::Fault::unplug});
    EXPECT_EQ(raisedNumber([&] { bench.link().OPaneCmd_Clear(0); }), 57);
    EXPECT_FALSE(bench.link().IsSynchronized());
    bench.module.replug();
    EXPECT_TRUE(bench.link().OpenCommunication());
    EXPECT_FALSE(bench.link().IsSynchronized()) << "the port was closed meanwhile";
}

TEST(PortSettings, WhatIsRefusedIsStoredAllTheSameAndThePortStaysClosed) {
    LinkBench bench;
    clsOPane& link = bench.link();
    EXPECT_EQ(raisedNumber([&] { link.Baudrate(-1); }), 380);
    EXPECT_EQ(link.Baudrate(), -1);
    EXPECT_FALSE(link.IsOpen());
    link.Baudrate(9600);
    bench.line.missingPort = 7;
    link.CommPort(7);
    EXPECT_EQ(link.CommPort(), 7);
    EXPECT_FALSE(link.IsOpen());
    EXPECT_EQ(raisedNumber([&] { link.SendSynchronizeCharacter(3); }), 8018);
    EXPECT_EQ(raisedNumber([&] { link.OPaneCmd_Clear(0); }), 8018);
    link.CommPort(1);
    EXPECT_TRUE(link.SendSynchronizeCharacter(3));
    bench.holder.adopt(std::shared_ptr<clsLog>());
    EXPECT_EQ(raisedNumber([&] { link.OPaneCmd_Clear(0); }), 91) << "there is no log";
    EXPECT_TRUE(bench.module.frames().empty());
}

struct HandshakeCase {
    const char* name;
    const char* bus;
    std::int16_t node;
    std::uint8_t sent;
    ByteArray answer;
    bool result;
    bool synchronizedAfter;  // it was before
};

class Handshake : public testing::TestWithParam<HandshakeCase> {};

TEST_P(Handshake, SendsOneCharacterAndLooksAtOneAnswer) {
    LinkBench bench;
    ScriptedPeer& peer = bench.scripted();
    const HandshakeCase& row = GetParam();
    peer.answers = {{0x16}, row.answer, {0xAA, 0, 0, 0, 0, 6, 0}};
    ASSERT_TRUE(bench.link().SendSynchronizeCharacter(1));
    bench.link().CommunicationType(row.bus);
    EXPECT_EQ(bench.link().SendSynchronizeCharacter(row.node), row.result);
    EXPECT_EQ(peer.heard.back(), ByteArray{row.sent});
    EXPECT_EQ(bench.link().IsSynchronized(), row.synchronizedAfter);
    bench.link().CommunicationType("RS232");
    ASSERT_TRUE(bench.link().OPaneCmd_Clear(0));
    EXPECT_EQ(peer.heard.back().at(2), row.result ? row.node : 1);
}

const HandshakeCase kHandshakes[]{
    {"node_0", "RS232", 0, 0xA5, {0x15}, true, true},
    {"node_1", "RS232", 1, 0xA6, {0x16}, true, true},
    {"node_2", "RS232", 2, 0xA7, {0x17}, true, true},
    {"node_3", "RS232", 3, 0xA8, {0x18}, true, true},
    {"node_5", "RS232", 5, 0x00, {0x00}, true, true},
    {"negative_node", "RS232", -1, 0x00, {0x18}, false, false},
    {"another_nodes_answer", "RS232", 2, 0xA7, {0x18}, false, false},
    {"right_answer_second", "RS232", 2, 0xA7, {0x00, 0x17}, false, false},
    {"silence", "RS232", 2, 0xA7, {}, false, false},
    {"bus", "RS485", 2, 0xA7, {0xA7, 0x17}, true, true},
    {"bus_with_damaged_echo", "RS485", 2, 0xA7, {0x3C, 0x17}, true, true},
    {"bus_without_echo", "RS485", 2, 0xA7, {0x17}, false, false},
    {"bus_with_wrong_answer", "RS485", 2, 0xA7, {0xA7, 0x16}, false, false},
    {"no_bus_type", "", 2, 0xA7, {0x17}, false, true},
    {"other_letter_case", "rs232", 2, 0xA7, {0x17}, false, true},
};
INSTANTIATE_TEST_SUITE_P(Codes, Handshake, testing::ValuesIn(kHandshakes), rowName);

}  // namespace
}  // namespace opane::test
