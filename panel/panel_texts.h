#pragma once

namespace opane::panel_texts {

inline constexpr auto kWindow = "OPane (518'000 Module)";
inline constexpr auto kErrorTitle = "OPane Error";

inline constexpr auto kSynchronized = "System Synchronized";
inline constexpr auto kNotSynchronized = "System Not Synchronized";
inline constexpr auto kCommandOk = "Command OK";
inline constexpr auto kCommandFailed = "Command Failed";

inline constexpr auto kBus232 = "RS232";
inline constexpr auto kBus485 = "RS485";

inline constexpr auto kConfirmChange =
    "Le module est synchronisé en ce moment. Cette action \r\nva réinitialiser l'état de la communication.";
inline constexpr auto kBusTitle = "Changement de Type de Bus";
inline constexpr auto kPortTitle = "Changement de COM Port";
inline constexpr auto kNodeTitle = "Changement de Node";

inline constexpr auto kPatternLength = "Invalid Pattern Length";
inline constexpr auto kPatternDigits = "Invalid Pattern: hexadecimal digits only";

inline constexpr auto kEepromTitle = "EEPROM Error";
inline constexpr auto kRangeEmpty = "Champ Base Adress et/ou Length vide(s)";
inline constexpr auto kBaseNumber = "Invalid Base Adress: hexadecimal digits only";
inline constexpr auto kLengthNumber = "Invalid Length: hexadecimal digits only";
inline constexpr auto kDataLength = "Longueur des data incorrecte";
inline constexpr auto kDataDigits = "Invalid Data: hexadecimal digits only";
inline constexpr auto kNothingSaved = "The EEPROM was not read completely. Nothing was saved.";
inline constexpr auto kSaveCancelled = "The save was cancelled. Nothing was saved.";
inline constexpr auto kImageSize = "Invalid BIN File: exactly 1024 bytes expected. Nothing was written.";

inline constexpr auto kBacklightTitle = "Write BACKLIGHT Error";
inline constexpr auto kIntensityEmpty = "Champ Intensité vide";
inline constexpr auto kIntensityNumber = "Invalid Intensity: decimal number expected";
inline constexpr auto kRegisterAndMode =
    "Le registre physique ne peut être utilisé qu'en mode No Control. \r\n"
    "Le registre de consigne ne peut être utilisé qu'en mode Automatique.";

inline constexpr auto kSed1530Title = "SED1530 Write Error";
inline constexpr auto kSed1530Empty = "Champ Data SED1530 vide";
inline constexpr auto kSed1530Number = "Invalid Data SED1530: hexadecimal number from 0 to FF expected";

}  // namespace opane::panel_texts
