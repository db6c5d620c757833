#include <gtest/gtest.h>

#include <functional>
#include <numeric>

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

struct CommandCase {
    const char* name;
    Operation operation;
    std::string result;  // "raises N", or the result and the outputs
    Lines lines{};       // of level 2
    ByteArray sent{};    // Leng, Node, Aux1, Aux2, Type; nothing: no frame
    ByteArray data{};    // of the frame
    ByteArray info{};    // of the answer
};

class Command : public testing::TestWithParam<CommandCase> {};

TEST_P(Command, LogsSendsAndDecodes) {
    LinkBench bench;
    threadGlobals()->gobjLog->LogLevel(2);
    const CommandCase& row = GetParam();
    ScriptedPeer& peer = bench.scripted();
    if (!row.sent.empty()) {
        ByteArray answer{0xAA, static_cast<std::uint8_t>(row.info.size()), 3, 0, 0, row.sent[4]};
        answer.insert(answer.end(), row.info.begin(), row.info.end());
        answer.push_back(0);
        peer.answers = {answer};
    }
    std::string result;
    const int raised = raisedNumber([&] { result = row.operation(bench.link()); });
    EXPECT_EQ(raised == 0 ? result : "raises " + std::to_string(raised), row.result);
    EXPECT_EQ(bench.log, row.lines);
    ASSERT_EQ(peer.heard.size(), row.sent.empty() ? 0U : 1U);
    if (row.sent.empty())
        return;
    const ByteArray& frame = peer.heard.front();
    EXPECT_EQ(ByteArray(frame.begin() + 1, frame.begin() + 6), row.sent);
    EXPECT_EQ(ByteArray(frame.begin() + 6, frame.end() - 1), row.data);
}

const auto kName = [](const auto& row) { return std::string(row.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Patterns, Command,
    testing::Values(
        CommandCase{"line_0", affData(0, 120), "true", {"Cmd Type : 1"}, {120, 3, 0, 0, 1}, rows(120)},
        CommandCase{"line_255", affData(255, 120), "true", {"Cmd Type : 1"}, {120, 3, 255, 0, 1}, rows(120)},
        CommandCase{"line_256", affData(256, 120), "raises 6", {"Cmd Type : 1"}},
        CommandCase{"line_of_119", affData(0, 119), "false"}, CommandCase{"line_of_121", affData(0, 121), "false"},
        CommandCase{"block_7_14", affBloc1(7, 14), "true", {"Cmd Type : 3"}, {8, 3, 7, 14, 3}, rows(8)},
        CommandCase{"block_line_8", affBloc1(8, 14), "false"}, CommandCase{"block_column_15", affBloc1(7, 15), "false"},
        CommandCase{"block_of_9", affBloc1(0, 0, 9), "false"},
        CommandCase{"block_line_minus_1", affBloc1(-1, 0), "raises 6", {"Cmd Type : 3"}},
        CommandCase{"block_column_minus_1", affBloc1(0, -1), "raises 6", {"Cmd Type : 3"}},
        CommandCase{"square_6_13", affBloc4(6, 13), "true", {"Cmd Type : 4"}, {32, 3, 6, 13, 4}, rows(32)},
        CommandCase{"square_line_7", affBloc4(7, 13), "false"},
        CommandCase{"square_column_14", affBloc4(6, 14), "false"},
        CommandCase{"square_of_8", affBloc4(0, 0, 8), "false"},
        CommandCase{"frame_255", cadre(255), "true", {"Cmd Type : 5"}, {0, 3, 255, 0, 5}},
        CommandCase{"frame_256", cadre(256), "raises 6", {"Cmd Type : 5"}},
        CommandCase{"clear_0", clear(0), "true", {"Cmd Type : 6"}, {0, 3, 0, 0, 6}},
        CommandCase{"clear_minus_1", clear(-1), "raises 6", {"Cmd Type : 6"}}),
    kName);

Lines statusLines(std::array<const char*, 6> values) {
    constexpr std::array kLabels{"UpsideDown", "Inverted Display", "Cadre ON",
                                 "LCD ON",     "Auto Bcklight ON", "Auto Vlcd ON"};
    Lines lines{"Cmd Type : 9"};
    for (std::size_t i = 0; i < 6; ++i)
        lines.push_back(std::string(kLabels[i]).append(" : ").append(values[i]));
    return lines;
}

INSTANTIATE_TEST_SUITE_P(
    Readings, Command,
    testing::Values(
        CommandCase{
            "version", version, "true V1.2", {"Cmd Type : 8", "Rd:V1.2"}, {0, 3, 0, 0, 8}, {}, {'V', '1', '.', '2', 0}},
        CommandCase{"version_in_the_code_page",
                    version,
                    "true é€",
                    {"Cmd Type : 8", "Rd:é€"},
                    {0, 3, 0, 0, 8},
                    {},
                    {0xE9, 0x80, 9}},
        CommandCase{"version_of_one_byte", version, "true ", {"Cmd Type : 8", "Rd:"}, {0, 3, 0, 0, 8}, {}, {'V'}},
        CommandCase{"status_45",
                    readStatus,
                    "true 1 0 1 1 0 1",
                    statusLines({"TRUE", "FALSE", "TRUE", "TRUE", "FALSE", "TRUE"}),
                    {0, 3, 0, 0, 9},
                    {},
                    {45}},
        CommandCase{"status_192",
                    readStatus,
                    "true 0 0 0 0 0 0",
                    statusLines({"FALSE", "FALSE", "FALSE", "FALSE", "FALSE", "FALSE"}),
                    {0, 3, 0, 0, 9},
                    {},
                    {192}},
        CommandCase{"adc_luminosity",
                    readADC(0),
                    "true 564",
                    {"Cmd Type : 11", "ADC Lum Read (decimal): 564"},
                    {0, 3, 0, 0, 11},
                    {},
                    {52, 2}},
        CommandCase{
            "adc_1_without_a_label", readADC(1), "true 32767", {"Cmd Type : 11"}, {0, 3, 1, 0, 11}, {}, {255, 127}},
        CommandCase{"adc_temperature",
                    readADC(2),
                    "true 0",
                    {"Cmd Type : 11", "ADC Temp Read (decimal): 0"},
                    {0, 3, 2, 0, 11},
                    {},
                    {0, 0}},
        CommandCase{"adc_battery",
                    readADC(3),
                    "true 256",
                    {"Cmd Type : 11", "ADC VBat Read (decimal): 256"},
                    {0, 3, 3, 0, 11},
                    {},
                    {0, 1}},
        CommandCase{"adc_too_large", readADC(0), "raises 6", {"Cmd Type : 11"}, {0, 3, 0, 0, 11}, {}, {0, 128}},
        CommandCase{"adc_short", readADC(0), "raises 9", {"Cmd Type : 11"}, {0, 3, 0, 0, 11}, {}, {52}},
        CommandCase{"adc_256", readADC(256), "raises 6", {"Cmd Type : 11"}},
        CommandCase{"vlcd",
                    tempIRandVLCD(2),
                    "true 65535",
                    {"Cmd Type : 18", "Parameter : 2", "Value Read (decimal) : 65535"},
                    {0, 3, 2, 0, 18},
                    {},
                    {255, 255}},
        CommandCase{"temperature_without_info",
                    tempIRandVLCD(0),
                    "raises 9",
                    {"Cmd Type : 18", "Parameter : 0"},
                    {0, 3, 0, 0, 18}},
        CommandCase{"parameter_minus_1", tempIRandVLCD(-1), "raises 6", {"Cmd Type : 18", "Parameter : -1"}}),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Registers, Command,
    testing::Values(
        CommandCase{"read_red",
                    readRegister(kReadRouge, 1),
                    "true 200",
                    {"Cmd Type : 22", "Register : 1", "Value Read : 200"},
                    {0, 3, 1, 0, 22},
                    {},
                    {200}},
        CommandCase{"read_green",
                    readRegister(kReadVert, 5),
                    "true 0",
                    {"Cmd Type : 21", "Register : 5", "Value Read : 0"},
                    {0, 3, 5, 0, 21}},
        CommandCase{"read_controller",
                    readRegister(kReadSed, 1),
                    "true 9",
                    {"Cmd Type : 16", "Register : 1", "Value Read : 9"},
                    {0, 3, 0, 1, 16},
                    {},
                    {9}},
        CommandCase{"read_register_256", readRegister(kReadVert, 256), "raises 6", {"Cmd Type : 21", "Register : 256"}},
        CommandCase{"write_red",
                    writeRegister(kWriteRouge, 1, 255),
                    "true",
                    {"Cmd Type : 20", "Register : 1", "Intensity : 255"},
                    {0, 3, 1, 255, 20}},
        CommandCase{"write_green",
                    writeRegister(kWriteVert, 0, 7),
                    "true",
                    {"Cmd Type : 19", "Register : 0", "Intensity : 7"},
                    {0, 3, 0, 7, 19}},
        CommandCase{"intensity_256", writeRegister(kWriteRouge, 1, 256), "false"},
        CommandCase{"intensity_minus_1", writeRegister(kWriteVert, 1, -1), "false"},
        CommandCase{"write_red_minus_1",
                    writeRegister(kWriteRouge, -1, 0),
                    "raises 6",
                    {"Cmd Type : 20", "Register : -1", "Intensity : 0"}},
        CommandCase{"write_controller",
                    writeRegister(kWriteSed, 0, 175),
                    "true",
                    {"Cmd Type : 17", "Register : 0", "Value to write : 175"},
                    {1, 3, 0, 0, 17},
                    {175}},
        CommandCase{"write_controller_256", writeRegister(kWriteSed, 0, 256), "raises 6"},
        CommandCase{"write_controller_register_256",
                    writeRegister(kWriteSed, 256, 1),
                    "raises 6",
                    {"Cmd Type : 17", "Register : 256", "Value to write : 1"}}),
    kName);

Lines range(int type, int length, int address) {
    return {"Cmd Type : " + std::to_string(type), "Length : " + std::to_string(length),
            "Base adress : " + std::to_string(address)};
}

INSTANTIATE_TEST_SUITE_P(
    Eeproms, Command,
    testing::Values(CommandCase{"system_end",
                                readEeprom(kReadSystem, 896, 128),
                                "true 128 1",
                                range(32, 128, 896),
                                {1, 3, 128, 3, 32},
                                {128},
                                rows(128)},
                    CommandCase{"system_past_the_end", readEeprom(kReadSystem, 897, 128), "false 1 77"},
                    CommandCase{"system_last_byte",
                                readEeprom(kReadSystem, 1023, 1),
                                "true 1 1",
                                range(32, 1, 1023),
                                {1, 3, 255, 3, 32},
                                {1},
                                {1}},
                    CommandCase{"system_short_answer_as_it_came",
                                readEeprom(kReadSystem, 300, 4),
                                "true 2 1",
                                range(32, 4, 300),
                                {1, 3, 44, 1, 32},
                                {4},
                                {1, 2}},
                    CommandCase{"user_end",
                                readEeprom(kReadUser, 384, 128),
                                "true 128 1",
                                range(12, 128, 384),
                                {1, 3, 128, 1, 12},
                                {128},
                                rows(128)},
                    CommandCase{"user_past_the_end", readEeprom(kReadUser, 385, 128), "false 1 77"},
                    CommandCase{"user_last_byte",
                                readEeprom(kReadUser, 511, 1),
                                "true 1 1",
                                range(12, 1, 511),
                                {1, 3, 255, 1, 12},
                                {1},
                                {1}},
                    CommandCase{"read_nothing", readEeprom(kReadUser, 0, 0), "false 1 77"},
                    CommandCase{"read_129", readEeprom(kReadUser, 0, 129), "false 1 77"},
                    CommandCase{"read_minus_1", readEeprom(kReadUser, 0, -1), "raises 6"},
                    CommandCase{"read_at_minus_1", readEeprom(kReadUser, -1, 1), "raises 6", range(12, 1, -1)},
                    CommandCase{"write_system",
                                writeEeprom(kWriteSystem, 300, 16, 16),
                                "true",
                                range(33, 16, 300),
                                {16, 3, 44, 1, 33},
                                rows(16)},
                    CommandCase{"write_user_end",
                                writeEeprom(kWriteUser, 384, 128, 128),
                                "true",
                                range(13, 128, 384),
                                {128, 3, 128, 1, 13},
                                rows(128)},
                    CommandCase{"write_user_past_the_end", writeEeprom(kWriteUser, 385, 128, 128), "false"},
                    CommandCase{"write_17_of_16", writeEeprom(kWriteSystem, 0, 16, 17), "false"},
                    CommandCase{"write_15_of_16", writeEeprom(kWriteSystem, 0, 16, 15), "false"},
                    CommandCase{"write_129", writeEeprom(kWriteSystem, 0, 129, 129), "false"},
                    CommandCase{"write_nothing", writeEeprom(kWriteSystem, 0, 0, 0), "false"},
                    CommandCase{"write_minus_1", writeEeprom(kWriteSystem, 0, -1, 0), "false"},
                    CommandCase{"write_smallest", writeEeprom(kWriteSystem, 0, -32768, 0), "false"},
                    CommandCase{"write_at_minus_256", writeEeprom(kWriteSystem, -256, 1, 1), "raises 6",
                                range(33, 1, -256)}),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Resets, Command,
    testing::Values(CommandCase{"light_control", reset(1), "true", {"Cmd Type : 7", "Reset Type : 1"}, {0, 3, 1, 0, 7}},
                    CommandCase{"other_type", reset(2), "false", {"Cmd Type : 7", "Reset Type : 2"}, {0, 3, 2, 0, 7}},
                    CommandCase{"type_256", reset(256), "raises 6", {"Cmd Type : 7", "Reset Type : 256"}}),
    kName);

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
    threadGlobals()->gobjLog->LogLevel(2);
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
