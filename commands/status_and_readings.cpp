#include <array>
#include <string>

#include "commands/command_run.h"
#include "platform/code_page.h"
#include "shared/runtime_error.h"
#include "shared/utf8.h"

namespace opane {
namespace {

/// The flags in the log, by their bit in the status byte.
constexpr std::array<std::string_view, 6> kFlagLabels{"UpsideDown", "Inverted Display", "Cadre ON",
                                                      "LCD ON",     "Auto Bcklight ON", "Auto Vlcd ON"};

std::string flagText(std::size_t bit, bool value) {
    return std::string(kFlagLabels[bit]) + " : " + (value ? "TRUE" : "FALSE");
}

/// The low byte comes first.
std::int32_t twoByteValue(const ByteArray& info, const Command& command) {
    if (info.size() < 2)
        throw RuntimeError(ErrorNumber::subscript, "the answer to " + std::string(command.name) + " has " +
                                                       std::to_string(info.size()) + " info byte; expected 2");
    return info[1] * 256 + info[0];
}

struct Reading {
    std::int16_t number;
    std::string_view label;
};
constexpr std::array kAdcLabels{Reading{0, "ADC Lum Read (decimal): "}, Reading{2, "ADC Temp Read (decimal): "},
                                Reading{3, "ADC VBat Read (decimal): "}};

}  // namespace

bool clsOPane::OPaneCmd_Version(std::string& strVersion) {
    CommandRun run(*this, kVersion);
    ByteArray info;
    if (!run.send(0, 0, info))
        return false;
    strVersion.clear();
    for (std::size_t i = 0; i + 1 < info.size(); ++i)  // the last byte is not part of the text
        appendUtf8(strVersion, codePageCharacter(info[i]));
    run.log("Rd:" + strVersion);
    return true;
}

bool clsOPane::OPaneCmd_ReadStatus(bool& blnUpSideDown, bool& blnInvertedDisplay, bool& blnCadreON, bool& blnLCDOn,
                                   bool& blnAutomaticBacklightON, bool& blnAutomaticVlcdON) {
    CommandRun run(*this, kReadStatus);
    ByteArray info;
    if (!run.send(0, 0, info))
        return false;
    const std::array flags{&blnUpSideDown, &blnInvertedDisplay,      &blnCadreON,
                           &blnLCDOn,      &blnAutomaticBacklightON, &blnAutomaticVlcdON};
    for (std::size_t bit = 0; bit < flags.size(); ++bit)
        *flags[bit] = ((info[0] >> bit) & 1) != 0;
    for (std::size_t bit = 0; bit < flags.size(); ++bit)
        run.log(flagText(bit, *flags[bit]));
    return true;
}

bool clsOPane::OPaneCmd_WriteStatus(bool blnUpSideDown, bool blnInvertedDisplay, bool blnLCDOn,
                                    bool blnAutomaticBacklightON, bool blnAutomaticVlcdON) {
    struct Setting {
        std::size_t statusBit;  // the frame flag, bit 2, is no setting
        bool value;
    };
    const std::array settings{Setting{0, blnUpSideDown}, Setting{1, blnInvertedDisplay}, Setting{3, blnLCDOn},
                              Setting{4, blnAutomaticBacklightON}, Setting{5, blnAutomaticVlcdON}};
    const Running running(*this);
    std::uint8_t index = 0;
    for (const Setting& setting : settings) {
        CommandRun run(*this, kWriteStatus);
        run.log(flagText(setting.statusBit, setting.value));
        if (!run.send(index, setting.value ? 1 : 0))
            return false;
        ++index;
    }
    return true;
}

bool clsOPane::OPaneCmd_ReadADC(std::int16_t intADCNumber, std::int32_t& lngReturnValue) {
    CommandRun run(*this, kReadADC);
    ByteArray info;
    if (!run.send(frameByte(intADCNumber, "ADC number"), 0, info))
        return false;
    lngReturnValue = int16Value(twoByteValue(info, kReadADC), "reading of ADC " + std::to_string(intADCNumber));
    for (const Reading& reading : kAdcLabels) {
        if (reading.number == intADCNumber)
            run.log(std::string(reading.label) + std::to_string(lngReturnValue));
    }
    return true;
}

bool clsOPane::OPaneCmd_TempIRandVLCD(std::int16_t intParameter, std::int32_t& lngValueRead) {
    CommandRun run(*this, kTempIRandVLCD);
    run.log("Parameter : " + std::to_string(intParameter));
    ByteArray info;
    if (!run.send(frameByte(intParameter, "parameter"), 0, info)) {
        lngValueRead = 0;
        return false;
    }
    lngValueRead = twoByteValue(info, kTempIRandVLCD);
    run.log("Value Read (decimal) : " + std::to_string(lngValueRead));
    return true;
}

}  // namespace opane
