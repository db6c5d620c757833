#include "simulator/simulated_module.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <tuple>

#include "simulator/readings.h"
#include "simulator/wire.h"
#include "support/row_name.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& hexadecimal) {  // a dash: none
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < hexadecimal.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16)));
    return bytes;
}

Bytes said(SimulatedModule& module, const Bytes& bytes, Micros now = 0) {
    module.receive(bytes, now);
    return module.takeOutput(now);
}

const std::string kKey = "AA0003010012EA";

// Pairs of what the host says and what comes back, with orders among them: at MICROSECONDS, host BAUDRATE, key NUMBER,
// set READING, fault ORDER, unread BYTES (said, while nobody takes what comes back), ask ANSWER (to kKey), replug -; and
// what has been heard until then: heard FRAMES+HANDSHAKES. Checksums are 256 less the sum behind the mark.
struct Conversation {
    const char* name;
    std::string words;
    ModuleOptions options{};
};

class Module : public testing::TestWithParam<Conversation> {};

TEST_P(Module, TalksAsOnPaper) {
    SimulatedModule module(GetParam().options);
    std::istringstream words(GetParam().words);
    Micros now = 0;
    for (std::string word, with; words >> word >> with;) {
        SCOPED_TRACE(word + " " + with);
        if (word == "at")
            now = std::stoi(with);
        else if (word == "host")
            module.hostBaudRate(std::stoi(with));
        else if (word == "key")
            module.pressKey(std::stoi(with));
        else if (word == "set")
            setReading(module.state(), with);
        else if (word == "fault")
            module.fault(faultOrder(with));
        else if (word == "unread")
            module.receive(bytesOf(with), now);
        else if (word == "replug")
            module.replug();
        else if (word == "heard")
            EXPECT_EQ(std::to_string(module.frames().size()) + "+" + std::to_string(module.handshakes()), with);
        else
            EXPECT_EQ(said(module, bytesOf(word == "ask" ? kKey : word), now), bytesOf(with));
    }
}

const std::string kStatus = "AA0003000009F4 ";
const std::string kItsAnswer = "AA010300000938BB ";
const std::string kDone = " AA000300000EEF host ";
const std::string kLuminosity = "AA000300000BF2 ";

// The status: upside down 1, inverted 2, frame 4, LCD 8, automatic backlight 16, automatic Vlcd 32.
const Conversation kConversations[] = {
    {"version", "AA0003000008F5 AA050300000856312E320009", {.version = "V1.2"}},
    {"status",
     "AA000300010AF2 AA000300000AF3 AA0003000009F4 AA010300000939BA "
     "AA000301010AF1 AA000300000AF3 AA0003000009F4 AA01030000093BB8 "
     "AA000302000AF1 AA000300000AF3 AA0003000009F4 AA010300000933C0 "
     "AA000303000AF0 AA000300000AF3 AA0003000009F4 AA010300000923D0 "
     "AA000304000AEF AA000300000AF3 AA0003000009F4 AA010300000903F0 "
     "AA000302010AF0 AA000300000AF3 AA0003000009F4 AA01030000090BE8"},
    // 230 = 0xE6, 118 = 0x76
    {"temperature_and_vlcd", "AA0003000012EB AA0203000012E60003 AA0003020012E9 AA0203000012760073"},
    // The codes 7F3 7C3 7D4 7D6 7DF 7EF 7DE 7EE 7F2; every other press has 800 on top.
    {"keys",
     "key 1 ask AA0203000012F307EF key 1 ask AA0203000012F30FE7 key 2 ask AA0203000012C3071F "
     "key 3 ask AA0203000012D40F06 key 4 ask AA0203000012D6070C key 5 ask AA0203000012DF0FFB "
     "key 6 ask AA0203000012EF07F3 key 7 ask AA0203000012DE0FFC key 8 ask AA0203000012EE07F4 "
     "key 9 ask AA0203000012F20FE8"},
    // From 510 = 0x1FE on two bytes; as erased before
    {"user_eeprom",
     "AA0103FE010C02EF AA020300000CFFFFF1 AA0203FE010D0506E4 AA000300000DF0 AA0103FE010C02EF AA020300000C0506E4"},
    // From 1022 = 0x3FE on
    {"system_eeprom",
     "AA0103FE032002D9 AA0203000020FFFFDD AA0203FE03210506CE AA0003000021DC AA0103FE032002D9 AA02030000200506D0"},
    {"controller", "AA0103000111AF3B AA0003000011EC AA0003000110EC AA0103000010AF3D AA0003000010ED AA010300001000EC"},
    // At the end the light control is reset, and nothing else.
    {"backlight",
     "AA000301FF13EA AA0003000013EA AA0003FF0914E1 AA0003000014E9 AA0003010015E7 AA0103000015FFE8 "
     "AA0003FF0016E8 AA010300001609DD AA0003010016E6 AA010300001600E6 AA0003FF0005F9 AA0003000005F8 "
     "AA0003010007F5 AA0003000007F6 AA0003FF0016E8 AA010300001600E6 AA0003000009F4 AA01030000093CB7"},
    {"rates_of_quartz_3",
     "AA0003BB000E34 AA000302000EED AA0003BB010E33" + kDone + "1200 AA0003F7010EF7" + kDone + "9600 AA0003FF010EEF" +
         kDone + "57600 A8 18",
     {.quartz = 3}},
    // Before it a frame, no LCD, a backlight, and a byte in either EEPROM.
    {"reset",
     "AA0003FF0005F9 AA0003000005F8 AA000302000AF1 AA000300000AF3 AA000301FF13EA AA0003000013EA "
     "AA010300002105D6 AA0003000021DC AA010300000D05EA AA000300000DF0 AA0003000007F6 AA0003000007F6 " +
         kStatus + kItsAnswer +
         "AA0003010015E7 AA010300001500E7 AA010300002001DB AA010300002005D7 AA010300000C01EF AA010300000C05EB"},
    // Luminosity, 564 +- 60 in 40 s, and Vlcd, here at 1, +- 3 in 200 s, from the first byte heard on; 624 = 0x0270,
    // 534 = 0x0216. Vlcd is never below 0.
    {"drifting",
     "set vlcd=1 at 7000000 " + kLuminosity + "AA020300000B3402BA at 17000000 " + kLuminosity +
         "AA020300000B70027E at 32000000 " + kLuminosity + "AA020300000B1602D8 at 87000000 " + kLuminosity +
         "AA020300000B3402BA at 157000000 AA0003020012E9 AA02030000120000E9 ask AA0203000012FFFFEB",
     {.drift = true}},
    {"set_by_name",
     "set luminosity=1 set adc:0x1=002 set temperature-adc=3 set battery=0xffff set temperature=0215 "
     "AA000300000BF2 AA020300000B0100EF AA000301000BF1 AA020300000B0200EE AA000302000BF0 AA020300000B0300ED "
     "AA000303000BEF AA020300000BFFFFF2 AA0003000012EB AA0203000012D70012 AA0003FF000BF3 AA020300000B0000F0"},
    {"not_drifting", kLuminosity + "AA020300000B3402BA at 10000000 " + kLuminosity + "AA020300000B3402BA"},

    // A byte takes 8333.3 us at 1200 baud, 1041.7 at 9600. 7 bytes there, which are echoed, and 8 back.
    {"paced_1200",
     "host 1200 " + kStatus + "- at 58331 - AA0003000009 at 58335 - F4 at 124998 - AA010300000938 at 125002 - BB",
     {.bus = Bus::rs485, .baudRate = 1200, .pace = true}},
    // The second handshake is heard after the answer to the first; 7 bytes for another node, 7 more, 10 ms and 1 byte.
    {"one_direction_at_a_time",
     "A8A8 - at 2084 - 18 at 4160 - - at 4170 - 18 fault delay:10 at 100000 AA0002000009F5 - " + kStatus +
         "- at 125623 - - at 125627 - AA",
     {.pace = true}},
    {"bytes_between_frames", "00A4A915FF - " + kStatus + kItsAnswer + "heard 1+0"},
    {"handshake_of_node_0", "A5A6A7A8 15 heard 0+4", {.node = 0}},
    // 2 + 3 + 13 + 168 + 170 = 356; 512 - 356 = 156
    {"marks_and_handshakes_as_data", "AA020300000DA8AA9C AA000300000DF0 heard 1+0"},
    {"frame_in_pieces", "AA - at 49000 00 - at 98000 030000 - at 147000 09 - at 196000 F4 " + kItsAnswer},
    {"several_at_once", "A8AA0003000008F4AA0003000009F4 18AA0003000000FDAA010300000938BB heard 1+1"},
    {"cut_frame", "AAFF03 - at 50000 A8 - at 101000 A8 18 heard 0+1"},
    // 8 characters of 10 bits take 66.67 ms
    {"slow_frame", "host 1200 AA - at 66000 0003000009 - at 132000 F4 " + kItsAnswer, {.baudRate = 1200}},
    {"slow_cut_frame", "host 1200 AA00 - at 67000 A8 18", {.baudRate = 1200}},
    {"wrong_checksum", "AA0003FF0006F9 AA0003000000FD heard 0+0"},
    {"echo", "A8 A818 A5 A5 AA0003000008F6 AA0003000008F6AA0003000000FD", {.bus = Bus::rs485}},

    {"spoiled_answers",
     "key 1 fault ignore ask - fault wrong-type ask AA0203000013F307EE fault type-zero ask AA0003000000FD "
     "fault aux ask AA0203010012F307EE fault aux:7 ask AA0203070012F307E8 fault cut-info ask AA0203000012 "
     "fault cut-info:1 ask AA0203000012F3 fault cut-info:2 ask AA0203000012F307EF "
     "fault no-checksum ask AA0203000012F307 fault wrong-checksum ask AA0203000012F307F0 "
     "fault garbage:2 ask 5A5AAA0203000012F307EF "
     "fault aux fault cut-info:1 fault wrong-type ask AA0203010013F3 "
     "fault cut-info:1 fault no-checksum ask AA0203000012F3 ask AA0203000012F307EF"},
    // Only one whose answer says so is carried out: the frame is drawn, or not.
    {"spoiled_requests",
     "fault ignore AA0003FF0005F9 - fault type-zero AA0003FF0005F9 AA0003000000FD "
     "fault aux AA0003FF0005F9 AA0003010005F7 " +
         kStatus + kItsAnswer + "fault wrong-type AA0003FF0005F9 AA0003000006F7 " + kStatus +
         "AA01030000093CB7 fault no-checksum AA0003000005F8 AA0003000005 " + kStatus + kItsAnswer},
    // An echo is not late; what the module says after the late answer is.
    {"delay",
     "key 1 fault delay:300 at 1000 " + kKey + " " + kKey +
         " at 2000 A8 A8 at 300999 - - at 301000 - AA0203000012F307EF18",
     {.bus = Bus::rs485}},
    // What was on its way is lost, the request not carried out, and a handshake meanwhile unheard.
    {"unplug", "fault unplug@1 " + kStatus + kItsAnswer + "unread A8 AA0003FF0005F9 - A8 - replug - A8 18 " + kStatus +
                   kItsAnswer + "heard 3+2"},
    // Other requests, and a change that is refused, leave the fault as it is.
    {"lost_rate_after_a_change",
     "fault lost-rate " + kStatus + kItsAnswer +
         "AA0003FD000EF2 AA000302000EED AA0003FE000EF1 AA000300000EEF host 19200 A8 - host 9600 A8 18 "
         "AA0003FE000EF1 AA000300000EEF host 19200 A8 18"},
    // 2 + 3 + 18 + 255 + 255 = 533; 768 - 533 = 235
    {"lost_rate_after_a_reset",
     "key 1 fault lost-rate AA0003000007F6 AA0003000007F6 A8 - ask - replug - A8 18 ask AA0203000012FFFFEB"},
};

INSTANTIATE_TEST_SUITE_P(Conversations, Module, testing::ValuesIn(kConversations), test::rowName);

TEST(Patterns, ComeToTheirPlaceOnTheScreen) {
    SimulatedModule module;
    Bytes square;
    for (std::uint8_t block = 1; block <= 4; ++block)
        square.insert(square.end(), 8, block);
    EXPECT_EQ(said(module, wireBytes({3, 2, 0, 1, Bytes(120, 0x11)})), bytesOf("AA0003000001FC"));
    EXPECT_EQ(said(module, bytesOf("AA0803070E030102030405060708B9")), bytesOf("AA0003000003FA"));
    EXPECT_EQ(said(module, wireBytes({3, 4, 13, 4, square})), bytesOf("AA0003000004F9"));
    ScreenImage expected{};
    for (std::size_t row = 0; row < 8; ++row) {
        expected[16 + row].fill(0x11);
        expected[56 + row][14] = static_cast<std::uint8_t>(row + 1);
        for (std::size_t block = 0; block < 4; ++block)
            expected[32 + block / 2 * 8 + row][13 + block % 2] = static_cast<std::uint8_t>(block + 1);
    }
    EXPECT_EQ(module.state().screen, expected);
    EXPECT_EQ(said(module, bytesOf("AA00030F0006E8")), bytesOf("AA0003000006F7"));
    for (auto& row : expected)
        row.fill(0x0F);
    EXPECT_EQ(module.state().screen, expected);
    said(module, bytesOf("AA0003000007F6"));
    EXPECT_EQ(module.state().screen, ScreenImage{});
}

TEST(Refusal, SaysSoAndChangesNothing) {
    // Type, Aux1, Aux2, how many data bytes of what value, Aux1 of the answer; the types 2 and 34 are answered with 0.
    std::istringstream rows(
        "2 0 0 0 0 0  34 0 0 0 0 0  1 8 0 120 5 2  1 0 0 119 5 1  3 8 0 8 5 2  3 0 15 8 5 2  4 7 0 32 5 2  "
        "4 0 14 32 5 2  7 2 0 0 0 2  10 5 1 0 0 2  10 0 2 0 0 2  12 129 1 1 128 2  12 0 0 1 0 2  12 0 0 1 129 2  "
        "13 255 1 2 5 2  32 129 3 1 128 2  33 0 0 129 5 2  14 252 2 0 0 2  17 0 0 0 0 1  18 3 0 0 0 2");
    const auto byte = [](int number) { return static_cast<std::uint8_t>(number); };
    for (int type = 0, aux1 = 0, aux2 = 0, count = 0, value = 0, answer = 0;
         rows >> type >> aux1 >> aux2 >> count >> value >> answer;) {
        SCOPED_TRACE(type);
        SimulatedModule module;
        const Bytes data(static_cast<std::size_t>(count), byte(value));
        EXPECT_EQ(said(module, wireBytes({3, byte(aux1), byte(aux2), byte(type), data})),
                  wireBytes({3, byte(answer), 0, byte(answer != 0 ? type : 0)}));
        EXPECT_EQ(module.state().screen, ScreenImage{});
        EXPECT_EQ(module.state().systemEeprom, ModuleState().systemEeprom);
        EXPECT_EQ(module.state().userEeprom, ModuleState().userEeprom);
    }
}

// Four times a handshake (h) and a request (r); a dot is silence, a capital has Aux1 255.
TEST(Fault, IsCountedFromTheOrderOn) {
    std::istringstream rows(
        "ignore@1 hrh.hrhr  ignore:2@1 hrh.h.hr  ignore@h2 hrh.hrhr  ignore-handshake:3 .r.r.rhr "
        "ignore-handshake:9@h2 hrhr.r.r  silent ........  silent@1 hr......  silent@h1 h....... "
        "aux:255x2 hRhRhrhr  aux:255@1xall hrhRhRhR");
    for (std::string fault, expected; rows >> fault >> expected;) {
        SimulatedModule module;
        said(module, bytesOf(kKey));
        said(module, {0xA8});
        module.fault(faultOrder(fault));
        std::string answered;
        for (int round = 0; round < 4; ++round) {
            answered += said(module, {0xA8}).empty() ? '.' : 'h';
            const Bytes answer = said(module, bytesOf(kKey));
            answered += answer.empty() ? '.' : answer.at(3) == 255 ? 'R' : 'r';
        }
        EXPECT_EQ(answered, expected) << fault;
    }
}

TEST(Orders, AreReadOrRefused) {
    EXPECT_EQ(faultOrder("auxx3").count, 3U) << "a name that ends in x";
    EXPECT_EQ(faultOrder("ignore:010").count, 10U);
    EXPECT_EQ(faultOrder("aux:0x1x0x1f").count, 31U);
    const FaultOrder all = faultOrder("delay:500@4x2");
    EXPECT_EQ(std::tie(all.fault, all.parameter, all.after, all.count), std::tuple(Fault::delay, 500, 4U, 2U));
    for (const std::string order :
         {"", "mute", "ignore:0", "ignore:x", "ignore:2x2", "ignore:-1", "silent:3", "silentx2", "aux:256", "aux:1x0",
          "garbage:0", "delay:60001", "aux:1@", "aux:1@h", "aux 1", "aux:9999999", "aux@0x2", "cut-info:0x2"})
        EXPECT_THROW(faultOrder(order), std::invalid_argument) << order;
    EXPECT_THROW(faultOrder(std::string(200'000, 'a')), std::invalid_argument) << "of any length";
    SimulatedModule module;
    EXPECT_THROW(module.fault({.fault = Fault::aux, .parameter = 0}), std::invalid_argument);
    for (const char* const order : {"", "vlcd", "vlcd=", "vlcd=-1", "vlcd=65536", "vlcd=1x", "light=1", "adc:256=1"})
        EXPECT_THROW(setReading(module.state(), order), std::invalid_argument) << order;
    EXPECT_THROW(module.pressKey(0), std::invalid_argument);
    for (const ModuleOptions& options :
         {ModuleOptions{.node = 4}, {.node = -1}, {.quartz = 4}, {.baudRate = 38400, .quartz = 1}})
        EXPECT_THROW(SimulatedModule{options}, std::invalid_argument);
}

TEST(Speeds, MakeNoiseWhileTheyDiffer) {
    SimulatedModule module;
    module.hostBaudRate(19200);
    for (int i = 0; i < 300; ++i)
        for (const std::uint8_t byte : said(module, {0xA8}, i * 100'000))
            EXPECT_NE(byte, 0x18);
    EXPECT_TRUE(module.frames().empty());
    module.hostBaudRate(9600);
    EXPECT_EQ(said(module, {0xA8}, 40'000'000), (Bytes{0x18}));
}

TEST(LongLife, OfAModuleWhoseHostNeverReadsNeedsNoMoreAndMoreMemory) {
    SimulatedModule module({.keepFrames = false});
    for (int i = 0; i < 20'000; ++i)  // answered by more than can be on its way
        module.receive(bytesOf(kStatus), 0);
    EXPECT_TRUE(module.frames().empty());
    EXPECT_EQ(module.takeOutput(0).size(), kMostOnItsWay);
    EXPECT_EQ(said(module, bytesOf(kStatus)), bytesOf(kItsAnswer));
}

}  // namespace
}  // namespace opane::simulator
