#include "simulator/simulated_module.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <tuple>

#include "simulator/readings.h"
#include "simulator/wire.h"

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

// Pairs of what the host says and what comes back, with orders among them: at MILLISECONDS, host BAUDRATE, key NUMBER,
// fault ORDER, unread BYTES (said, while nobody takes what comes back), replug -; and what has been heard until then:
// frames COUNT, handshakes COUNT. Checksums are 256 less the sum behind the mark.
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
            now = Micros{1000} * std::stoi(with);
        else if (word == "host")
            module.hostBaudRate(std::stoi(with));
        else if (word == "key")
            module.pressKey(std::stoi(with));
        else if (word == "fault")
            module.fault(faultOrder(with));
        else if (word == "unread")
            module.receive(bytesOf(with), now);
        else if (word == "replug")
            module.replug();
        else if (word == "frames")
            EXPECT_EQ(std::to_string(module.frames().size()), with);
        else if (word == "handshakes")
            EXPECT_EQ(std::to_string(module.handshakes()), with);
        else
            EXPECT_EQ(said(module, bytesOf(word), now), bytesOf(with));
    }
}

const std::string kStatus = "AA0003000009F4 ";
const std::string kItsAnswer = "AA010300000938BB ";
const std::string kKey = "AA0003010012EA ";
const std::string kKey1 = "AA0203000012F307EF ";  // 2 + 3 + 18 + 0xF3 + 7 = 273; 512 - 273 = 239

// The status: upside down 1, inverted 2, frame 4, LCD 8, automatic backlight 16, automatic Vlcd 32.
const Conversation kCommands[] = {
    {"frame",
     "AA0003FF0005F9 AA0003000005F8 AA0003000009F4 AA01030000093CB7 "
     "AA0003000005F8 AA0003000005F8 AA0003000009F4 AA010300000938BB"},
    {"version", "AA0003000008F5 AA050300000856312E320009", {.version = "V1.2"}},
    {"status",
     "AA000300010AF2 AA000300000AF3 AA0003000009F4 AA010300000939BA "
     "AA000301010AF1 AA000300000AF3 AA0003000009F4 AA01030000093BB8 "
     "AA000302000AF1 AA000300000AF3 AA0003000009F4 AA010300000933C0 "
     "AA000303000AF0 AA000300000AF3 AA0003000009F4 AA010300000923D0 "
     "AA000304000AEF AA000300000AF3 AA0003000009F4 AA010300000903F0 "
     "AA000302010AF0 AA000300000AF3 AA0003000009F4 AA01030000090BE8"},
    // 564 = 0x0234, 498 = 0x01F2, 771 = 0x0303
    {"analogue",
     "AA000300000BF2 AA020300000B3402BA AA000302000BF0 AA020300000BF201FD "
     "AA000303000BEF AA020300000B0303EA AA0003FF000BF3 AA020300000B0000F0"},
    // 230 = 0xE6, 118 = 0x76
    {"temperature_key_and_vlcd",
     "key 1 key 1 AA0003000012EB AA0203000012E60003 AA0003010012EA AA0203000012F30FE7 "
     "AA0003020012E9 AA0203000012760073"},
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
};

const Conversation kListening[] = {
    {"bytes_between_frames", "00A4A915FF - " + kStatus + kItsAnswer + "frames 1 handshakes 0"},
    {"frame_for_another_node", "AA0002000009F5 - frames 1"},
    {"handshake_of_node_0", "A5A6A7A8 15 handshakes 4", {.node = 0}},
    // 2 + 3 + 13 + 168 + 170 = 356; 512 - 356 = 156
    {"marks_and_handshakes_as_data", "AA020300000DA8AA9C AA000300000DF0 handshakes 0"},
    {"frame_in_pieces", "AA - at 49 00 - at 98 030000 - at 147 09 - at 196 F4 " + kItsAnswer},
    {"several_at_once", "A8AA0003000008F4AA0003000009F4 18AA0003000000FDAA010300000938BB frames 1 handshakes 1"},
    {"cut_frame", "AAFF03 - at 50 A8 - at 101 A8 18 frames 0 handshakes 1"},
    // 8 characters of 10 bits take 66.67 ms
    {"slow_frame", "host 1200 AA - at 66 0003000009 - at 132 F4 " + kItsAnswer, {.baudRate = 1200}},
    {"slow_cut_frame", "host 1200 AA00 - at 67 A8 18", {.baudRate = 1200}},
    {"wrong_checksum", "AA0003FF0006F9 AA0003000000FD frames 0"},
    {"echo", "A8 A818 A5 A5 AA0003000008F6 AA0003000008F6AA0003000000FD", {.bus = Bus::rs485}},
};

const Conversation kFaults[] = {
    // An echo is not late; what the module says after the late answer is.
    {"delay",
     "key 1 fault delay:300 at 1 " + kKey + kKey + "at 2 A8 A8 at 300 - - at 301 - AA0203000012F307EF18",
     {.bus = Bus::rs485}},
    // What was on its way is lost, and a handshake meanwhile unheard.
    {"unplug",
     "fault unplug@1 " + kStatus + kItsAnswer + "unread A8 " + kStatus + "- A8 - replug - A8 18 handshakes 2"},
    // Other requests, and a change that is refused, leave the fault as it is.
    {"lost_rate_after_a_change",
     "fault lost-rate " + kStatus + kItsAnswer +
         "AA0003FD000EF2 AA000302000EED AA0003FE000EF1 AA000300000EEF host 19200 A8 - host 9600 A8 18 "
         "AA0003FE000EF1 AA000300000EEF host 19200 A8 18"},
    // 2 + 3 + 18 + 255 + 255 = 533; 768 - 533 = 235
    {"lost_rate_after_a_reset", "key 1 fault lost-rate AA0003000007F6 AA0003000007F6 A8 - " + kKey +
                                    "- replug - A8 18 " + kKey + "AA0203000012FFFFEB"},
};

const auto kName = [](const auto& row) { return std::string(row.param.name); };
INSTANTIATE_TEST_SUITE_P(Commands, Module, testing::ValuesIn(kCommands), kName);
INSTANTIATE_TEST_SUITE_P(Listening, Module, testing::ValuesIn(kListening), kName);
INSTANTIATE_TEST_SUITE_P(Faults, Module, testing::ValuesIn(kFaults), kName);

TEST(Frame, IsWrittenAsOnPaper) {
    EXPECT_EQ(wireBytes({3, 5, 0, 16, {0x12, 0x34}}), (Bytes{0xAA, 2, 3, 5, 0, 16, 0x12, 0x34, 0xA0}));
    EXPECT_EQ(wireBytes({0, 0, 0, 0}), (Bytes{0xAA, 0, 0, 0, 0, 0, 0}));
}

TEST(Patterns, ComeToTheirPlaceOnTheScreen) {
    SimulatedModule module;
    Bytes square(8, 1);
    for (const std::uint8_t block : Bytes{2, 3, 4})
        square.insert(square.end(), 8, block);
    EXPECT_EQ(said(module, wireBytes({3, 2, 0, 1, Bytes(120, 0x11)})), bytesOf("AA0003000001FC"));
    EXPECT_EQ(said(module, bytesOf("AA0803070E030102030405060708B9")), bytesOf("AA0003000003FA"));
    EXPECT_EQ(said(module, wireBytes({3, 4, 13, 4, square})), bytesOf("AA0003000004F9"));
    ScreenImage expected{};
    for (std::size_t row = 0; row < 8; ++row) {
        expected[16 + row].fill(0x11);
        expected[56 + row][14] = static_cast<std::uint8_t>(row + 1);
        expected[32 + row][13] = 1;
        expected[32 + row][14] = 2;
        expected[40 + row][13] = 3;
        expected[40 + row][14] = 4;
    }
    EXPECT_EQ(module.state().screen, expected);
    EXPECT_EQ(said(module, bytesOf("AA00030F0006E8")), bytesOf("AA0003000006F7"));
    for (auto& row : expected)
        row.fill(0x0F);
    EXPECT_EQ(module.state().screen, expected);
}

TEST(Refusal, SaysSoAndChangesNothing) {
    std::istringstream
        rows(  // name, Aux1, Aux2, type, how many data bytes of what value, Aux1 of the answer (0: type 0)
            "type_2 0 0 2 0 0 0  type_34 0 0 34 0 0 0  line_8 8 0 1 120 5 2  line_too_short 0 0 1 119 5 1  "
            "block_line_8 8 0 3 8 5 2  block_column_15 0 15 3 8 5 2  square_line_7 7 0 4 32 5 2  "
            "square_column_14 0 14 4 32 5 2  unknown_reset 2 0 7 0 0 2  unknown_setting 5 1 10 0 0 2  "
            "setting_to_2 0 2 10 0 0 2  user_read_past_the_end 129 1 12 1 128 2  "
            "user_read_of_none 0 0 12 1 0 2  user_read_of_129 0 0 12 1 129 2  "
            "user_write_past_the_end 255 1 13 2 5 2  system_read_past_the_end 129 3 32 1 128 2  "
            "system_write_of_129 0 0 33 129 5 2  rate_of_another_quartz 253 0 14 0 0 2  "
            "rate_flag_2 252 2 14 0 0 2  controller_write_of_nothing 0 0 17 0 0 1  reading_3 3 0 18 0 0 2");
    std::string name;
    for (int aux1 = 0, aux2 = 0, type = 0, count = 0, value = 0, answered = 0;
         rows >> name >> aux1 >> aux2 >> type >> count >> value >> answered;) {
        const auto byte = [](int number) { return static_cast<std::uint8_t>(number); };
        SimulatedModule module;
        const Bytes data(static_cast<std::size_t>(count), byte(value));
        EXPECT_EQ(said(module, wireBytes({3, byte(aux1), byte(aux2), byte(type), data})),
                  wireBytes({3, byte(answered), 0, byte(answered != 0 ? type : 0)}))
            << name;
        const auto changeable = [](const ModuleState& state) {
            return std::tie(state.screen, state.lcdOn, state.upsideDown, state.systemEeprom, state.userEeprom,
                            state.sed1530, state.baudRate);
        };
        EXPECT_TRUE(changeable(module.state()) == changeable(ModuleState())) << name;
    }
}

// What each crystal offers at its fastest and with the doubling flag, and a code that it does not.
TEST(RateChange, IsCarriedOutWhereTheQuartzOffersIt) {
    std::istringstream rows(  // quartz, code, flag, rate; 0: not offered
        "1 232 0 1200  1 253 1 19200  1 255 0 0  2 224 0 1200  2 255 0 38400  2 255 1 0  "
        "3 187 1 1200  3 247 1 9600  3 255 1 57600  3 187 0 0");
    for (int quartz = 0, code = 0, flag = 0, baudRate = 0; rows >> quartz >> code >> flag >> baudRate;) {
        SimulatedModule module({.quartz = quartz});
        EXPECT_EQ(said(module, wireBytes({3, static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(flag), 14})),
                  bytesOf(baudRate != 0 ? "AA000300000EEF" : "AA000302000EED"));
        EXPECT_EQ(module.state().baudRate, baudRate != 0 ? baudRate : 9600) << quartz << ' ' << code;
    }
}

TEST(Reset, GoesBackToPowerOnAndKeepsTheEeproms) {
    SimulatedModule module({.baudRate = 38400, .pace = true});
    ModuleState& state = module.state();
    state.screen[3][3] = state.red[0] = state.sed1530[1] = state.systemEeprom[1] = state.userEeprom[2] = 5;
    state.upsideDown = true;
    state.lcdOn = false;
    state.framePattern = 255;
    module.receive(bytesOf("AA0003000007F6"), 0);
    // 14 characters at 38400 baud: the answer goes out at the old rate.
    EXPECT_EQ(module.takeOutput(3'650), bytesOf("AA0003000007F6"));
    EXPECT_EQ(state.screen, ScreenImage{});
    EXPECT_EQ(state.statusByte(), 0x38);
    EXPECT_EQ(state.red[0] + state.sed1530[1], 0);
    EXPECT_EQ(state.baudRate, 9600);
    EXPECT_EQ(state.systemEeprom[1] + state.userEeprom[2], 10);
}

TEST(Keys, GiveTheirCodesAndTurnTheToggleFlag) {
    SimulatedModule module;
    std::vector<int> codes;
    for (const int key : {1, 1, 2, 3, 4, 5, 6, 7, 8, 9}) {
        module.pressKey(key);
        codes.push_back(module.state().lastKey);
    }
    EXPECT_EQ(codes, (std::vector<int>{0x7F3, 0xFF3, 0x7C3, 0xFD4, 0x7D6, 0xFDF, 0x7EF, 0xFDE, 0x7EE, 0xFF2}));
    EXPECT_THROW(module.pressKey(0), std::invalid_argument);
    EXPECT_THROW(module.pressKey(10), std::invalid_argument);
}

/// That the call is refused with a text that begins with the order's name.
template <class Call>
void expectRefused(const Call& call, const std::string& named) {
    try {
        call();
        ADD_FAILURE() << named;
    } catch (const std::invalid_argument& error) {
        EXPECT_EQ(std::string(error.what()).find(named + ": "), 0U) << error.what();
    }
}

TEST(Readings, AreSetByName) {
    ModuleState state;
    for (const char* order :
         {"luminosity=1", "adc:0x1=002", "temperature-adc=3", "battery=0xffff", "temperature=0215", "vlcd=0"})
        setReading(state, order);
    EXPECT_EQ((std::vector<int>{state.adc[0], state.adc[1], state.adc[2], state.adc[3], state.temperature, state.vlcd}),
              (std::vector<int>{1, 2, 3, 65535, 215, 0}));
    for (const std::string order :
         {"", "vlcd", "vlcd=", "vlcd=-1", "vlcd=65536", "vlcd=1x", "light=1", "adc:256=1", "adc:=1"})
        expectRefused([&] { setReading(state, order); }, "reading \"" + order + "\"");
}

// Luminosity, 564 +- 60 in 40 s, and Vlcd, here at 1, +- 3 in 200 s, from the first byte heard on.
TEST(Readings, DriftWithTheCallersClockAndOnlyWhenAsked) {
    for (const bool drift : {true, false}) {
        SimulatedModule module({.drift = drift});
        module.state().vlcd = 1;
        const auto read = [&](std::uint8_t type, std::uint8_t which, Micros seconds) {
            const Bytes answer = said(module, wireBytes({3, which, 0, type}), (7 + seconds) * 1'000'000);
            return answer.at(6) + answer.at(7) * 256;
        };
        EXPECT_EQ(read(11, 0, 0), 564);
        EXPECT_EQ(read(11, 0, 10), drift ? 624 : 564);
        EXPECT_EQ(read(11, 0, 25), drift ? 534 : 564);
        EXPECT_EQ(read(11, 0, 80), 564);
        EXPECT_EQ(read(18, 2, 150), drift ? 0 : 1) << "never below 0";
        EXPECT_EQ(read(18, 1, 160), 0xFFFF);
    }
}

TEST(SpoiledAnswer, ComesOnceAndThenAllIsWell) {
    std::istringstream rows(  // faults, and what comes instead of kKey1
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
        EXPECT_EQ(said(module, bytesOf(kKey)), bytesOf(first)) << faults;
        EXPECT_EQ(said(module, bytesOf(kKey)), bytesOf(kKey1)) << faults;
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

TEST(SpoiledRequest, IsCarriedOutOnlyWhereTheAnswerSaysSo) {
    for (const std::string fault : {"ignore", "silent", "type-zero", "aux", "unplug", "wrong-type", "no-checksum"}) {
        SimulatedModule module;
        module.fault(faultOrder(fault));
        said(module, {0xAA, 0, 3, 255, 0, 6, 0xF8});  // clear with 255
        EXPECT_EQ(module.state().screen[0][0], fault == "wrong-type" || fault == "no-checksum" ? 255 : 0) << fault;
    }
}

TEST(FaultOrder, IsReadOrRefusedByItsName) {
    EXPECT_EQ(faultOrder("auxx3").count, 3U) << "a name that ends in x";
    EXPECT_EQ(faultOrder("ignore:010").count, 10U);
    EXPECT_EQ(faultOrder("aux:0x1F").parameter, 31);
    EXPECT_EQ(faultOrder("aux:0x1x0x1f").count, 31U);
    const FaultOrder everything = faultOrder("delay:500@4x2");
    EXPECT_EQ(std::tie(everything.fault, everything.parameter, everything.after, everything.count),
              std::tuple(Fault::delay, 500, 4U, 2U));
    for (const std::string order :
         {"",        "mute",    "ignore:0",     "ignore:x",    "ignore:2x2",  "ignore:-1",   "silent:3", "silentx2",
          "aux:0",   "aux:256", "cut-info:256", "garbage:0",   "delay:60001", "lost-rate:1", "aux:1x0",  "aux:1@",
          "aux:1@h", "aux:1x",  "aux 1",        "aux:9999999", "aux@0x2",     "cut-info:0x2"})
        expectRefused([&] { faultOrder(order); }, "fault \"" + order + "\"");
    ModuleState state;
    const std::string endless(200'000, 'a');
    EXPECT_THROW(faultOrder(endless), std::invalid_argument);
    EXPECT_THROW(setReading(state, endless + "=1"), std::invalid_argument);
    SimulatedModule module;
    EXPECT_THROW(module.fault({.fault = Fault::aux, .parameter = 0}), std::invalid_argument);
    EXPECT_THROW(module.fault({.fault = Fault::ignore, .parameter = 1}), std::invalid_argument);
}

TEST(Speeds, MakeNoiseWhileTheyDifferButNotOfAnEcho) {
    SimulatedModule module;
    module.hostBaudRate(19200);
    for (int i = 0; i < 300; ++i)
        for (const std::uint8_t byte : said(module, {0xA8}, i * 100'000))
            EXPECT_NE(byte, 0x18);
    EXPECT_TRUE(module.frames().empty());
    module.hostBaudRate(9600);
    EXPECT_EQ(said(module, {0xA8}, 40'000'000), (Bytes{0x18}));
    const auto heard = [] {
        SimulatedModule spoken({.bus = Bus::rs485});
        spoken.receive(bytesOf(kStatus), 0);
        spoken.hostBaudRate(4800);
        return spoken.takeOutput(0);
    };
    const Bytes answer = bytesOf(kItsAnswer);
    const Bytes bytes = heard();
    ASSERT_EQ(bytes.size(), 7U + 8U);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 7), bytesOf(kStatus));
    for (std::size_t i = 0; i < answer.size(); ++i)
        EXPECT_NE(bytes[7 + i], answer[i]) << i;
    EXPECT_EQ(heard(), bytes) << "the same noise in every run";
}

TEST(Options, AreRefusedOutOfRange) {
    EXPECT_THROW(SimulatedModule({.node = 4}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.node = -1}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.quartz = 4}), std::invalid_argument);
    EXPECT_THROW(SimulatedModule({.baudRate = 38400, .quartz = 1}), std::invalid_argument);
}

// 7 bytes there, which are echoed, and 8 back, of 10 bits each.
TEST(Pacing, GivesEveryByteItsTime) {
    const std::tuple<int, double, double> rows[] = {// rate, and when the last byte of request and answer is there
                                                    {1200, 58'333, 125'000},
                                                    {9600, 7'292, 15'625},
                                                    {57600, 1'215, 2'604}};
    for (const auto& [baudRate, lastRequestByte, lastAnswerByte] : rows) {
        SimulatedModule module({.bus = Bus::rs485, .baudRate = baudRate, .quartz = 3, .pace = true});
        constexpr Micros kStart = 1'000'000;
        module.receive(bytesOf(kStatus), kStart);
        std::vector<double> arrivals;
        while (const auto at = module.nextOutputAt()) {
            EXPECT_TRUE(module.takeOutput(*at - 1).empty());
            EXPECT_EQ(module.takeOutput(*at).size(), 1U);
            arrivals.push_back(static_cast<double>(*at - kStart));
        }
        ASSERT_EQ(arrivals.size(), 7U + 8U);
        EXPECT_NEAR(arrivals[6], lastRequestByte, 2);
        EXPECT_NEAR(arrivals.back(), lastAnswerByte, 2);
    }
}

TEST(Pacing, OneDirectionAtATimeAndDelaysOnTop) {
    SimulatedModule module({.pace = true});  // a character takes 1041.67 us
    module.receive(Bytes{0xA8, 0xA8}, 0);    // the second one is heard after the answer to the first
    EXPECT_EQ(module.takeOutput(2'084), (Bytes{0x18}));
    EXPECT_TRUE(module.takeOutput(4'160).empty());
    EXPECT_EQ(module.takeOutput(4'170), (Bytes{0x18}));
    module.fault(faultOrder("delay:10"));
    module.receive(bytesOf("AA0002000009F5"), 100'000);  // for another node: 7 characters all the same
    module.receive(bytesOf(kStatus), 100'000);
    // 7 + 7 characters, 10 ms, 1 character
    EXPECT_NEAR(static_cast<double>(module.nextOutputAt().value_or(0)), 125'625.0, 2);
}

TEST(LongLife, OfAModuleWhoseHostNeverReadsNeedsNoMoreAndMoreMemory) {
    SimulatedModule module({.keepFrames = false});
    constexpr std::size_t kFrames = 20'000;  // answered by more than can be on its way
    for (std::size_t i = 0; i < kFrames; ++i)
        module.receive(bytesOf(kStatus), 0);
    EXPECT_EQ(module.framesHeard(), kFrames);
    EXPECT_TRUE(module.frames().empty());
    EXPECT_EQ(module.takeOutput(0).size(), kMostOnItsWay);
    EXPECT_EQ(said(module, bytesOf(kStatus)), bytesOf(kItsAnswer)) << "and nothing is lost any more";
}

}  // namespace
}  // namespace opane::simulator
