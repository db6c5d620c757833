#include <algorithm>
#include <numeric>

#include "support/opane_program.h"

// What each command of the program prints and leaves in the module.

namespace opane::test {
namespace {

/// A module in which every value tells itself apart from its neighbours and from a new module's.
void fill(ModuleState& module) {
    module.upsideDown = true;
    module.framePattern = 0x81;
    module.lcdOn = module.automaticBacklight = false;
    module.adc[1] = 32767;
    module.temperature = 215;
    module.lastKey = 0xFF3;
    std::iota(module.red.begin(), module.red.end(), std::uint8_t{10});
    std::iota(module.green.begin(), module.green.end(), std::uint8_t{20});
    module.sed1530 = {175, 3};
    std::copy_n("System~\x7F\x80", 9, module.systemEeprom.begin() + 120);
    std::copy_n("User", 4, module.userEeprom.end() - 4);
}

struct CommandCase {
    const char* name;
    const char* words;
    const char* output = "";
    bool (*after)(const ModuleState&) = [](const auto& module) { return module.frameDrawn(); };
};

class OpaneCommand : public OpaneCommands, public testing::WithParamInterface<CommandCase> {};

TEST_P(OpaneCommand, PrintsAndLeavesWhatItShould) {
    set(fill);
    const ProgramEnd end = run(GetParam().words);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.output, GetParam().output);
    EXPECT_TRUE(GetParam().after(state()));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, OpaneCommand,
    testing::Values(
        CommandCase{"line", "line AA --line 7", "",
                    [](const auto& module) { return module.screen[56][0] == 0xAA && module.screen[63][14] == 0xAA; }},
        CommandCase{"block", "block 3C4299A581A5423D --line 7 --column 14", "",
                    [](const auto& module) { return module.screen[56][14] == 0x3C && module.screen[63][14] == 0x3D; }},
        CommandCase{"square", "square FF --line 6 --column 13", "",
                    [](const auto& module) { return module.screen[48][13] == 255 && module.screen[63][14] == 255; }},
        CommandCase{"frame", "frame 0x0F", "", [](const auto& module) { return module.framePattern == 0x0F; }},
        CommandCase{"clear", "clear 0x55", "", [](const auto& module) { return module.screen[63][14] == 0x55; }},
        CommandCase{"flags_not_named_stay", "set-status --inverted on --auto-vlcd off", "",
                    [](const auto& module) {
                        return module.upsideDown && module.invertedDisplay && module.framePattern == 0x81 &&
                               !module.lcdOn && !module.automaticBacklight && !module.automaticVlcd;
                    }},
        CommandCase{"frame_has_its_own_command", "--json set-status --frame off --lcd on",
                    "{\"command\":\"set-status\",\"exit\":0,\"error\":null,\"status\":0}\n",
                    [](const auto& module) {
                        return module.upsideDown && !module.frameDrawn() && module.lcdOn && !module.automaticBacklight;
                    }},
        CommandCase{"readings", "readings",
                    "luminosity (ADC 0)       564\nADC 1                    32767\ntemperature (ADC 2)      498\n"
                    "battery voltage (ADC 3)  771\ntemperature              21.5 °C\nVlcd                     118\n"},
        CommandCase{"one_backlight_register", "backlight read green 1 --json --repeat 2",
                    "{\"command\":\"backlight read\",\"exit\":0,\"error\":null,\"status\":0,\"setPoint\":21}\n"
                    "{\"command\":\"backlight read\",\"exit\":0,\"error\":null,\"status\":0,\"setPoint\":21}\n"},
        CommandCase{"backlight_write", "backlight write green 1 0xFF", "",
                    [](const auto& module) { return module.green[1] == 255 && module.red[1] == 11; }},
        CommandCase{"red_backlight_write", "backlight write red 5 7", "",
                    [](const auto& module) { return module.red[5] == 7 && module.green[5] == 25; }},
        CommandCase{"controller_command", "controller read command", "command  175\n"},
        CommandCase{"controller_write", "controller write command 174", "",
                    [](const auto& module) { return module.sed1530[0] == 174 && module.sed1530[1] == 3; }},
        CommandCase{"reset_light", "reset light", "",
                    [](const auto& module) { return module.red[0] == 0 && module.sed1530[0] == 175; }},
        CommandCase{"eeprom_dump", "eeprom dump --address 0x70 --length 26",
                    "0x070  FF FF FF FF FF FF FF FF  53 79 73 74 65 6D 7E 7F  |........System~.|\n"
                    "0x080  80 FF FF FF FF FF FF FF  FF FF                    |..........|\n"},
        CommandCase{"eeprom_read", "eeprom read --user --address 508", "55736572\n"},
        CommandCase{"eeprom_read_json", "eeprom read --json --address 124 --length 2",
                    "{\"command\":\"eeprom "
                    "read\",\"exit\":0,\"error\":null,\"status\":0,\"eeprom\":\"system\",\"address\":124,\"bytes\":["
                    "101,109]}\n"},
        CommandCase{"eeprom_write", "eeprom write --user --address 0x1FE 12Ef", "",
                    [](const auto& module) { return content(module.userEeprom).ends_with("Us\x12\xEF"); }},
        CommandCase{
            "info", "info --json",
            R"({"command":"info","exit":0,"error":null,"version":{"library":"OpaneCommDLL V1.0.0","module":"OPane V2.0"},)"
            R"("status":{"upsideDown":true,"inverted":false,"frame":true,"lcd":false,"autoBacklight":false,)"
            R"("autoVlcd":true},"readings":{"luminosity":564,"adc1":32767,"temperatureAdc":498,"batteryVoltage":771,)"
            R"("temperature":21.5,"vlcd":118},"key":{"key":1,"toggle":1,"code":"0xFF3"},"backlight":{)"
            R"("red":{"physical":10,"setPoint":11,"finalFutureValue":12,"adc":13,"zone":14,"increment":15},)"
            R"("green":{"physical":20,"setPoint":21,"finalFutureValue":22,"adc":23,"zone":24,"increment":25}},)"
            R"("controller":{"command":175,"data":3}})"
            "\n"}),
    rowName);

TEST_F(OpaneCommands, ABitmapIsShownWhole) {
    ScreenImage expected{};
    expected[0][0] = 0x80;
    for (const int headerSize : {40, 124}) {
        set([](ModuleState& served) { served.screen[63].fill(0xFF); });
        const ProgramEnd end = opane({"bitmap", folder.write("white.bmp", bitmap(120, 64, 1, headerSize))});
        EXPECT_EQ(end.output + end.errors, "");
        EXPECT_EQ(state().screen, expected);
    }
    std::string reversed = bitmap(120, 64);
    std::swap_ranges(reversed.begin() + 54, reversed.begin() + 58, reversed.begin() + 58);
    const ProgramEnd end = opane({"bitmap", folder.write("reversed.bmp", reversed)});
    EXPECT_EQ(end.status, 0);
    EXPECT_PRED2(holds, end.errors, "will be shown inverted");
}

TEST_F(OpaneCommands, NoKeyAndAnUnknownKeyAreToldApart) {
    EXPECT_EQ(run("key").output, "key     none\ntoggle  0\ncode    0xFFFF\n");
    set([](ModuleState& served) { served.lastKey = 0x123; });
    EXPECT_EQ(run("key").output, "key     unknown\ntoggle  unknown\ncode    0x123\n");
    EXPECT_PRED2(holds, run("key --json").output, "\"status\":0,\"key\":null,\"toggle\":null,\"code\":\"0x123\"}\n");
}

TEST_F(OpaneCommands, WhatCannotBeReadIsShownAsSuch) {
    fault({Fault::aux, 5, 1});  // the second reading, at each of its five attempts
    ProgramEnd end = run("readings --json");
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.output,
                 "{\"command\":\"readings\",\"exit\":1,\"error\":\"ADC 1: the module refused or did not answer\","
                 "\"status\":1,\"luminosity\":564,\"adc1\":null,\"temperatureAdc\":498,");
    EXPECT_PRED2(holds, end.errors, "ADC 1: the module refused");

    set([](ModuleState& served) { served.adc[2] = 0x8000; });
    end = run("readings");
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.output, "temperature (ADC 2)      --\nbattery voltage (ADC 3)  771\n");

    fault({Fault::unplug, 1, 2});
    end = run("readings");
    EXPECT_EQ(end.status, 3);
    EXPECT_PRED2(holds, end.output, "ADC 1                    0\ntemperature (ADC 2)      --\n");
    EXPECT_PRED2(holds, end.errors, "error 57");
}

TEST_F(OpaneCommands, AStatusThatCannotBeReadIsNotWritten) {
    fault({Fault::aux, 5});
    const ProgramEnd end = run("set-status --inverted on --frame on");
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.errors, "nothing was written");
    EXPECT_EQ(requests(), 5U) << "the attempts of the reading";
}

TEST_F(OpaneCommands, KeysArePrintedAsTheyCome) {
    set([](ModuleState& served) { served.lastKey = 0x7F2; });  // pressed before: not printed
    RunningProgram program(opaneOn(module.devicePath(), {"key", "--watch", "--count", "2"}));
    waitForRequests(1);
    for (const std::uint16_t code : {std::uint16_t{0x7D4}, std::uint16_t{0x123}, simulator::kNoKey}) {
        const std::size_t before = requests();
        set([code](ModuleState& served) { served.lastKey = code; });
        waitForRequests(before + 2);  // the code has been read since
    }
    set([](ModuleState& served) { served.lastKey = 0x7D4; });
    for (int printed = 0; printed < 2; ++printed)
        EXPECT_EQ(program.line(), "key 3  toggle 0  code 0x7D4");
    EXPECT_THROW(program.line(), std::runtime_error);
    EXPECT_EQ(program.end(), 0);
}

TEST_F(OpaneCommands, ANewRateThatTheModuleDoesNotTakeIsSaid) {
    fault({Fault::lostRate});
    const ProgramEnd end = run("baudrate 4800");
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.errors, "sur le module OPANE\nmais il ne répond plus");
    EXPECT_PRED2(holds, end.errors, "did not answer at 4800 baud; try --baud 4800, else --baud 9600");
}

}  // namespace
}  // namespace opane::test
