#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <sstream>

#include "support/bench.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Lines = std::vector<std::string>;
/// Runs an operation and gives its result and what it put out, as text.
using Operation = std::function<std::string(clsOPane&)>;

std::string text(bool result) {
    return result ? "true" : "false";
}
template <class... Values>
std::string text(bool result, Values... values) {
    std::string all = text(result);
    ((all.append(" ").append(std::to_string(values))), ...);
    return all;
}

ByteArray rows(std::size_t count) {
    ByteArray bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

Operation affData(std::int16_t zone, std::size_t count) {
    return [=](clsOPane& link) { return text(link.OPaneCmd_AffData(zone, rows(count))); };
}
Operation affBloc1(std::int16_t line, std::int16_t column, std::size_t count = 8) {
    return [=](clsOPane& link) { return text(link.OPaneCmd_AffBloc1(line, column, rows(count))); };
}
Operation affBloc4(std::int16_t line, std::int16_t column, std::size_t count = 32) {
    return [=](clsOPane& link) { return text(link.OPaneCmd_AffBloc4(line, column, rows(count))); };
}
Operation cadre(std::int16_t pattern) {
    return [=](clsOPane& link) { return text(link.OPaneCmd_Cadre(pattern)); };
}
Operation clear(std::int16_t pattern) {
    return [=](clsOPane& link) { return text(link.OPaneCmd_Clear(pattern)); };
}
std::string version(clsOPane& link) {
    std::string version = "before";
    const bool result = link.OPaneCmd_Version(version);
    return text(result) + " " + version;
}
std::string readStatus(clsOPane& link) {
    bool a = true, b = false, c = true, d = false, e = true, f = false;
    const bool result = link.OPaneCmd_ReadStatus(a, b, c, d, e, f);
    return text(result, a, b, c, d, e, f);
}
Operation readADC(std::int16_t number) {
    return [=](clsOPane& link) {
        std::int32_t value = -7;
        const bool result = link.OPaneCmd_ReadADC(number, value);
        return text(result, value);
    };
}
Operation tempIRandVLCD(std::int16_t parameter) {
    return [=](clsOPane& link) {
        std::int32_t value = -7;
        const bool result = link.OPaneCmd_TempIRandVLCD(parameter, value);
        return text(result, value);
    };
}
using ReadRegister = bool (clsOPane::*)(std::int16_t, std::int16_t&);
Operation readRegister(ReadRegister read, std::int16_t number) {
    return [=](clsOPane& link) {
        std::int16_t value = -7;
        const bool result = (link.*read)(number, value);
        return text(result, value);
    };
}
using WriteRegister = bool (clsOPane::*)(std::int16_t, std::int16_t);
Operation writeRegister(WriteRegister write, std::int16_t number, std::int16_t value) {
    return [=](clsOPane& link) { return text((link.*write)(number, value)); };
}
using ReadEeprom = bool (clsOPane::*)(std::int16_t, std::int16_t, ByteArray&);
Operation readEeprom(ReadEeprom read, std::int16_t address, std::int16_t length) {
    return [=](clsOPane& link) {
        ByteArray bytes{77};
        const bool result = (link.*read)(address, length, bytes);
        return text(result, bytes.size(), bytes.front());
    };
}
using WriteEeprom = bool (clsOPane::*)(std::int16_t, std::int16_t, const ByteArray&);
Operation writeEeprom(WriteEeprom write, std::int16_t address, std::int16_t length, std::size_t count) {
    return [=](clsOPane& link) { return text((link.*write)(address, length, rows(count))); };
}
Operation reset(std::int16_t type) {
    return [=](clsOPane& link) { return text(link.OPaneCmd_Reset(type)); };
}

constexpr auto kReadRouge = &clsOPane::OPaneCmd_ReadRouge;
constexpr auto kReadVert = &clsOPane::OPaneCmd_ReadVert;
constexpr auto kReadSed = &clsOPane::OPaneCmd_ReadSED1530;
constexpr auto kWriteRouge = &clsOPane::OPaneCmd_WriteRouge;
constexpr auto kWriteVert = &clsOPane::OPaneCmd_WriteVert;
constexpr auto kWriteSed = &clsOPane::OPaneCmd_WriteSED1530;
constexpr auto kReadSystem = &clsOPane::OPaneCmd_ReadEEPROMSystem;
constexpr auto kReadUser = &clsOPane::OPaneCmd_ReadEEPROMUser;
constexpr auto kWriteSystem = &clsOPane::OPaneCmd_WriteEEPROMSystem;
constexpr auto kWriteUser = &clsOPane::OPaneCmd_WriteEEPROMUser;

/// Bytes in decimal, "1..8" for all from 1 to 8.
ByteArray bytes(const std::string& text) {
    ByteArray all;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const auto dots = word.find("..");
        const int last = std::stoi(dots == std::string::npos ? word : word.substr(dots + 2));
        for (int value = std::stoi(word); value <= last; ++value)
            all.push_back(static_cast<std::uint8_t>(value));
    }
    return all;
}

/// Lines of level 2: the command's type, then the others, between bars.
Lines lines(const std::string& text) {
    Lines all;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, '|');)
        all.push_back(all.empty() ? "Cmd Type : " + part : part);
    return all;
}

struct CommandCase {
    const char* name;
    Operation operation;
    const char* result;      // "raises N", or the result and the outputs
    const char* lines = "";  // see above
    const char* sent = "";   // Aux1, Aux2 and the data; nothing: no frame
    const char* info = "";   // of the answer
};

class Command : public testing::TestWithParam<CommandCase> {};

TEST_P(Command, LogsSendsAndDecodes) {
    LinkBench bench;
    threadLog()->LogLevel(2);
    const CommandCase& row = GetParam();
    const ByteArray sent = bytes(row.sent);
    const ByteArray info = bytes(row.info);
    ScriptedPeer& peer = bench.scripted();
    if (!sent.empty()) {
        const auto type = static_cast<std::uint8_t>(std::stoi(row.lines));
        ByteArray answer{0xAA, static_cast<std::uint8_t>(info.size()), 3, 0, 0, type};
        answer.insert(answer.end(), info.begin(), info.end());
        answer.push_back(0);
        peer.answers = {answer};
    }
    std::string result;
    const int raised = raisedNumber([&] { result = row.operation(bench.link()); });
    EXPECT_EQ(raised == 0 ? result : "raises " + std::to_string(raised), row.result);
    EXPECT_EQ(bench.log, lines(row.lines));
    ASSERT_EQ(peer.heard.size(), sent.empty() ? 0U : 1U);
    if (sent.empty())
        return;
    const ByteArray& frame = peer.heard.front();
    EXPECT_EQ(frame[1], sent.size() - 2);
    EXPECT_EQ(ByteArray(frame.begin() + 3, frame.begin() + 5), ByteArray(sent.begin(), sent.begin() + 2));
    EXPECT_EQ(frame[5], std::stoi(row.lines));
    EXPECT_EQ(ByteArray(frame.begin() + 6, frame.end() - 1), ByteArray(sent.begin() + 2, sent.end()));
}

const auto kName = [](const auto& row) { return std::string(row.param.name); };

const CommandCase kPatterns[]{
    {"line_0", affData(0, 120), "true", "1", "0 0 1..120"},
    {"line_255", affData(255, 120), "true", "1", "255 0 1..120"},
    {"line_256", affData(256, 120), "raises 6", "1"},
    {"line_of_119", affData(0, 119), "false"},
    {"line_of_121", affData(0, 121), "false"},
    {"block_7_14", affBloc1(7, 14), "true", "3", "7 14 1..8"},
    {"block_line_8", affBloc1(8, 14), "false"},
    {"block_column_15", affBloc1(7, 15), "false"},
    {"block_of_9", affBloc1(0, 0, 9), "false"},
    {"block_line_minus_1", affBloc1(-1, 0), "raises 6", "3"},
    {"block_column_minus_1", affBloc1(0, -1), "raises 6", "3"},
    {"square_6_13", affBloc4(6, 13), "true", "4", "6 13 1..32"},
    {"square_line_7", affBloc4(7, 13), "false"},
    {"square_column_14", affBloc4(6, 14), "false"},
    {"square_of_8", affBloc4(0, 0, 8), "false"},
    {"frame_255", cadre(255), "true", "5", "255 0"},
    {"frame_256", cadre(256), "raises 6", "5"},
    {"clear_0", clear(0), "true", "6", "0 0"},
    {"clear_minus_1", clear(-1), "raises 6", "6"},
};
INSTANTIATE_TEST_SUITE_P(Patterns, Command, testing::ValuesIn(kPatterns), kName);

constexpr auto kStatus45 =
    "9|UpsideDown : TRUE|Inverted Display : FALSE|Cadre ON : TRUE|LCD ON : TRUE|Auto Bcklight ON : FALSE|Auto Vlcd ON "
    ": TRUE";
constexpr auto kStatus192 =
    "9|UpsideDown : FALSE|Inverted Display : FALSE|Cadre ON : FALSE|LCD ON : FALSE|Auto Bcklight ON : FALSE|Auto Vlcd "
    "ON : FALSE";

const CommandCase kReadings[]{
    {"version", version, "true V1.2", "8|Rd:V1.2", "0 0", "86 49 46 50 0"},
    {"version_in_the_code_page", version, "true é€", "8|Rd:é€", "0 0", "233 128 9"},
    {"version_of_one_byte", version, "true ", "8|Rd:", "0 0", "86"},
    {"status_45", readStatus, "true 1 0 1 1 0 1", kStatus45, "0 0", "45"},
    {"status_192", readStatus, "true 0 0 0 0 0 0", kStatus192, "0 0", "192"},
    {"adc_luminosity", readADC(0), "true 564", "11|ADC Lum Read (decimal): 564", "0 0", "52 2"},
    {"adc_1_without_a_label", readADC(1), "true 32767", "11", "1 0", "255 127"},
    {"adc_temperature", readADC(2), "true 0", "11|ADC Temp Read (decimal): 0", "2 0", "0 0"},
    {"adc_battery", readADC(3), "true 256", "11|ADC VBat Read (decimal): 256", "3 0", "0 1"},
    {"adc_too_large", readADC(0), "raises 6", "11", "0 0", "0 128"},
    {"adc_short", readADC(0), "raises 9", "11", "0 0", "52"},
    {"adc_256", readADC(256), "raises 6", "11"},
    {"vlcd", tempIRandVLCD(2), "true 65535", "18|Parameter : 2|Value Read (decimal) : 65535", "2 0", "255 255"},
    {"temperature_without_info", tempIRandVLCD(0), "raises 9", "18|Parameter : 0", "0 0"},
    {"parameter_minus_1", tempIRandVLCD(-1), "raises 6", "18|Parameter : -1"},
};
INSTANTIATE_TEST_SUITE_P(Readings, Command, testing::ValuesIn(kReadings), kName);

const CommandCase kRegisters[]{
    {"read_red", readRegister(kReadRouge, 1), "true 200", "22|Register : 1|Value Read : 200", "1 0", "200"},
    {"read_green", readRegister(kReadVert, 5), "true 0", "21|Register : 5|Value Read : 0", "5 0"},
    {"read_controller", readRegister(kReadSed, 1), "true 9", "16|Register : 1|Value Read : 9", "0 1", "9"},
    {"read_register_256", readRegister(kReadVert, 256), "raises 6", "21|Register : 256"},
    {"write_red", writeRegister(kWriteRouge, 1, 255), "true", "20|Register : 1|Intensity : 255", "1 255"},
    {"write_green", writeRegister(kWriteVert, 0, 7), "true", "19|Register : 0|Intensity : 7", "0 7"},
    {"intensity_256", writeRegister(kWriteRouge, 1, 256), "false"},
    {"intensity_minus_1", writeRegister(kWriteVert, 1, -1), "false"},
    {"write_red_minus_1", writeRegister(kWriteRouge, -1, 0), "raises 6", "20|Register : -1|Intensity : 0"},
    {"write_controller", writeRegister(kWriteSed, 0, 175), "true", "17|Register : 0|Value to write : 175", "0 0 175"},
    {"write_controller_256", writeRegister(kWriteSed, 0, 256), "raises 6"},
    {"controller_register_256", writeRegister(kWriteSed, 256, 1), "raises 6", "17|Register : 256|Value to write : 1"},
};
INSTANTIATE_TEST_SUITE_P(Registers, Command, testing::ValuesIn(kRegisters), kName);

const CommandCase kEeproms[]{
    {"system_end", readEeprom(kReadSystem, 896, 128), "true 128 1", "32|Length : 128|Base adress : 896", "128 3 128",
     "1..128"},
    {"system_past_the_end", readEeprom(kReadSystem, 897, 128), "false 1 77"},
    {"system_last_byte", readEeprom(kReadSystem, 1023, 1), "true 1 1", "32|Length : 1|Base adress : 1023", "255 3 1",
     "1"},
    {"short_answer_as_it_came", readEeprom(kReadSystem, 300, 4), "true 2 1", "32|Length : 4|Base adress : 300",
     "44 1 4", "1 2"},
    {"user_end", readEeprom(kReadUser, 384, 128), "true 128 1", "12|Length : 128|Base adress : 384", "128 1 128",
     "1..128"},
    {"user_past_the_end", readEeprom(kReadUser, 385, 128), "false 1 77"},
    {"user_last_byte", readEeprom(kReadUser, 511, 1), "true 1 1", "12|Length : 1|Base adress : 511", "255 1 1", "1"},
    {"read_nothing", readEeprom(kReadUser, 0, 0), "false 1 77"},
    {"read_129", readEeprom(kReadUser, 0, 129), "false 1 77"},
    {"read_minus_1", readEeprom(kReadUser, 0, -1), "raises 6"},
    {"read_at_minus_1", readEeprom(kReadUser, -1, 1), "raises 6", "12|Length : 1|Base adress : -1"},
    {"write_system", writeEeprom(kWriteSystem, 300, 16, 16), "true", "33|Length : 16|Base adress : 300", "44 1 1..16"},
    {"write_user_end", writeEeprom(kWriteUser, 384, 128, 128), "true", "13|Length : 128|Base adress : 384",
     "128 1 1..128"},
    {"write_user_past_the_end", writeEeprom(kWriteUser, 385, 128, 128), "false"},
    {"write_17_of_16", writeEeprom(kWriteSystem, 0, 16, 17), "false"},
    {"write_15_of_16", writeEeprom(kWriteSystem, 0, 16, 15), "false"},
    {"write_129", writeEeprom(kWriteSystem, 0, 129, 129), "false"},
    {"write_nothing", writeEeprom(kWriteSystem, 0, 0, 0), "false"},
    {"write_minus_1", writeEeprom(kWriteSystem, 0, -1, 0), "false"},
    {"write_smallest", writeEeprom(kWriteSystem, 0, -32768, 0), "false"},
    {"write_at_minus_256", writeEeprom(kWriteSystem, -256, 1, 1), "raises 6", "33|Length : 1|Base adress : -256"},
};
INSTANTIATE_TEST_SUITE_P(Eeproms, Command, testing::ValuesIn(kEeproms), kName);

const CommandCase kResets[]{
    {"light_control", reset(1), "true", "7|Reset Type : 1", "1 0"},
    {"other_type", reset(2), "false", "7|Reset Type : 2", "2 0"},
    {"type_256", reset(256), "raises 6", "7|Reset Type : 256"},
};
INSTANTIATE_TEST_SUITE_P(Resets, Command, testing::ValuesIn(kResets), kName);

// ---- what a failed exchange leaves ----------------------------------------------------------------------------------

class FailedCommand : public testing::TestWithParam<CommandCase> {};

TEST_P(FailedCommand, LeavesItsOutputsAsPromised) {
    LinkBench bench;
    bench.module.fault({.fault = Fault::aux, .count = simulator::kForEver});
    EXPECT_EQ(GetParam().operation(bench.link()), GetParam().result);
    EXPECT_EQ(bench.module.frames().size(), 5U);
}

INSTANTIATE_TEST_SUITE_P(Outputs, FailedCommand,
                         testing::Values(CommandCase{"version_stays", version, "false before"},
                                         CommandCase{"flags_stay", readStatus, "false 1 0 1 0 1 0"},
                                         CommandCase{"adc_stays", readADC(0), "false -7"},
                                         CommandCase{"temperature_is_0", tempIRandVLCD(0), "false 0"},
                                         CommandCase{"register_is_0", readRegister(kReadSed, 0), "false 0"}),
                         kName);

TEST(WriteStatus, SendsFiveFramesInOrderAndStopsAtTheFirstFailure) {
    LinkBench bench;
    threadLog()->LogLevel(2);
    const auto pairs = [&bench] {
        std::vector<std::pair<int, int>> result;
        for (const auto& frame : bench.module.frames())
            result.emplace_back(frame[3], frame[4]);
        return result;
    };
    using Pairs = std::vector<std::pair<int, int>>;
    EXPECT_TRUE(bench.link().OPaneCmd_WriteStatus(true, false, true, false, true));
    EXPECT_EQ(pairs(), (Pairs{{0, 1}, {1, 0}, {2, 1}, {3, 0}, {4, 1}}));
    EXPECT_EQ(bench.log, (Lines{"Cmd Type : 10", "UpsideDown : TRUE", "Cmd Type : 10", "Inverted Display : FALSE",
                                "Cmd Type : 10", "LCD ON : TRUE", "Cmd Type : 10", "Auto Bcklight ON : FALSE",
                                "Cmd Type : 10", "Auto Vlcd ON : TRUE"}));
    EXPECT_EQ(bench.module.state().statusByte(), 0b101001);

    bench.log.clear();
    bench.module.fault({.fault = Fault::aux, .count = 5, .after = 2});
    EXPECT_FALSE(bench.link().OPaneCmd_WriteStatus(false, true, false, true, false));
    EXPECT_EQ(bench.log.size(), 6U);
    EXPECT_EQ(bench.module.state().statusByte(), 0b101010) << "the first two are set";
}

TEST(CommandsOnTheModule, ShowWhatWasAskedFor) {
    LinkBench bench;
    clsOPane& link = bench.link();
    auto& state = bench.module.state();
    EXPECT_TRUE(link.OPaneCmd_Clear(0x55));
    EXPECT_EQ(state.screen[63][14], 0x55);
    EXPECT_TRUE(link.OPaneCmd_AffData(7, rows(120)));
    EXPECT_EQ(state.screen[56][0], 1) << "the top row's first byte";
    EXPECT_EQ(state.screen[63][14], 120);
    EXPECT_TRUE(link.OPaneCmd_Cadre(255));
    EXPECT_TRUE(state.frameDrawn());
    EXPECT_FALSE(link.OPaneCmd_AffData(8, rows(120))) << "the module refuses what it does not have";
    EXPECT_EQ(bench.log.back(), "Retry = 5. Exit SendDataAndReceiveResponse without success");
    EXPECT_TRUE(link.OPaneCmd_WriteEEPROMSystem(1000, 24, rows(24)));
    EXPECT_EQ(state.systemEeprom[1023], 24);
    ByteArray back;
    EXPECT_TRUE(link.OPaneCmd_ReadEEPROMSystem(1000, 24, back));
    EXPECT_EQ(back, rows(24));
}

}  // namespace
}  // namespace opane::test
