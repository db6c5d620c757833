#include <string>

#include "commands/command_table.h"
#include "link/clsOPane.h"

namespace opane {

bool clsOPane::OPaneCmd_AffData(std::int16_t intZone, const ByteArray& arrbytData) {
    if (arrbytData.size() != kAffData.dataBytes)
        return false;
    const Running running(*this);
    logCommandType(kAffData);
    ByteArray unused;
    return runCommand(kAffData, frameByte(intZone, "line"), 0, unused, arrbytData);
}

bool clsOPane::OPaneCmd_AffBloc1(std::int16_t intLigne, std::int16_t intColonne, const ByteArray& arrbytData) {
    return showBlocks(kAffBloc1, intLigne, intColonne, arrbytData);
}

bool clsOPane::OPaneCmd_AffBloc4(std::int16_t intLigne, std::int16_t intColonne, const ByteArray& arrbytData) {
    return showBlocks(kAffBloc4, intLigne, intColonne, arrbytData);
}

bool clsOPane::OPaneCmd_Cadre(std::int16_t intPattern) {
    return showPattern(kCadre, intPattern);
}

bool clsOPane::OPaneCmd_Clear(std::int16_t intPattern) {
    return showPattern(kClear, intPattern);
}

bool clsOPane::showBlocks(const BlockCommand& command, std::int16_t intLigne, std::int16_t intColonne,
                          const ByteArray& arrbytData) {
    if (arrbytData.size() != command.dataBytes || intLigne > command.lastLine || intColonne > command.lastColumn)
        return false;
    const Running running(*this);
    logCommandType(command);
    const std::uint8_t line = frameByte(intLigne, "line");
    const std::uint8_t column = frameByte(intColonne, "column");
    ByteArray unused;
    return runCommand(command, line, column, unused, arrbytData);
}

bool clsOPane::showPattern(const Command& command, std::int16_t intPattern) {
    const Running running(*this);
    logCommandType(command);
    ByteArray unused;
    return runCommand(command, frameByte(intPattern, "pattern"), 0, unused);
}

}  // namespace opane
