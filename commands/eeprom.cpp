#include <string>

#include "commands/command_table.h"
#include "link/clsOPane.h"

namespace opane {
namespace {

constexpr std::int16_t kMostBytes = 128;  // of one range

/// Whether the range lies in the EEPROM. A negative address or length is found at its conversion.
bool isRange(const EepromCommand& command, std::int16_t intBaseAdress, std::int16_t intLengthOfData) {
    return intLengthOfData != 0 && intLengthOfData <= kMostBytes && intBaseAdress <= command.size - intLengthOfData;
}

}  // namespace

bool clsOPane::OPaneCmd_ReadEEPROMSystem(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                         ByteArray& arrbytReturnedData) {
    return readEeprom(kReadEEPROMSystem, intBaseAdress, intLengthOfData, arrbytReturnedData);
}

bool clsOPane::OPaneCmd_ReadEEPROMUser(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                       ByteArray& arrbytReturnedData) {
    return readEeprom(kReadEEPROMUser, intBaseAdress, intLengthOfData, arrbytReturnedData);
}

bool clsOPane::OPaneCmd_WriteEEPROMSystem(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                          const ByteArray& arrbytDataToWrite) {
    return writeEeprom(kWriteEEPROMSystem, intBaseAdress, intLengthOfData, arrbytDataToWrite);
}

bool clsOPane::OPaneCmd_WriteEEPROMUser(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                        const ByteArray& arrbytDataToWrite) {
    return writeEeprom(kWriteEEPROMUser, intBaseAdress, intLengthOfData, arrbytDataToWrite);
}

bool clsOPane::readEeprom(const EepromCommand& command, std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                          ByteArray& arrbytReturnedData) {
    if (!isRange(command, intBaseAdress, intLengthOfData))
        return false;
    return runOnRange(command, intBaseAdress, intLengthOfData, ByteArray{frameByte(intLengthOfData, "length")},
                      arrbytReturnedData, false);
}

bool clsOPane::writeEeprom(const EepromCommand& command, std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                           const ByteArray& arrbytDataToWrite) {
    if (!isRange(command, intBaseAdress, intLengthOfData) || intLengthOfData < 0 ||
        arrbytDataToWrite.size() != static_cast<std::size_t>(intLengthOfData))
        return false;
    ByteArray unused;
    constexpr bool kSeesToEnd = true;  // a block that is perhaps written would be the worst end
    return runOnRange(command, intBaseAdress, intLengthOfData, arrbytDataToWrite, unused, kSeesToEnd);
}

bool clsOPane::runOnRange(const EepromCommand& command, std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                          const ByteArray& data, ByteArray& receivedInfo, bool seesToEnd) {
    const Running running(*this);
    logCommandType(command);
    logCommand(command, "Length : " + std::to_string(intLengthOfData));
    logCommand(command, "Base adress : " + std::to_string(intBaseAdress));
    const std::uint8_t low = frameByte(intBaseAdress % 256, "low byte of the base address");
    const std::uint8_t high = frameByte(intBaseAdress / 256, "high byte of the base address");
    seesToEnd_ = seesToEnd;
    return runCommand(command, low, high, receivedInfo, data);
}

}  // namespace opane
