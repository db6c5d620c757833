#include "commands/eeprom.h"

#include <string>

#include "commands/command_run.h"

namespace opane {
namespace {

/// Whether the range lies in the EEPROM. A negative address or length is found at its conversion.
bool isRange(const Eeprom& eeprom, std::int16_t intBaseAdress, std::int16_t intLengthOfData) {
    return intLengthOfData != 0 && intLengthOfData <= static_cast<std::int16_t>(kMostEepromBytes) &&
           intBaseAdress <= static_cast<std::int32_t>(eeprom.size) - intLengthOfData;
}

bool runOnRange(CommandRun& run, std::int16_t intBaseAdress, std::int16_t intLengthOfData, const ByteArray& data,
                ByteArray& receivedInfo, bool seesToEnd) {
    run.log("Length : " + std::to_string(intLengthOfData));
    run.log("Base adress : " + std::to_string(intBaseAdress));
    const std::uint8_t low = frameByte(intBaseAdress % 256, "low byte of the base address");
    const std::uint8_t high = frameByte(intBaseAdress / 256, "high byte of the base address");
    if (seesToEnd)
        run.seeToEnd();
    return run.sendData(low, high, data, receivedInfo);
}

bool readEeprom(clsOPane& link, const Eeprom& eeprom, const Command& command, std::int16_t intBaseAdress,
                std::int16_t intLengthOfData, ByteArray& arrbytReturnedData) {
    if (!isRange(eeprom, intBaseAdress, intLengthOfData))
        return false;
    const ByteArray data{frameByte(intLengthOfData, "length")};  // before any log line
    CommandRun run(link, command);
    return runOnRange(run, intBaseAdress, intLengthOfData, data, arrbytReturnedData, false);
}

bool writeEeprom(clsOPane& link, const Eeprom& eeprom, const Command& command, std::int16_t intBaseAdress,
                 std::int16_t intLengthOfData, const ByteArray& arrbytDataToWrite) {
    if (!isRange(eeprom, intBaseAdress, intLengthOfData) || intLengthOfData < 0 ||
        arrbytDataToWrite.size() != static_cast<std::size_t>(intLengthOfData))
        return false;
    CommandRun run(link, command);
    ByteArray unused;
    constexpr bool kSeesToEnd = true;  // a block that is perhaps written would be the worst end
    return runOnRange(run, intBaseAdress, intLengthOfData, arrbytDataToWrite, unused, kSeesToEnd);
}

}  // namespace

bool clsOPane::OPaneCmd_ReadEEPROMSystem(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                         ByteArray& arrbytReturnedData) {
    return readEeprom(*this, kSystemEeprom, kReadEEPROMSystem, intBaseAdress, intLengthOfData, arrbytReturnedData);
}

bool clsOPane::OPaneCmd_ReadEEPROMUser(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                       ByteArray& arrbytReturnedData) {
    return readEeprom(*this, kUserEeprom, kReadEEPROMUser, intBaseAdress, intLengthOfData, arrbytReturnedData);
}

bool clsOPane::OPaneCmd_WriteEEPROMSystem(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                          const ByteArray& arrbytDataToWrite) {
    return writeEeprom(*this, kSystemEeprom, kWriteEEPROMSystem, intBaseAdress, intLengthOfData, arrbytDataToWrite);
}

bool clsOPane::OPaneCmd_WriteEEPROMUser(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                        const ByteArray& arrbytDataToWrite) {
    return writeEeprom(*this, kUserEeprom, kWriteEEPROMUser, intBaseAdress, intLengthOfData, arrbytDataToWrite);
}

}  // namespace opane
