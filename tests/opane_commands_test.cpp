#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <numeric>
#include <sstream>
#include <thread>

#include "simulator/served_module.h"
#include "support/program.h"

// The commands of the program against a module in this process, on a real pseudo-terminal.

namespace opane::test {
namespace {

using simulator::Fault;
using simulator::ModuleState;
using simulator::SimulatedModule;
using Words = std::vector<std::string>;

Words opaneOn(const std::string& device, const Words& words) {
    Words all{OPANE_PROGRAM, "--device", device};
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

Words wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

class OpaneCommands : public testing::Test {
protected:
    ProgramEnd opane(const Words& words) { return runProgram(opaneOn(module.devicePath(), words)); }

    void set(const std::function<void(ModuleState&)>& change) {
        module.withModule([&](SimulatedModule& served) { change(served.state()); });
    }
    ModuleState state() {
        return module.withModule([](SimulatedModule& served) { return served.state(); });
    }
    std::size_t requests() {
        return module.withModule([](SimulatedModule& served) { return served.frames().size(); });
    }
    void fault(const simulator::FaultOrder& order) {
        module.withModule([&](SimulatedModule& served) { served.fault(order); });
    }

    simulator::ServedModule module;
    TemporaryFolder folder;
};

/// A byte of its own for every address of an EEPROM, as far as bytes go: 251 is prime.
std::string image(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(i % 251);
    return bytes;
}

template <class Eeprom>
std::string content(const Eeprom& eeprom) {
    return {eeprom.begin(), eeprom.end()};
}

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
    bool (*after)(const ModuleState&) = [](const ModuleState& module) { return module.frameDrawn(); };
};

class OpaneCommand : public OpaneCommands, public testing::WithParamInterface<CommandCase> {};

TEST_P(OpaneCommand, PrintsAndLeavesWhatItShould) {
    set(fill);
    const ProgramEnd end = opane(wordsOf(GetParam().words));
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.output, GetParam().output);
    EXPECT_TRUE(GetParam().after(state()));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, OpaneCommand,
    testing::Values(
        CommandCase{"line", "line AA --line 7", "",
                    [](const ModuleState& module) {
                        return module.screen[55][0] == 0 && module.screen[56][0] == 0xAA &&
                               module.screen[63][14] == 0xAA;
                    }},
        CommandCase{"block", "block 3C4299A581A5423D --line 7 --column 14", "",
                    [](const ModuleState& module) {
                        return module.screen[56][13] == 0 && module.screen[56][14] == 0x3C &&
                               module.screen[63][14] == 0x3D;
                    }},
        CommandCase{"square", "square FF --line 6 --column 13", "",
                    [](const ModuleState& module) {
                        return module.screen[47][13] == 0 && module.screen[48][13] == 255 &&
                               module.screen[63][14] == 255;
                    }},
        CommandCase{"frame", "frame 0x0F", "", [](const ModuleState& module) { return module.framePattern == 0x0F; }},
        CommandCase{"clear", "clear 0x55", "", [](const ModuleState& module) { return module.screen[63][14] == 0x55; }},
        CommandCase{"status", "status",
                    "upside down          on\ninverted             off\nframe                on\n"
                    "LCD                  off\nautomatic backlight  off\nautomatic Vlcd       on\n"},
        CommandCase{"flags_not_named_stay", "set-status --inverted on --auto-vlcd off", "",
                    [](const ModuleState& module) {
                        return module.upsideDown && module.invertedDisplay && module.framePattern == 0x81 &&
                               !module.lcdOn && !module.automaticBacklight && !module.automaticVlcd;
                    }},
        CommandCase{"frame_has_its_own_command", "--json set-status --frame off --lcd on",
                    "{\"command\":\"set-status\",\"status\":0}\n",
                    [](const ModuleState& module) {
                        return module.upsideDown && !module.frameDrawn() && module.lcdOn && !module.automaticBacklight;
                    }},
        CommandCase{"readings", "readings",
                    "luminosity (ADC 0)       564\nADC 1                    32767\ntemperature (ADC 2)      498\n"
                    "battery voltage (ADC 3)  771\ntemperature              21.5 °C\nVlcd                     118\n"},
        CommandCase{"key_twice", "--repeat 2 key",
                    "key     1\ntoggle  1\ncode    0xFF3\nkey     1\ntoggle  1\ncode    0xFF3\n"},
        CommandCase{"backlight_registers", "backlight read red",
                    "physical register   10\nset point           11\nfinal future value  12\nADC                 13\n"
                    "zone                14\nincrement           15\n"},
        CommandCase{"one_backlight_register", "backlight read green 1 --json", "{\"setPoint\":21}\n"},
        CommandCase{"backlight_write", "backlight write green 1 0xFF", "",
                    [](const ModuleState& module) { return module.green[1] == 255 && module.red[1] == 11; }},
        CommandCase{"red_backlight_write", "backlight write red 5 7", "",
                    [](const ModuleState& module) { return module.red[5] == 7 && module.green[5] == 25; }},
        CommandCase{"system_eeprom_write", "eeprom write --address 0x3FF 5A", "",
                    [](const ModuleState& module) { return module.systemEeprom[1023] == 0x5A; }},
        CommandCase{"controller_read", "controller read data", "data  3\n"},
        CommandCase{"controller_write", "controller write command 174", "",
                    [](const ModuleState& module) { return module.sed1530[0] == 174 && module.sed1530[1] == 3; }},
        CommandCase{"reset_light", "reset light", "",
                    [](const ModuleState& module) { return module.red[0] == 0 && module.sed1530[0] == 175; }},
        CommandCase{"eeprom_dump", "eeprom dump --address 0x70 --length 26",
                    "0x070  FF FF FF FF FF FF FF FF  53 79 73 74 65 6D 7E 7F  |........System~.|\n"
                    "0x080  80 FF FF FF FF FF FF FF  FF FF                    |..........|\n"},
        CommandCase{"eeprom_read", "eeprom read --user --address 508", "55736572\n"},
        CommandCase{"eeprom_read_json", "eeprom read --json --address 124 --length 2",
                    "{\"eeprom\":\"system\",\"address\":124,\"bytes\":[101,109]}\n"},
        CommandCase{"eeprom_write", "eeprom write --user --address 0x1FE 12Ef", "",
                    [](const ModuleState& module) { return content(module.userEeprom).ends_with("Us\x12\xEF"); }},
        CommandCase{
            "info", "info --json",
            R"({"version":{"library":"OpaneCommDLL V1.0.0","module":"OPane V2.0"},)"
            R"("status":{"upsideDown":true,"inverted":false,"frame":true,"lcd":false,"autoBacklight":false,)"
            R"("autoVlcd":true},"readings":{"luminosity":564,"adc1":32767,"temperatureAdc":498,"batteryVoltage":771,)"
            R"("temperature":21.5,"vlcd":118},"key":{"key":1,"toggle":1,"code":"0xFF3"},"backlight":{)"
            R"("red":{"physical":10,"setPoint":11,"finalFutureValue":12,"adc":13,"zone":14,"increment":15},)"
            R"("green":{"physical":20,"setPoint":21,"finalFutureValue":22,"adc":23,"zone":24,"increment":25}},)"
            R"("controller":{"command":175,"data":3}})"
            "\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(OpaneCommands, NoKeyAndAnUnknownKeyAreToldApart) {
    EXPECT_EQ(opane({"key"}).output, "key     none\ntoggle  0\ncode    0xFFFF\n");
    set([](ModuleState& served) { served.lastKey = 0x123; });
    EXPECT_EQ(opane({"key"}).output, "key     unknown\ntoggle  unknown\ncode    0x123\n");
    EXPECT_EQ(opane({"key", "--json"}).output, "{\"key\":null,\"toggle\":null,\"code\":\"0x123\"}\n");
}

TEST_F(OpaneCommands, WhatCannotBeReadIsShownAsSuch) {
    fault({Fault::aux, 5, 1});  // the second reading, at each of its five attempts
    ProgramEnd end = opane({"readings", "--json"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output.find("{\"luminosity\":564,\"adc1\":null,\"temperatureAdc\":498,"), 0U) << end.output;
    EXPECT_NE(end.errors.find("ADC 1: the module refused"), std::string::npos);

    set([](ModuleState& served) { served.adc[2] = 0x8000; });
    end = opane({"readings"});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.output.find("temperature (ADC 2)      --\nbattery voltage (ADC 3)  771\n"), std::string::npos);

    fault({Fault::unplug, 1, 2});
    end = opane({"readings"});
    EXPECT_EQ(end.status, 3);
    EXPECT_NE(end.output.find("ADC 1                    0\ntemperature (ADC 2)      --\n"), std::string::npos);
    EXPECT_NE(end.errors.find("error 57"), std::string::npos);
}

TEST_F(OpaneCommands, AStatusThatCannotBeReadIsNotWritten) {
    fault({Fault::aux, 5});
    const ProgramEnd end = opane({"set-status", "--inverted", "on", "--frame", "on"});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("nothing was written"), std::string::npos);
    EXPECT_EQ(requests(), 5U) << "the attempts of the reading";
}

TEST_F(OpaneCommands, KeysArePrintedAsTheyCome) {
    set([](ModuleState& served) { served.lastKey = 0x7F2; });  // pressed before: not printed
    RunningProgram program(opaneOn(module.devicePath(), {"key", "--watch", "--count", "3"}));
    const auto waitForRequests = [this](std::size_t count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (requests() < count && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_GE(requests(), count) << "it has ended too early";
    };
    const auto press = [&](std::uint16_t code) {
        const std::size_t before = requests();
        set([code](ModuleState& served) { served.lastKey = code; });
        waitForRequests(before + 2);  // the code has been read since
    };
    waitForRequests(1);
    press(0x7D4);
    EXPECT_EQ(program.line(), "key 3  toggle 0  code 0x7D4");
    press(0x123);
    press(0x7D4);
    press(simulator::kNoKey);
    EXPECT_EQ(program.line(), "key 3  toggle 0  code 0x7D4");
    set([](ModuleState& served) { served.lastKey = 0xFD4; });
    EXPECT_EQ(program.line(), "key 3  toggle 1  code 0xFD4");
    EXPECT_THROW(program.line(), std::runtime_error) << "it ends after three";
    EXPECT_EQ(program.end(), 0);
}

TEST_F(OpaneCommands, ANewRateIsKeptUntilAReset) {
    EXPECT_EQ(opane({"baudrate", "19200"}).status, 0);
    EXPECT_EQ(opane({"status"}).status, 1) << "at 9600 nobody answers";
    EXPECT_EQ(opane({"--baud", "19200", "status"}).status, 0);
    EXPECT_EQ(opane({"--baud", "19200", "reset"}).status, 0);
    EXPECT_EQ(opane({"status"}).status, 0);
    fault({Fault::lostRate});
    const ProgramEnd end = opane({"baudrate", "4800"});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("sur le module OPANE\nmais il ne répond plus"), std::string::npos);
}

// --- bitmaps

/// A white picture with a black pixel in its top left corner.
std::string bitmap(int width, int height, int bits = 1, int headerSize = 40) {
    std::string file = "BM";
    const auto put = [&file](int value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file += static_cast<char>((value >> (8 * i)) & 0xFF);
    };
    file.append(8, 0);
    put(14 + headerSize + 8, 4);
    for (const int field : {headerSize, width, height, 1 | bits << 16})
        put(field, 4);
    file.resize(static_cast<std::size_t>(14 + headerSize + 4));  // the first colour is black,
    put(0xFFFFFF, 4);                                            // the second one white
    const auto rowBytes = static_cast<std::size_t>((width * bits + 31) / 32 * 4);
    std::string pixels(rowBytes * static_cast<std::size_t>(std::abs(height)), '\xFF');
    pixels[pixels.size() - rowBytes] = '\x7F';
    return file + pixels;
}

TEST_F(OpaneCommands, ABitmapIsShownWhole) {
    for (const int headerSize : {40, 124}) {
        set([](ModuleState& served) { served.screen[63].fill(0xFF); });
        const ProgramEnd end = opane({"bitmap", folder.write("white.bmp", bitmap(120, 64, 1, headerSize))});
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.output + end.errors, "");
        ScreenImage expected{};
        expected[0][0] = 0x80;
        EXPECT_EQ(state().screen, expected);
    }
    std::string reversed = bitmap(120, 64);
    std::swap_ranges(reversed.begin() + 54, reversed.begin() + 58, reversed.begin() + 58);
    const ProgramEnd end = opane({"bitmap", folder.write("reversed.bmp", reversed)});
    EXPECT_EQ(end.status, 0);
    EXPECT_NE(end.errors.find("will be shown inverted"), std::string::npos);
}

// --- what is refused before anything is sent

struct Refusal {
    const char* name;
    const char* words;
    const char* message;
    std::string content = "";  ///< of FILE
};

class OpaneRefusal : public OpaneCommands, public testing::WithParamInterface<Refusal> {};

TEST_P(OpaneRefusal, NamesWhatIsWrongAndSendsNothing) {
    Words words = wordsOf(GetParam().words);
    std::replace(words.begin(), words.end(), std::string("FILE"), folder.write("file", GetParam().content));
    const ProgramEnd end = opane(words);
    EXPECT_EQ(end.status, 2);
    EXPECT_NE(end.errors.find(GetParam().message), std::string::npos) << end.errors;
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(requests(), 0U);
    EXPECT_EQ(module.withModule([](SimulatedModule& served) { return served.handshakes(); }), 0U);
}

const std::string kGood = bitmap(120, 64);

INSTANTIATE_TEST_SUITE_P(
    Bitmaps, OpaneRefusal,
    testing::Values(
        Refusal{"missing", "bitmap /nowhere/x.bmp", "its folder does not exist"},
        Refusal{"folder", "bitmap /tmp", "is a folder"}, Refusal{"empty", "bitmap FILE", "is empty"},
        Refusal{"text", "bitmap FILE", "does not begin with \"BM\"", "This is a text."},
        Refusal{"cut_header", "bitmap FILE", "ends within its header", kGood.substr(0, 53)},
        Refusal{"cut_pixels", "bitmap FILE", "1023 bytes of them; expected 1024", kGood.substr(0, kGood.size() - 1)},
        Refusal{"old_header", "bitmap FILE", "second header of 12 bytes", std::string(kGood).replace(14, 1, "\x0C")},
        Refusal{"rows_65", "bitmap FILE", "height 65; expected 64", bitmap(120, 65)},
        Refusal{"top_row_first", "bitmap FILE", "height -64; expected 64 pixels, stored from", bitmap(120, -64)},
        Refusal{"width_4216", "bitmap FILE", "width 4216; expected 120", bitmap(4216, 64)},
        Refusal{"height_4096", "bitmap FILE", "height 4096; expected 64", bitmap(120, 4096)},
        Refusal{"colours", "bitmap FILE", "bits per pixel 8; expected 1", bitmap(120, 64, 8)},
        Refusal{"planes", "bitmap FILE", "colour planes 2; expected 1", std::string(kGood).replace(26, 1, "\x02")},
        Refusal{"compressed", "bitmap FILE", "compression 1; expected 0", std::string(kGood).replace(30, 1, "\x01")},
        Refusal{"pixels_far", "bitmap FILE", "byte 318; expected 62", std::string(kGood).replace(11, 1, "\x01")},
        Refusal{"no_palette", "bitmap FILE", "byte 54; expected 62", std::string(kGood).replace(10, 1, "\x36")}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Inputs, OpaneRefusal,
    testing::Values(
        Refusal{"no_flag", "set-status", "no flag is named"},
        Refusal{"flag_value", "set-status --lcd 1", "--lcd: 1 not in {on,off}"},
        Refusal{"count_without_watch", "key --count 2", "--watch"},
        Refusal{"colour", "backlight read blue", "blue not in {red,green}"},
        Refusal{"backlight_register_6", "backlight read red 6", "the register is \"6\"; expected 0 physical"},
        Refusal{"backlight_register_negative", "backlight write red -1 0", "the register is \"-1\""},
        Refusal{"backlight_value_256", "backlight write red 0 256", "the value is \"256\"; expected a byte"},
        Refusal{"controller_value_negative", "controller write data -1", "the value is \"-1\""},
        Refusal{"controller_register", "controller read 2", "2 not in {command,data}"},
        Refusal{"rate_that_there_is_not", "baudrate 14400", "14400 not in"},
        Refusal{"rate_of_quartz_1", "baudrate 38400 --quartz 1", "quartz 1 does not offer 38400 baud"},
        Refusal{"rate_of_quartz_2", "baudrate 57600", "quartz 2 does not offer 57600 baud"},
        Refusal{"quartz_4", "baudrate 9600 --quartz 4", "--quartz"},
        Refusal{"reset_of_what", "reset all", "all not in {module,light}"},
        Refusal{"eeprom_and_what", "eeprom", "no command of eeprom is given"},
        Refusal{"address_1024", "eeprom dump --address 1024", "\"1024\"; expected 0 to 1023"},
        Refusal{"user_address_512", "eeprom read --user --address 0x200", "expected 0 to 511"},
        Refusal{"address_negative", "eeprom read --address -1", "the address is \"-1\""},
        Refusal{"length_0", "eeprom read --length 0", "the length is \"0\"; expected 1 to 1024"},
        Refusal{"length_past_the_end", "eeprom read --address 1000 --length 25", "expected 1 to 24"},
        Refusal{"odd_digits", "eeprom write --address 0 123", "3 hexadecimal digits"},
        Refusal{"no_hexadecimal", "eeprom write --address 0 0G", "\"G\""},
        Refusal{"bytes_past_the_end", "eeprom write --address 1023 0102", "2 bytes from address 0x3FF"},
        Refusal{"save_into_a_folder", "eeprom save /tmp", "is a folder"},
        Refusal{"save_into_no_folder", "eeprom save /nowhere/x", "its folder does not exist"},
        Refusal{"image_too_short", "eeprom restore FILE", "has 1023 bytes; expected 1024", image(1023)},
        Refusal{"image_too_long", "eeprom restore FILE", "has more than 1024 bytes", image(1025)},
        Refusal{"image_of_the_other", "eeprom verify --user FILE", "expected 512", image(1024)},
        Refusal{"missing_image", "eeprom restore /tmp/none/x", "its folder does not exist"}),
    [](const auto& row) { return std::string(row.param.name); });

// --- EEPROM images

TEST_F(OpaneCommands, ALongWriteIsSplit) {
    const std::string written = image(300);
    std::string digits;
    for (const char byte : written) {
        char text[3];
        std::snprintf(text, sizeof text, "%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        digits += text;
    }
    EXPECT_EQ(opane({"eeprom", "write", "--address", "100", digits}).status, 0);
    EXPECT_EQ(content(state().systemEeprom), std::string(100, '\xFF') + written + std::string(1024 - 400, '\xFF'));
    EXPECT_EQ(requests(), 6U) << "three blocks, each written and read back";
}

TEST_F(OpaneCommands, AnImageIsSavedVerifiedAndRestored) {
    for (const Words& option : {Words{}, Words{"--user"}}) {
        const auto eeprom = [&](const char* command, Words words) {
            words.insert(words.begin(), {"eeprom", command});
            words.insert(words.end(), option.begin(), option.end());
            return opane(words);
        };
        set([](ModuleState& served) {
            const std::string bytes = image(1024);
            std::copy(bytes.begin(), bytes.end(), served.systemEeprom.begin());
            std::copy_n(bytes.begin(), 512, served.userEeprom.begin());
        });
        const std::string file = folder.write("image.bin", "an older file");
        EXPECT_EQ(eeprom("save", {file}).status, 0);
        EXPECT_EQ(contentOf(file), image(option.empty() ? 1024 : 512));
        EXPECT_EQ(eeprom("verify", {file}).status, 0);

        set([](ModuleState& served) {
            for (const std::size_t address : {130U, 131U, 511U})
                served.systemEeprom[address] = served.userEeprom[address] = 0xEE;
        });
        ProgramEnd end = eeprom("verify", {file});
        EXPECT_EQ(end.status, 1);
        EXPECT_NE(end.output.find("difference at 0x082 to 0x083, 0x1FF (3 of "), std::string::npos) << end.output;
        end = eeprom("restore", {file, "--dry-run", "--json"});
        EXPECT_EQ(end.status, 0);
        EXPECT_NE(end.output.find("\"differing\":[{\"address\":130,\"length\":2},{\"address\":511,\"length\":1}],"
                                  "\"written\":0}"),
                  std::string::npos)
            << end.output;
        EXPECT_EQ(eeprom("verify", {file}).status, 1) << "a dry run writes nothing";
        end = eeprom("restore", {file});
        EXPECT_EQ(end.status, 0);
        EXPECT_NE(end.output.find("256 bytes written"), std::string::npos) << "two blocks";
        EXPECT_EQ(eeprom("verify", {file}).output, "no difference\n");
    }
}

TEST_F(OpaneCommands, AnInterruptedRestoreSaysWhatIsWritten) {
    const std::string file = folder.write("image.bin", std::string(1024, '\x11'));
    fault({Fault::unplug, 1, 8 + 2});  // all blocks read, the first one written and read back
    const ProgramEnd end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.output, "");
    EXPECT_NE(end.errors.find("opane: written and read back: 0x000 to 0x07F\nopane: perhaps written: 0x080 to 0x0FF\n"
                              "opane: not written: 0x100 to 0x3FF\nopane: error 57"),
              std::string::npos)
        << end.errors;
    EXPECT_EQ(content(state().systemEeprom), std::string(128, '\x11') + std::string(1024 - 128, '\xFF'));
}

TEST_F(OpaneCommands, ARefusedBlockEndsARestore) {
    const std::string file = folder.write("image.bin", std::string(1024, '\x11'));
    fault({Fault::aux, 5, 8 + 2 + 1});  // the second block is written but cannot be read back
    ProgramEnd end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("could not be read back"), std::string::npos) << end.errors;
    EXPECT_NE(end.output.find("\n128 bytes written\n"), std::string::npos) << end.output;

    fault({Fault::aux, 5, 7});  // the last block cannot be read at first
    end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("0x380 to 0x3FF of the system EEPROM could not be read"), std::string::npos);
    EXPECT_NE(end.errors.find("nothing was written"), std::string::npos);
    EXPECT_EQ(state().systemEeprom[256], 0xFF);
}

TEST_F(OpaneCommands, ASaveThatFailsKeepsTheOldFile) {
    const std::string file = folder.write("image.bin", "the old file");
    fault({Fault::aux, 5, 3});
    EXPECT_EQ(opane({"eeprom", "save", file}).status, 1);
    fault({Fault::unplug, 1, 5});
    EXPECT_EQ(opane({"eeprom", "save", file}).status, 3);
    EXPECT_EQ(contentOf(file), "the old file");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "no half file";
}

/// A module that answers everything with a single info byte.
class TerseModule {
public:
    std::string devicePath() const { return terminal_.path(); }

private:
    void serve(const std::stop_token& stop) {
        simulator::WireReader reader;
        while (!stop.stop_requested()) {
            for (const std::uint8_t byte : terminal_.read()) {
                const auto heard = reader.hear(byte, 0, 9600);
                if (heard && heard->kind == simulator::Heard::Kind::handshake)
                    terminal_.write(std::vector<std::uint8_t>{0x18});  // of node 3
                else if (heard)
                    terminal_.write(simulator::wireBytes({3, 0, 0, heard->bytes[5], {0x41}}));
            }
            std::this_thread::yield();
        }
    }

    simulator::PseudoTerminal terminal_;
    std::jthread thread_{[this](const std::stop_token& stop) { serve(stop); }};
};

TEST_F(OpaneCommands, AnswersThatAreTooShortAreFailures) {
    const TerseModule terse;
    const std::string file = folder.write("image.bin", "the old file");
    EXPECT_EQ(runProgram(opaneOn(terse.devicePath(), {"eeprom", "save", file})).status, 1);
    EXPECT_EQ(contentOf(file), "the old file");
    const ProgramEnd dump = runProgram(opaneOn(terse.devicePath(), {"eeprom", "dump", "--length", "2", "--json"}));
    EXPECT_EQ(dump.status, 1);
    EXPECT_EQ(dump.output, "{\"eeprom\":\"system\",\"address\":0,\"bytes\":[null,null]}\n");
    const ProgramEnd write = runProgram(opaneOn(terse.devicePath(), {"eeprom", "write", "--address", "5", "42"}));
    EXPECT_EQ(write.status, 1);
    EXPECT_NE(write.errors.find("0x005 of the system EEPROM: it reads back as something else"), std::string::npos);
    const ProgramEnd readings = runProgram(opaneOn(terse.devicePath(), {"readings"}));
    EXPECT_EQ(readings.status, 1);
    EXPECT_NE(readings.output.find("Vlcd                     --"), std::string::npos);
}

}  // namespace
}  // namespace opane::test
