#include <string>

#include "commands/command_run.h"

namespace opane {
namespace {

bool writeIntensity(clsOPane& link, const Command& command, std::int16_t intRegister, std::int16_t intIntensity) {
    if (intIntensity < 0 || intIntensity > 255)
        return false;
    CommandRun run(link, command);
    run.log("Register : " + std::to_string(intRegister));
    run.log("Intensity : " + std::to_string(intIntensity));
    return run.send(frameByte(intRegister, "register"), frameByte(intIntensity, "intensity"));
}

bool readRegister(clsOPane& link, const Command& command, std::int16_t intRegister, std::int16_t& intValueRead) {
    CommandRun run(link, command);
    run.log("Register : " + std::to_string(intRegister));
    const std::uint8_t number = frameByte(intRegister, "register");
    // The controller's registers stand in the second field, those of the backlight in the first.
    const bool ofController = command.type == kReadSED1530.type;
    ByteArray info;
    if (!run.send(ofController ? 0 : number, ofController ? number : 0, info)) {
        intValueRead = 0;
        return false;
    }
    intValueRead = info[0];
    run.log("Value Read : " + std::to_string(intValueRead));
    return true;
}

}  // namespace

bool clsOPane::OPaneCmd_ReadSED1530(std::int16_t intRegister, std::int16_t& intValueRead) {
    return readRegister(*this, kReadSED1530, intRegister, intValueRead);
}

bool clsOPane::OPaneCmd_WriteSED1530(std::int16_t intRegister, std::int16_t intValueToWrite) {
    const ByteArray data{frameByte(intValueToWrite, "value to write")};  // before any log line
    CommandRun run(*this, kWriteSED1530);
    run.log("Register : " + std::to_string(intRegister));
    run.log("Value to write : " + std::to_string(intValueToWrite));
    return run.sendData(0, frameByte(intRegister, "register"), data);
}

bool clsOPane::OPaneCmd_WriteRouge(std::int16_t intRegister, std::int16_t intIntensity) {
    return writeIntensity(*this, kWriteRouge, intRegister, intIntensity);
}

bool clsOPane::OPaneCmd_WriteVert(std::int16_t intRegister, std::int16_t intIntensity) {
    return writeIntensity(*this, kWriteVert, intRegister, intIntensity);
}

bool clsOPane::OPaneCmd_ReadRouge(std::int16_t intRegister, std::int16_t& intValueRead) {
    return readRegister(*this, kReadRouge, intRegister, intValueRead);
}

bool clsOPane::OPaneCmd_ReadVert(std::int16_t intRegister, std::int16_t& intValueRead) {
    return readRegister(*this, kReadVert, intRegister, intValueRead);
}

}  // namespace opane
