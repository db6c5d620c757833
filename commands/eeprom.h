#pragma once

#include <cstddef>

#include "link/clsOPane.h"

namespace opane {

inline constexpr std::size_t kMostEepromBytes = 128;  ///< that one command carries

/// One of the module's two EEPROMs.
struct Eeprom {
    const char* name;
    std::size_t size;  ///< bytes
    bool (clsOPane::*read)(std::int16_t intBaseAdress, std::int16_t intLengthOfData, ByteArray& arrbytReturnedData);
    bool (clsOPane::*write)(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                            const ByteArray& arrbytDataToWrite);
};

inline constexpr Eeprom kSystemEeprom{"system", 1024, &clsOPane::OPaneCmd_ReadEEPROMSystem,
                                      &clsOPane::OPaneCmd_WriteEEPROMSystem};
inline constexpr Eeprom kUserEeprom{"user", 512, &clsOPane::OPaneCmd_ReadEEPROMUser,
                                    &clsOPane::OPaneCmd_WriteEEPROMUser};

}  // namespace opane
