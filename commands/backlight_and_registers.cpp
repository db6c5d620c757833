#include <string>

#include "commands/command_table.h"
#include "link/clsOPane.h"

namespace opane {

bool clsOPane::OPaneCmd_ReadSED1530(std::int16_t intRegister, std::int16_t& intValueRead) {
    return readRegister(kReadSED1530, intRegister, intValueRead);
}

bool clsOPane::OPaneCmd_WriteSED1530(std::int16_t intRegister, std::int16_t intValueToWrite) {
    const ByteArray data{frameByte(intValueToWrite, "value to write")};  // before any log line
    const Running running(*this);
    logCommandType(kWriteSED1530);
    logCommand(kWriteSED1530, "Register : " + std::to_string(intRegister));
    logCommand(kWriteSED1530, "Value to write : " + std::to_string(intValueToWrite));
    ByteArray unused;
    return runCommand(kWriteSED1530, 0, frameByte(intRegister, "register"), unused, data);
}

bool clsOPane::OPaneCmd_WriteRouge(std::int16_t intRegister, std::int16_t intIntensity) {
    return writeIntensity(kWriteRouge, intRegister, intIntensity);
}

bool clsOPane::OPaneCmd_WriteVert(std::int16_t intRegister, std::int16_t intIntensity) {
    return writeIntensity(kWriteVert, intRegister, intIntensity);
}

bool clsOPane::OPaneCmd_ReadRouge(std::int16_t intRegister, std::int16_t& intValueRead) {
    return readRegister(kReadRouge, intRegister, intValueRead);
}

bool clsOPane::OPaneCmd_ReadVert(std::int16_t intRegister, std::int16_t& intValueRead) {
    return readRegister(kReadVert, intRegister, intValueRead);
}

bool clsOPane::writeIntensity(const Command& command, std::int16_t intRegister, std::int16_t intIntensity) {
    if (intIntensity < 0 || intIntensity > 255)
        return false;
    const Running running(*this);
    logCommandType(command);
    logCommand(command, "Register : " + std::to_string(intRegister));
    logCommand(command, "Intensity : " + std::to_string(intIntensity));
    ByteArray unused;
    return runCommand(command, frameByte(intRegister, "register"), frameByte(intIntensity, "intensity"), unused);
}

bool clsOPane::readRegister(const Command& command, std::int16_t intRegister, std::int16_t& intValueRead) {
    const Running running(*this);
    logCommandType(command);
    logCommand(command, "Register : " + std::to_string(intRegister));
    const std::uint8_t number = frameByte(intRegister, "register");
    // The controller's registers stand in the second field, those of the backlight in the first.
    const bool ofController = command.type == kReadSED1530.type;
    ByteArray info;
    if (!runCommand(command, ofController ? 0 : number, ofController ? number : 0, info)) {
        intValueRead = 0;
        return false;
    }
    intValueRead = info[0];
    logCommand(command, "Value Read : " + std::to_string(intValueRead));
    return true;
}

}  // namespace opane
