#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "simulator/simulated_module.h"

namespace opane::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Row by row what a module of node 3 says; checksums are 256 less the sum behind the mark.
struct AnswerCase {
    const char* name;
    Bytes request;
    Bytes answer;
    std::function<void(const ModuleState&)> then = [](const ModuleState&) {};
    std::function<void(ModuleState&)> before = [](ModuleState&) {};
};

class Answer : public testing::TestWithParam<AnswerCase> {};

TEST_P(Answer, is_as_on_paper) {
    SimulatedModule module;
    GetParam().before(module.state());
    module.receive(GetParam().request, 0);
    EXPECT_EQ(module.takeOutput(0), GetParam().answer);
    GetParam().then(module.state());
    ASSERT_EQ(module.frames().size(), 1U);
    EXPECT_EQ(module.frames()[0], GetParam().request);
}

// 120 bytes of 0x11: 120 + 3 + 2 + 1 + 120 * 17 = 2166 = 8 * 256 + 118; 256 - 118 = 138
Bytes lineRequest() {
    Bytes request{0xAA, 120, 3, 2, 0, 1};
    request.insert(request.end(), 120, 0x11);
    request.push_back(138);
    return request;
}

// Blocks of 0x01, 0x02, 0x03 and 0x04: 32 + 3 + 6 + 13 + 4 + 8 * 10 = 138; 256 - 138 = 118
Bytes squareRequest() {
    Bytes request{0xAA, 32, 3, 6, 13, 4};
    for (const std::uint8_t value : Bytes{1, 2, 3, 4})
        request.insert(request.end(), 8, value);
    request.push_back(118);
    return request;
}

INSTANTIATE_TEST_SUITE_P(
    Commands, Answer,
    testing::Values(
        AnswerCase{"line",
                   lineRequest(),
                   {0xAA, 0, 3, 0, 0, 1, 0xFC},
                   [](const ModuleState& state) {
                       for (std::size_t row = 0; row < 64; ++row)
                           for (const std::uint8_t rowByte : state.screen[row])
                               EXPECT_EQ(rowByte, row >= 16 && row < 24 ? 0x11 : 0) << row;
                   }},
        AnswerCase{"block",
                   // 8 + 3 + 7 + 14 + 3 + 36 = 71; 256 - 71 = 185
                   {0xAA, 8, 3, 7, 14, 3, 1, 2, 3, 4, 5, 6, 7, 8, 185},
                   {0xAA, 0, 3, 0, 0, 3, 0xFA},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.screen[55][14], 0);
                       EXPECT_EQ(state.screen[56][14], 1);
                       EXPECT_EQ(state.screen[63][14], 8);
                       EXPECT_EQ(state.screen[63][13], 0);
                   }},
        AnswerCase{"square",
                   squareRequest(),
                   {0xAA, 0, 3, 0, 0, 4, 0xF9},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.screen[48][13], 1);
                       EXPECT_EQ(state.screen[55][14], 2);
                       EXPECT_EQ(state.screen[56][13], 3);
                       EXPECT_EQ(state.screen[63][14], 4);
                       EXPECT_EQ(state.screen[47][13], 0);
                   }},
        AnswerCase{"frame_on",
                   {0xAA, 0, 3, 255, 0, 5, 0xF9},
                   {0xAA, 0, 3, 0, 0, 5, 0xF8},
                   [](const ModuleState& state) { EXPECT_EQ(state.framePattern, 255); }},
        AnswerCase{"clear",
                   {0xAA, 0, 3, 0x0F, 0, 6, 0xE8},
                   {0xAA, 0, 3, 0, 0, 6, 0xF7},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.screen[0][0], 0x0F);
                       EXPECT_EQ(state.screen[63][14], 0x0F);
                   }},
        AnswerCase{"reset_of_the_light_control",
                   {0xAA, 0, 3, 1, 0, 7, 0xF5},
                   {0xAA, 0, 3, 0, 0, 7, 0xF6},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.red[0] + state.green[255], 0);
                       EXPECT_EQ(state.screen[5][5], 9);
                   },
                   [](ModuleState& state) {
                       state.red[0] = state.green[255] = 7;
                       state.screen[5][5] = 9;
                   }},
        // V1.2 and a 0: 5 + 3 + 8 + 86 + 49 + 46 + 50 = 247; 256 - 247 = 9
        AnswerCase{"version",
                   {0xAA, 0, 3, 0, 0, 8, 0xF5},
                   {0xAA, 5, 3, 0, 0, 8, 'V', '1', '.', '2', 0, 9},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.version = "V1.2"; }},
        // upside down 1, frame 4, LCD 8, Vlcd 32: 45; 1 + 3 + 9 + 45 = 58; 256 - 58 = 198
        AnswerCase{"status",
                   {0xAA, 0, 3, 0, 0, 9, 0xF4},
                   {0xAA, 1, 3, 0, 0, 9, 45, 198},
                   [](const ModuleState&) {},
                   [](ModuleState& state) {
                       state.upsideDown = true;
                       state.framePattern = 1;
                       state.automaticBacklight = false;
                   }},
        AnswerCase{"write_upside_down",
                   {0xAA, 0, 3, 0, 1, 10, 0xF2},
                   {0xAA, 0, 3, 0, 0, 10, 0xF3},
                   [](const ModuleState& state) { EXPECT_EQ(state.statusByte(), 0x39); }},
        AnswerCase{"write_inverted",
                   {0xAA, 0, 3, 1, 1, 10, 0xF1},
                   {0xAA, 0, 3, 0, 0, 10, 0xF3},
                   [](const ModuleState& state) { EXPECT_EQ(state.statusByte(), 0x3A); }},
        AnswerCase{"write_lcd_off",
                   {0xAA, 0, 3, 2, 0, 10, 0xF1},
                   {0xAA, 0, 3, 0, 0, 10, 0xF3},
                   [](const ModuleState& state) { EXPECT_EQ(state.statusByte(), 0x30); }},
        AnswerCase{"write_backlight_by_hand",
                   {0xAA, 0, 3, 3, 0, 10, 0xF0},
                   {0xAA, 0, 3, 0, 0, 10, 0xF3},
                   [](const ModuleState& state) { EXPECT_EQ(state.statusByte(), 0x28); }},
        AnswerCase{"write_vlcd_by_hand",
                   {0xAA, 0, 3, 4, 0, 10, 0xEF},
                   {0xAA, 0, 3, 0, 0, 10, 0xF3},
                   [](const ModuleState& state) { EXPECT_EQ(state.statusByte(), 0x18); }},
        // 564 = 0x0234; 2 + 3 + 11 + 52 + 2 = 70; 256 - 70 = 186
        AnswerCase{"luminosity",
                   {0xAA, 0, 3, 0, 0, 11, 0xF2},
                   {0xAA, 2, 3, 0, 0, 11, 0x34, 0x02, 186},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.adc[0] = 564; }},
        AnswerCase{"unused_adc", {0xAA, 0, 3, 255, 0, 11, 0xF3}, {0xAA, 2, 3, 0, 0, 11, 0, 0, 0xF0}},
        // 511 = 0x1FF; 1 + 3 + 255 + 1 + 12 + 1 = 273; 512 - 273 = 239
        AnswerCase{"read_user_eeprom_end",
                   {0xAA, 1, 3, 255, 1, 12, 1, 239},
                   {0xAA, 1, 3, 0, 0, 12, 77, 0xA3},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.userEeprom[511] = 77; }},
        // 300 = 0x12C; 2 + 3 + 44 + 1 + 13 + 5 + 6 = 74; 256 - 74 = 182
        AnswerCase{"write_user_eeprom",
                   {0xAA, 2, 3, 44, 1, 13, 5, 6, 182},
                   {0xAA, 0, 3, 0, 0, 13, 0xF0},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.userEeprom[299], 0);
                       EXPECT_EQ(state.userEeprom[300], 5);
                       EXPECT_EQ(state.userEeprom[301], 6);
                   }},
        AnswerCase{"read_controller_data",
                   {0xAA, 0, 3, 0, 1, 16, 0xEC},
                   {0xAA, 1, 3, 0, 0, 16, 9, 0xE3},
                   [](const ModuleState&) {},
                   [](ModuleState& state) {
                       state.sed1530 = {8, 9};
                   }},
        AnswerCase{"write_controller_command",
                   {0xAA, 1, 3, 0, 0, 17, 0xAF, 0x3C},
                   {0xAA, 0, 3, 0, 0, 17, 0xEC},
                   [](const ModuleState& state) { EXPECT_EQ(state.sed1530[0], 0xAF); }},
        // 2 + 3 + 18 + 23 = 46; 256 - 46 = 210
        AnswerCase{"temperature",
                   {0xAA, 0, 3, 0, 0, 18, 0xEB},
                   {0xAA, 2, 3, 0, 0, 18, 23, 0, 210},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.temperature = 23; }},
        // 2 + 3 + 18 + 0xF3 + 0x0F = 281; 512 - 281 = 231
        AnswerCase{"last_key",
                   {0xAA, 0, 3, 1, 0, 18, 0xEA},
                   {0xAA, 2, 3, 0, 0, 18, 0xF3, 0x0F, 231},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.lastKey = 0xFF3; }},
        // 2 + 3 + 18 + 510 = 533; 768 - 533 = 235
        AnswerCase{"no_key", {0xAA, 0, 3, 1, 0, 18, 0xEA}, {0xAA, 2, 3, 0, 0, 18, 0xFF, 0xFF, 235}},
        AnswerCase{"vlcd",
                   {0xAA, 0, 3, 2, 0, 18, 0xE9},
                   {0xAA, 2, 3, 0, 0, 18, 0, 1, 0xE8},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.vlcd = 256; }},
        AnswerCase{"write_green",
                   {0xAA, 0, 3, 1, 255, 19, 0xEA},
                   {0xAA, 0, 3, 0, 0, 19, 0xEA},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.green[1], 255);
                       EXPECT_EQ(state.red[1], 0);
                   }},
        AnswerCase{"write_red",
                   {0xAA, 0, 3, 5, 9, 20, 0xDB},
                   {0xAA, 0, 3, 0, 0, 20, 0xE9},
                   [](const ModuleState& state) {
                       EXPECT_EQ(state.red[5], 9);
                       EXPECT_EQ(state.green[5], 0);
                   }},
        AnswerCase{"read_green",
                   {0xAA, 0, 3, 2, 0, 21, 0xE6},
                   {0xAA, 1, 3, 0, 0, 21, 40, 0xBF},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.green[2] = 40; }},
        AnswerCase{"read_red",
                   {0xAA, 0, 3, 255, 0, 22, 0xE8},
                   {0xAA, 1, 3, 0, 0, 22, 41, 0xBD},
                   [](const ModuleState&) {},
                   [](ModuleState& state) { state.red[255] = 41; }},
        // 1022 = 0x3FE; 1 + 3 + 254 + 3 + 32 + 2 = 295; 512 - 295 = 217. 2 + 3 + 32 + 3 = 40; 256 - 40 = 216
        AnswerCase{"read_system_eeprom_end",
                   {0xAA, 1, 3, 254, 3, 32, 2, 217},
                   {0xAA, 2, 3, 0, 0, 32, 1, 2, 216},
                   [](const ModuleState&) {},
                   [](ModuleState& state) {
                       state.systemEeprom[1022] = 1;
                       state.systemEeprom[1023] = 2;
                   }},
        AnswerCase{"write_system_eeprom",
                   {0xAA, 1, 3, 255, 3, 33, 4, 213},
                   {0xAA, 0, 3, 0, 0, 33, 0xDC},
                   [](const ModuleState& state) { EXPECT_EQ(state.systemEeprom[1023], 4); }}),
    [](const auto& row) { return std::string(row.param.name); });

struct RefusalCase {
    const char* name;
    std::uint8_t aux1, aux2, type;
    Bytes data;
    bool isCommand;  // refused by Aux1, else by type 0
};

class Refusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(Refusal, says_so_and_changes_nothing) {
    SimulatedModule module;
    const RefusalCase& row = GetParam();
    module.receive(wireBytes({3, row.aux1, row.aux2, row.type, row.data}), 0);
    const auto answer = module.takeOutput(0);
    ASSERT_EQ(answer.size(), 7U);
    EXPECT_EQ(answer[2], 3);
    EXPECT_EQ(answer[3] != 0, row.isCommand);
    EXPECT_EQ(answer[5], row.isCommand ? row.type : 0);

    const ModuleState& state = module.state();
    const ModuleState fresh;
    EXPECT_EQ(state.screen, fresh.screen);
    EXPECT_EQ(state.statusByte(), fresh.statusByte());
    EXPECT_EQ(state.systemEeprom, fresh.systemEeprom);
    EXPECT_EQ(state.userEeprom, fresh.userEeprom);
    EXPECT_EQ(state.sed1530, fresh.sed1530);
    EXPECT_EQ(state.baudRate, 9600);
}

Bytes of(std::size_t count, std::uint8_t value = 0x55) {
    return Bytes(count, value);
}

INSTANTIATE_TEST_SUITE_P(
    Requests, Refusal,
    testing::Values(
        RefusalCase{"type_0", 0, 0, 0, {}, false}, RefusalCase{"type_2", 0, 0, 2, {}, false},
        RefusalCase{"type_15", 0, 0, 15, {}, false}, RefusalCase{"type_34", 0, 0, 34, {}, false},
        RefusalCase{"line_8", 8, 0, 1, of(120), true}, RefusalCase{"line_too_short", 0, 0, 1, of(119), true},
        RefusalCase{"line_too_long", 0, 0, 1, of(121), true}, RefusalCase{"block_line_8", 8, 0, 3, of(8), true},
        RefusalCase{"block_column_15", 0, 15, 3, of(8), true}, RefusalCase{"square_line_7", 7, 0, 4, of(32), true},
        RefusalCase{"square_column_14", 0, 14, 4, of(32), true}, RefusalCase{"clear_with_data", 255, 0, 6, of(1), true},
        RefusalCase{"unknown_reset", 2, 0, 7, {}, true}, RefusalCase{"version_with_a_parameter", 1, 0, 8, {}, true},
        RefusalCase{"unknown_setting", 5, 1, 10, {}, true}, RefusalCase{"setting_to_2", 0, 2, 10, {}, true},
        RefusalCase{"user_read_past_the_end", 0x81, 1, 12, {128}, true},
        RefusalCase{"user_read_of_none", 0, 0, 12, {0}, true}, RefusalCase{"user_read_of_129", 0, 0, 12, {129}, true},
        RefusalCase{"user_write_past_the_end", 0xFF, 1, 13, of(2), true},
        RefusalCase{"user_write_of_none", 0, 0, 13, {}, true},
        RefusalCase{"system_read_past_the_end", 0x81, 3, 32, {128}, true},
        RefusalCase{"system_read_far_away", 0, 255, 32, {1}, true},
        RefusalCase{"system_write_of_129", 0, 0, 33, of(129), true},
        RefusalCase{"rate_of_another_quartz", 253, 0, 14, {}, true}, RefusalCase{"rate_flag_2", 252, 2, 14, {}, true},
        RefusalCase{"controller_register_2", 0, 2, 17, {1}, true},
        RefusalCase{"controller_register_in_the_wrong_field", 1, 0, 16, {}, true},
        RefusalCase{"controller_write_of_nothing", 0, 0, 17, {}, true}, RefusalCase{"reading_3", 3, 0, 18, {}, true}),
    [](const auto& row) { return std::string(row.param.name); });

struct RateCase {
    int quartz;
    int code;
    int flag;
    int baudRate;  // 0: not offered
};

class RateChange : public testing::TestWithParam<RateCase> {};

TEST_P(RateChange, is_answered_at_the_old_rate_and_heard_at_the_new_one) {
    const auto& row = GetParam();
    SimulatedModule module({.quartz = row.quartz});
    module.receive(wireBytes({3, static_cast<std::uint8_t>(row.code), static_cast<std::uint8_t>(row.flag), 14}), 0);
    const auto answer = module.takeOutput(0);
    if (row.baudRate == 0) {
        EXPECT_NE(answer.at(3), 0);
        EXPECT_EQ(module.state().baudRate, 9600);
        return;
    }
    EXPECT_EQ(answer, (Bytes{0xAA, 0, 3, 0, 0, 14, 0xEF}));
    EXPECT_EQ(module.state().baudRate, row.baudRate);
    module.hostBaudRate(row.baudRate);
    module.receive(Bytes{0xA8}, 100'000);
    EXPECT_EQ(module.takeOutput(100'000), (Bytes{0x18}));
}

INSTANTIATE_TEST_SUITE_P(Codes, RateChange,
                         testing::Values(RateCase{1, 232, 0, 1200}, RateCase{1, 250, 0, 4800},
                                         RateCase{1, 253, 0, 9600}, RateCase{1, 253, 1, 19200}, RateCase{1, 255, 0, 0},
                                         RateCase{2, 224, 0, 1200}, RateCase{2, 240, 0, 2400},
                                         RateCase{2, 254, 0, 19200}, RateCase{2, 255, 0, 38400}, RateCase{2, 255, 1, 0},
                                         RateCase{3, 187, 1, 1200}, RateCase{3, 247, 0, 4800},
                                         RateCase{3, 247, 1, 9600}, RateCase{3, 255, 1, 57600}, RateCase{3, 187, 0, 0}),
                         [](const auto& row) {
                             return "quartz_" + std::to_string(row.param.quartz) + "_code_" +
                                    std::to_string(row.param.code) + "_flag_" + std::to_string(row.param.flag);
                         });

TEST(Reset, goes_back_to_power_on_and_keeps_the_eeproms) {
    SimulatedModule module({.baudRate = 38400, .pace = true});
    ModuleState& state = module.state();
    state.screen[3][3] = 1;
    state.upsideDown = state.invertedDisplay = true;
    state.lcdOn = false;
    state.framePattern = 255;
    state.red[0] = state.sed1530[1] = 5;
    state.lastKey = 0x7F3;
    state.systemEeprom[1] = 11;
    state.userEeprom[2] = 12;
    module.receive(Bytes{0xAA, 0, 3, 0, 0, 7, 0xF6}, 0);

    // 14 characters at 38400 baud: the answer goes out at the old rate.
    EXPECT_EQ(module.takeOutput(3'650), (Bytes{0xAA, 0, 3, 0, 0, 7, 0xF6}));
    EXPECT_EQ(state.screen, ScreenImage{});
    EXPECT_EQ(state.statusByte(), 0x38);
    EXPECT_EQ(state.red[0] + state.sed1530[1], 0);
    EXPECT_EQ(state.lastKey, 0xFFFF);
    EXPECT_EQ(state.baudRate, 9600);
    EXPECT_EQ(state.systemEeprom[1], 11);
    EXPECT_EQ(state.userEeprom[2], 12);
}

}  // namespace
}  // namespace opane::simulator
