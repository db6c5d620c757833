#pragma once

#include <cstdint>
#include <string_view>

#include "shared/screen_geometry.h"

namespace opane {

/// What the commands of the module differ in (docs/wire.md, "Commands").
struct Command {
    std::uint8_t type;           ///< of the request and of its answer
    std::string_view name;       ///< in the log, after "clsOPane,"
    std::uint8_t dataBytes = 0;  ///< of the request; an EEPROM write has as many as it writes
    bool logsType = true;        ///< a line of its type comes first in the log
};

/// A command that shows row bytes at a block position.
struct BlockCommand : Command {
    std::int16_t lastLine;
    std::int16_t lastColumn;
};

inline constexpr Command kAffData{1, "AffData", 120};
inline constexpr BlockCommand kAffBloc1{{3, "AffBloc1", 8}, kTextLines - 1, kBlockColumns - 1};
inline constexpr BlockCommand kAffBloc4{{4, "AffBloc4", 32}, kTextLines - 2, kBlockColumns - 2};
inline constexpr Command kCadre{5, "Cadre"};
inline constexpr Command kClear{6, "Clear"};
inline constexpr Command kReset{7, "Reset"};
inline constexpr Command kVersion{8, "Version"};
inline constexpr Command kReadStatus{9, "ReadStatus"};
inline constexpr Command kWriteStatus{10, "WriteStatus"};
inline constexpr Command kReadADC{11, "ReadADC"};
inline constexpr Command kReadEEPROMUser{12, "ReadEEPROMUser", 1};
inline constexpr Command kWriteEEPROMUser{13, "WriteEEPROMUser"};
inline constexpr Command kRS232Baudrate{14, "RS232Baudrate"};
inline constexpr Command kReadSED1530{16, "ReadSED1530"};
inline constexpr Command kWriteSED1530{17, "WriteSED1530", 1};
inline constexpr Command kTempIRandVLCD{18, "TempIRandVLCD"};
inline constexpr Command kWriteVert{19, "WriteVert"};
inline constexpr Command kWriteRouge{20, "WriteRouge"};
inline constexpr Command kReadVert{21, "ReadVert"};
inline constexpr Command kReadRouge{22, "ReadRouge"};
inline constexpr Command kReadEEPROMSystem{32, "ReadEEPROMSystem", 1};
inline constexpr Command kWriteEEPROMSystem{33, "WriteEEPROMSystem"};

}  // namespace opane
