#include "commands/command_run.h"

namespace opane {
namespace {

bool showBlocks(clsOPane& link, const BlockCommand& command, std::int16_t intLigne, std::int16_t intColonne,
                const ByteArray& arrbytData) {
    if (arrbytData.size() != command.dataBytes || intLigne > command.lastLine || intColonne > command.lastColumn)
        return false;
    CommandRun run(link, command);
    const std::uint8_t line = frameByte(intLigne, "line");
    const std::uint8_t column = frameByte(intColonne, "column");
    return run.sendData(line, column, arrbytData);
}

bool showPattern(clsOPane& link, const Command& command, std::int16_t intPattern) {
    CommandRun run(link, command);
    return run.send(frameByte(intPattern, "pattern"), 0);
}

}  // namespace

bool clsOPane::OPaneCmd_AffData(std::int16_t intZone, const ByteArray& arrbytData) {
    if (arrbytData.size() != kAffData.dataBytes)
        return false;
    CommandRun run(*this, kAffData);
    return run.sendData(frameByte(intZone, "line"), 0, arrbytData);
}

bool clsOPane::OPaneCmd_AffBloc1(std::int16_t intLigne, std::int16_t intColonne, const ByteArray& arrbytData) {
    return showBlocks(*this, kAffBloc1, intLigne, intColonne, arrbytData);
}

bool clsOPane::OPaneCmd_AffBloc4(std::int16_t intLigne, std::int16_t intColonne, const ByteArray& arrbytData) {
    return showBlocks(*this, kAffBloc4, intLigne, intColonne, arrbytData);
}

bool clsOPane::OPaneCmd_Cadre(std::int16_t intPattern) {
    return showPattern(*this, kCadre, intPattern);
}

bool clsOPane::OPaneCmd_Clear(std::int16_t intPattern) {
    return showPattern(*this, kClear, intPattern);
}

}  // namespace opane
