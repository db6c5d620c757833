#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "simulator/readings.h"
#include "simulator/simulated_module.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& hexadecimal) {
    Bytes bytes;
    for (std::size_t at = 0; at < hexadecimal.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16)));
    return bytes;
}

Bytes said(SimulatedModule& module, const Bytes& request, Micros now = 0) {
    module.receive(request, now);
    return module.takeOutput(now);
}

// Request, answer, request, answer and so on with a new module of node 3. Checksums are 256 less the sum behind the
// mark.
struct DialogueCase {
    const char* name;
    const char* frames;
};

class Dialogue : public testing::TestWithParam<DialogueCase> {};

TEST_P(Dialogue, is_as_on_paper) {
    SimulatedModule module({.version = "V1.2"});
    module.state().lastKey = 0xFF3;
    std::vector<Bytes> requests;
    std::istringstream frames(GetParam().frames);
    for (std::string request, answer; frames >> request >> answer;) {
        requests.push_back(bytesOf(request));
        EXPECT_EQ(said(module, requests.back()), bytesOf(answer)) << request;
    }
    EXPECT_EQ(module.frames(), requests);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, Dialogue,
    testing::Values(
        // The status: upside down 1, inverted 2, frame 4, LCD 8, automatic backlight 16, automatic Vlcd 32.
        DialogueCase{"frame",
                     "AA0003FF0005F9 AA0003000005F8 AA0003000009F4 AA01030000093CB7 "
                     "AA0003000005F8 AA0003000005F8 AA0003000009F4 AA010300000938BB"},
        DialogueCase{"version", "AA0003000008F5 AA050300000856312E320009"},
        DialogueCase{"status",
                     "AA000300010AF2 AA000300000AF3 AA0003000009F4 AA010300000939BA "
                     "AA000301010AF1 AA000300000AF3 AA0003000009F4 AA01030000093BB8 "
                     "AA000302000AF1 AA000300000AF3 AA0003000009F4 AA010300000933C0 "
                     "AA000303000AF0 AA000300000AF3 AA0003000009F4 AA010300000923D0 "
                     "AA000304000AEF AA000300000AF3 AA0003000009F4 AA010300000903F0 "
                     "AA000302010AF0 AA000300000AF3 AA0003000009F4 AA01030000090BE8"},
        // 564 = 0x0234, 498 = 0x01F2, 771 = 0x0303
        DialogueCase{"analogue",
                     "AA000300000BF2 AA020300000B3402BA AA000302000BF0 AA020300000BF201FD "
                     "AA000303000BEF AA020300000B0303EA AA0003FF000BF3 AA020300000B0000F0"},
        // 230 = 0xE6, key 0xFF3, 118 = 0x76
        DialogueCase{"temperature_key_and_vlcd",
                     "AA0003000012EB AA0203000012E60003 AA0003010012EA AA0203000012F30FE7 "
                     "AA0003020012E9 AA0203000012760073"},
        // From 510 = 0x1FE on two bytes; as erased before
        DialogueCase{"user_eeprom",
                     "AA0103FE010C02EF AA020300000CFFFFF1 AA0203FE010D0506E4 AA000300000DF0 "
                     "AA0103FE010C02EF AA020300000C0506E4"},
        // From 1022 = 0x3FE on
        DialogueCase{"system_eeprom",
                     "AA0103FE032002D9 AA0203000020FFFFDD AA0203FE03210506CE AA0003000021DC "
                     "AA0103FE032002D9 AA02030000200506D0"},
        DialogueCase{"controller",
                     "AA0103000111AF3B AA0003000011EC AA0003000110EC AA0103000010AF3D "
                     "AA0003000010ED AA010300001000EC"},
        DialogueCase{"backlight",
                     "AA000301FF13EA AA0003000013EA AA0003FF0914E1 AA0003000014E9 "
                     "AA0003010015E7 AA0103000015FFE8 AA0003FF0016E8 AA010300001609DD "
                     "AA0003010016E6 AA010300001600E6 AA0003010007F5 AA0003000007F6 "
                     "AA0003FF0016E8 AA010300001600E6"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Patterns, come_to_their_place_on_the_screen) {
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

TEST(Refusal, says_so_and_changes_nothing) {
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
        const ModuleState fresh;
        const auto changeable = [](const ModuleState& state) {
            return std::tie(state.screen, state.lcdOn, state.upsideDown, state.systemEeprom, state.userEeprom,
                            state.sed1530, state.baudRate);
        };
        EXPECT_TRUE(changeable(module.state()) == changeable(fresh)) << name;
    }
}

TEST(RateChange, is_answered_and_carried_out_where_the_quartz_offers_it) {
    std::istringstream rows(  // quartz, code, flag, rate; 0: not offered
        "1 232 0 1200  1 244 0 2400  1 250 0 4800  1 253 0 9600  1 253 1 19200  1 255 0 0 "
        "2 224 0 1200  2 240 0 2400  2 248 0 4800  2 252 0 9600  2 254 0 19200  2 255 0 38400  2 255 1 0 "
        "3 187 1 1200  3 239 0 2400  3 247 0 4800  3 247 1 9600  3 254 0 19200  3 255 0 38400  3 255 1 57600  3 187 0 "
        "0");
    for (int quartz = 0, code = 0, flag = 0, baudRate = 0; rows >> quartz >> code >> flag >> baudRate;) {
        SimulatedModule module({.quartz = quartz});
        EXPECT_EQ(said(module, wireBytes({3, static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(flag), 14})),
                  bytesOf(baudRate != 0 ? "AA000300000EEF" : "AA000302000EED"));
        EXPECT_EQ(module.state().baudRate, baudRate != 0 ? baudRate : 9600) << quartz << ' ' << code;
    }
}

TEST(Reset, goes_back_to_power_on_and_keeps_the_eeproms) {
    SimulatedModule module({.baudRate = 38400, .pace = true});
    ModuleState& state = module.state();
    state.screen[3][3] = state.red[0] = state.sed1530[1] = state.systemEeprom[1] = state.userEeprom[2] = 5;
    state.upsideDown = true;
    state.lcdOn = false;
    state.framePattern = 255;
    state.lastKey = 0x7F3;
    module.receive(bytesOf("AA0003000007F6"), 0);
    // 14 characters at 38400 baud: the answer goes out at the old rate.
    EXPECT_EQ(module.takeOutput(3'650), bytesOf("AA0003000007F6"));
    EXPECT_EQ(state.screen, ScreenImage{});
    EXPECT_EQ(state.statusByte(), 0x38);
    EXPECT_EQ(state.red[0] + state.sed1530[1], 0);
    EXPECT_EQ(state.lastKey, 0xFFFF);
    EXPECT_EQ(state.baudRate, 9600);
    EXPECT_EQ(state.systemEeprom[1] + state.userEeprom[2], 10);
}

TEST(Keys, give_their_codes_and_turn_the_toggle_flag) {
    SimulatedModule module;
    EXPECT_EQ(module.state().lastKey, 0xFFFF);
    std::vector<int> codes;
    for (const int key : {1, 1, 2, 3, 4, 5, 6, 7, 8, 9}) {
        module.pressKey(key);
        codes.push_back(module.state().lastKey);
    }
    EXPECT_EQ(codes, (std::vector<int>{0x7F3, 0xFF3, 0x7C3, 0xFD4, 0x7D6, 0xFDF, 0x7EF, 0xFDE, 0x7EE, 0xFF2}));
    EXPECT_THROW(module.pressKey(0), std::invalid_argument);
    EXPECT_THROW(module.pressKey(10), std::invalid_argument);
    EXPECT_EQ(module.state().lastKey, 0xFF2);
}

TEST(Readings, are_set_by_name) {
    ModuleState state;
    for (const char* order :
         {"luminosity=1", "adc:0x1=002", "temperature-adc=3", "battery=0xffff", "temperature=0215", "vlcd=0"})
        setReading(state, order);
    EXPECT_EQ((std::vector<int>{state.adc[0], state.adc[1], state.adc[2], state.adc[3], state.temperature, state.vlcd}),
              (std::vector<int>{1, 2, 3, 65535, 215, 0}));
    for (const std::string order :
         {"", "vlcd", "vlcd=", "vlcd=-1", "vlcd=65536", "vlcd=1x", "vlcd=0x-1", "light=1", "adc:256=1", "adc:=1", "=1"})
        try {
            setReading(state, order);
            ADD_FAILURE() << order;
        } catch (const std::invalid_argument& error) {
            EXPECT_EQ(std::string(error.what()).find("reading \"" + order + "\": "), 0U) << error.what();
        }
    EXPECT_THROW(setReading(state, std::string(200'000, 'a') + "=1"), std::invalid_argument) << "of any length";
}

// Luminosity, 564 +- 60 in 40 s, and Vlcd, here at 1, +- 3 in 200 s, from the first byte heard on.
TEST(Readings, drift_with_the_callers_clock_and_only_when_asked) {
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
        EXPECT_EQ(read(11, 0, 30), drift ? 504 : 564);
        EXPECT_EQ(read(11, 0, 80), 564);
        EXPECT_EQ(read(18, 2, 150), drift ? 0 : 1) << "never below 0";
        EXPECT_EQ(read(18, 1, 160), 0xFFFF);
        EXPECT_EQ(read(11, 7, 161), 0);
    }
}

}  // namespace
}  // namespace opane::simulator
