#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "support/bench.h"
#include "support/row_name.h"

namespace opane::test {
namespace {

/// Runs an operation and gives its result and what its outputs hold then, as text.
using Operation = std::function<std::string(clsOPane&)>;

template <class Parameter>
std::string output(const std::decay_t<Parameter>& value) {
    using Output = std::remove_reference_t<Parameter>;
    if constexpr (!std::is_lvalue_reference_v<Parameter> || std::is_const_v<Output>)
        return "";
    else if constexpr (std::is_same_v<Output, ByteArray>)
        return ' ' + std::to_string(value.size()) + ' ' + std::to_string(value.front());
    else if constexpr (std::is_same_v<Output, std::string>)
        return ' ' + value;
    else
        return ' ' + std::to_string(value);
}

template <auto>
struct Call;
template <class... Parameters, bool (clsOPane::*operation)(Parameters...)>
struct Call<operation> {
    /// @param values  the inputs, and what the outputs hold before
    Operation operator()(std::type_identity_t<std::decay_t<Parameters>>... values) const {
        return [=](clsOPane& link) mutable {
            std::string all = (link.*operation)(values...) ? "true" : "false";
            ((all += output<Parameters>(values)), ...);
            return all;
        };
    }
};

constexpr Call<&clsOPane::OPaneCmd_AffData> affData{};
constexpr Call<&clsOPane::OPaneCmd_AffBloc1> affBloc1{};
constexpr Call<&clsOPane::OPaneCmd_AffBloc4> affBloc4{};
constexpr Call<&clsOPane::OPaneCmd_Cadre> cadre{};
constexpr Call<&clsOPane::OPaneCmd_Clear> clear{};
constexpr Call<&clsOPane::OPaneCmd_Version> version{};
constexpr Call<&clsOPane::OPaneCmd_ReadStatus> readStatus{};
constexpr Call<&clsOPane::OPaneCmd_WriteStatus> writeStatus{};
constexpr Call<&clsOPane::OPaneCmd_ReadADC> readADC{};
constexpr Call<&clsOPane::OPaneCmd_TempIRandVLCD> tempIRandVLCD{};
constexpr Call<&clsOPane::OPaneCmd_ReadRouge> readRouge{};
constexpr Call<&clsOPane::OPaneCmd_ReadVert> readVert{};
constexpr Call<&clsOPane::OPaneCmd_ReadSED1530> readSED{};
constexpr Call<&clsOPane::OPaneCmd_WriteRouge> writeRouge{};
constexpr Call<&clsOPane::OPaneCmd_WriteVert> writeVert{};
constexpr Call<&clsOPane::OPaneCmd_WriteSED1530> writeSED{};
constexpr Call<&clsOPane::OPaneCmd_ReadEEPROMSystem> readSystem{};
constexpr Call<&clsOPane::OPaneCmd_ReadEEPROMUser> readUser{};
constexpr Call<&clsOPane::OPaneCmd_WriteEEPROMSystem> writeSystem{};
constexpr Call<&clsOPane::OPaneCmd_WriteEEPROMUser> writeUser{};
constexpr Call<&clsOPane::OPaneCmd_Reset> reset{};

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

struct CommandCase {
    const char* name;
    Operation operation;
    const char* result;      // "raises N", or the result and the outputs
    const char* lines = "";  // of level 2: the command's type, then the others, between bars
    const char* sent = "";   // Aux1, Aux2 and the data; nothing: no frame
    std::string info = "";   // of the answer; "refused": every attempt is
};

class Command : public testing::TestWithParam<CommandCase> {};

TEST_P(Command, LogsSendsAndDecodes) {
    LinkBench bench;
    threadLog()->LogLevel(2);
    ScriptedPeer& peer = bench.scripted();
    const CommandCase& row = GetParam();
    std::vector<ByteArray> expected;
    if (ByteArray frame = bytes(row.sent); !frame.empty()) {
        const auto type = static_cast<std::uint8_t>(std::stoi(row.lines));
        const bool refused = row.info == "refused";
        const std::size_t attempts = refused ? 5 : 1;
        const ByteArray info = refused ? ByteArray{} : bytes(row.info);
        ByteArray answer{0xAA, static_cast<std::uint8_t>(info.size()), 3, refused, 0, type};
        answer.insert(answer.end(), info.begin(), info.end());
        answer.push_back(0);
        peer.answers.assign(attempts, answer);
        frame.insert(frame.begin() + 2, type);
        frame.insert(frame.begin(), {0xAA, static_cast<std::uint8_t>(frame.size() - 3), 3});
        expected.assign(attempts, frame);
    }
    std::string result;
    const int raised = raisedNumber([&] { result = row.operation(bench.link()); });
    EXPECT_EQ(raised == 0 ? result : "raises " + std::to_string(raised), row.result);
    EXPECT_EQ(bench.logged(), *row.lines == '\0' ? "" : std::string("Cmd Type : ") + row.lines);
    for (ByteArray& frame : peer.heard)
        frame.pop_back();  // the checksum
    EXPECT_EQ(peer.heard, expected);
}

constexpr auto kStatus =
    "9|UpsideDown : TRUE|Inverted Display : FALSE|Cadre ON : TRUE|LCD ON : TRUE|Auto Bcklight ON : FALSE|Auto Vlcd ON "
    ": TRUE";
const CommandCase kCommands[]{
    {"line_0", affData(0, bytes("1..120")), "true", "1", "0 0 1..120"},
    {"line_256", affData(256, bytes("1..120")), "raises 6", "1"},
    {"line_of_119", affData(0, bytes("1..119")), "false"},
    {"line_of_121", affData(0, bytes("1..121")), "false"},
    {"block_7_14", affBloc1(7, 14, bytes("1..8")), "true", "3", "7 14 1..8"},
    {"block_line_8", affBloc1(8, 14, bytes("1..8")), "false"},
    {"block_column_15", affBloc1(7, 15, bytes("1..8")), "false"},
    {"block_of_9", affBloc1(0, 0, bytes("1..9")), "false"},
    {"block_line_minus_1", affBloc1(-1, 0, bytes("1..8")), "raises 6", "3"},
    {"block_column_minus_1", affBloc1(0, -1, bytes("1..8")), "raises 6", "3"},
    {"square_6_13", affBloc4(6, 13, bytes("1..32")), "true", "4", "6 13 1..32"},
    {"square_line_7", affBloc4(7, 13, bytes("1..32")), "false"},
    {"square_column_14", affBloc4(6, 14, bytes("1..32")), "false"},
    {"square_of_8", affBloc4(0, 0, bytes("1..8")), "false"},
    {"frame_255", cadre(255), "true", "5", "255 0"},
    {"frame_256", cadre(256), "raises 6", "5"},
    {"clear_0", clear(0), "true", "6", "0 0"},
    {"clear_minus_1", clear(-1), "raises 6", "6"},

    {"version", version("before"), "true V1.2", "8|Rd:V1.2", "0 0", "86 49 46 50 0"},
    {"version_in_the_code_page", version("before"), "true é€", "8|Rd:é€", "0 0", "233 128 9"},
    {"version_of_one_byte", version("before"), "true ", "8|Rd:", "0 0", "86"},
    {"version_stays", version("before"), "false before", "8", "0 0", "refused"},
    {"status_and_its_unused_bits", readStatus(1, 0, 1, 0, 1, 0), "true 1 0 1 1 0 1", kStatus, "0 0", "237"},
    {"flags_stay", readStatus(1, 0, 1, 0, 1, 0), "false 1 0 1 0 1 0", "9", "0 0", "refused"},
    {"write_refused", writeStatus(1, 0, 1, 0, 1), "false", "10|UpsideDown : TRUE", "0 1", "refused"},
    {"adc_luminosity", readADC(0, -7), "true 564", "11|ADC Lum Read (decimal): 564", "0 0", "52 2"},
    {"adc_1_without_a_label", readADC(1, -7), "true 32767", "11", "1 0", "255 127"},
    {"adc_temperature", readADC(2, -7), "true 0", "11|ADC Temp Read (decimal): 0", "2 0", "0 0"},
    {"adc_battery", readADC(3, -7), "true 256", "11|ADC VBat Read (decimal): 256", "3 0", "0 1"},
    {"adc_too_large", readADC(0, -7), "raises 6", "11", "0 0", "0 128"},
    {"adc_short", readADC(0, -7), "raises 9", "11", "0 0", "52"},
    {"adc_256", readADC(256, -7), "raises 6", "11"},
    {"adc_stays", readADC(0, -7), "false -7", "11", "0 0", "refused"},
    {"vlcd", tempIRandVLCD(2, -7), "true 65535", "18|Parameter : 2|Value Read (decimal) : 65535", "2 0", "255 255"},
    {"temperature_without_info", tempIRandVLCD(0, -7), "raises 9", "18|Parameter : 0", "0 0"},
    {"parameter_minus_1", tempIRandVLCD(-1, -7), "raises 6", "18|Parameter : -1"},
    {"temperature_is_0", tempIRandVLCD(0, -7), "false 0", "18|Parameter : 0", "0 0", "refused"},

    {"read_red", readRouge(1, -7), "true 200", "22|Register : 1|Value Read : 200", "1 0", "200"},
    {"read_green", readVert(5, -7), "true 0", "21|Register : 5|Value Read : 0", "5 0"},
    {"read_controller", readSED(1, -7), "true 9", "16|Register : 1|Value Read : 9", "0 1", "9"},
    {"read_register_256", readVert(256, -7), "raises 6", "21|Register : 256"},
    {"register_is_0", readSED(0, -7), "false 0", "16|Register : 0", "0 0", "refused"},
    {"write_red", writeRouge(1, 255), "true", "20|Register : 1|Intensity : 255", "1 255"},
    {"write_green", writeVert(0, 7), "true", "19|Register : 0|Intensity : 7", "0 7"},
    {"intensity_256", writeRouge(1, 256), "false"},
    {"intensity_minus_1", writeVert(1, -1), "false"},
    {"write_red_minus_1", writeRouge(-1, 0), "raises 6", "20|Register : -1|Intensity : 0"},
    {"write_controller", writeSED(0, 175), "true", "17|Register : 0|Value to write : 175", "0 0 175"},
    {"write_controller_256", writeSED(0, 256), "raises 6"},
    {"controller_register_256", writeSED(256, 1), "raises 6", "17|Register : 256|Value to write : 1"},

    {"system_end", readSystem(896, 128, {77}), "true 128 1", "32|Length : 128|Base adress : 896", "128 3 128",
     "1..128"},
    {"system_past_the_end", readSystem(897, 128, {77}), "false 1 77"},
    {"short_answer", readSystem(300, 4, {77}), "true 2 1", "32|Length : 4|Base adress : 300", "44 1 4", "1 2"},
    {"user_end", readUser(384, 128, {77}), "true 128 1", "12|Length : 128|Base adress : 384", "128 1 128", "1..128"},
    {"user_past_the_end", readUser(385, 128, {77}), "false 1 77"},
    {"read_nothing", readUser(0, 0, {77}), "false 1 77"},
    {"read_129", readUser(0, 129, {77}), "false 1 77"},
    {"read_minus_1", readUser(0, -1, {77}), "raises 6"},
    {"read_at_minus_1", readUser(-1, 1, {77}), "raises 6", "12|Length : 1|Base adress : -1"},
    {"write_system", writeSystem(300, 16, bytes("1..16")), "true", "33|Length : 16|Base adress : 300", "44 1 1..16"},
    {"write_user_end", writeUser(384, 128, bytes("1..128")), "true", "13|Length : 128|Base adress : 384",
     "128 1 1..128"},
    {"write_17_of_16", writeSystem(0, 16, bytes("1..17")), "false"},
    {"write_15_of_16", writeSystem(0, 16, bytes("1..15")), "false"},
    {"write_129", writeSystem(0, 129, bytes("1..129")), "false"},
    {"write_nothing", writeSystem(0, 0, {}), "false"},
    {"write_smallest", writeSystem(0, -32768, {}), "false"},
    {"write_at_minus_256", writeSystem(-256, 1, {1}), "raises 6", "33|Length : 1|Base adress : -256"},

    {"reset_light_control", reset(1), "true", "7|Reset Type : 1", "1 0"},
    {"reset_of_another_type", reset(2), "false", "7|Reset Type : 2", "2 0"},
    {"reset_256", reset(256), "raises 6", "7|Reset Type : 256"},
};
INSTANTIATE_TEST_SUITE_P(Rows, Command, testing::ValuesIn(kCommands), rowName);

TEST(WriteStatus, SendsFiveFramesInOrderAndStopsAtTheFirstFailure) {
    LinkBench bench;
    threadLog()->LogLevel(2);
    EXPECT_TRUE(bench.link().OPaneCmd_WriteStatus(true, false, true, false, true));
    EXPECT_EQ(bench.logged(),
              "Cmd Type : 10|UpsideDown : TRUE|Cmd Type : 10|Inverted Display : FALSE|Cmd Type : 10|LCD ON : TRUE|"
              "Cmd Type : 10|Auto Bcklight ON : FALSE|Cmd Type : 10|Auto Vlcd ON : TRUE");
    EXPECT_EQ(bench.module.state().statusByte(), 0b101001);

    bench.module.fault({.fault = simulator::Fault::aux, .count = 5, .after = 2});
    EXPECT_FALSE(bench.link().OPaneCmd_WriteStatus(false, true, false, true, false));
    EXPECT_EQ(bench.module.frames().size(), 5U + 2 + 5);
    EXPECT_EQ(bench.module.state().statusByte(), 0b101010) << "the first two are set";
}

}  // namespace
}  // namespace opane::test
