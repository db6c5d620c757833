#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "shared/screen_geometry.h"
#include "simulator/pacing.h"

namespace opane::simulator {

enum class Bus { rs232, rs485 };

inline constexpr std::size_t kSystemEepromSize = 1024;  ///< bytes
inline constexpr std::size_t kUserEepromSize = 512;     ///< bytes
inline constexpr int kPowerOnBaudRate = 9600;
inline constexpr std::uint16_t kNoKey = 0xFFFF;
inline constexpr std::uint8_t kErased = 0xFF;  ///< an EEPROM's byte that nobody has written

template <std::size_t size>
constexpr std::array<std::uint8_t, size> erasedEeprom() {
    std::array<std::uint8_t, size> eeprom{};
    eeprom.fill(kErased);
    return eeprom;
}

/// A bank of backlight registers. 0 is the physical one, whose level the picture shows; 1 the set point, 2 the final
/// future value, 3 ADC, 4 zone, 5 increment. All of them just keep what is written.
using BacklightBank = std::array<std::uint8_t, 256>;

/// What a reset of the module brings back to its start values.
struct VolatileState {
    ScreenImage screen{};  ///< as it was sent: upside down, inverted and the frame are made when it is shown
    bool upsideDown = false;
    bool invertedDisplay = false;
    bool lcdOn = true;
    bool automaticBacklight = true;
    bool automaticVlcd = true;
    std::uint8_t framePattern = 0;  ///< 0: no frame is drawn
    BacklightBank red{};
    BacklightBank green{};
    std::array<std::uint8_t, 2> sed1530{};  ///< command register, data register
    std::uint16_t lastKey = kNoKey;         ///< the last infrared code
    int baudRate = kPowerOnBaudRate;
};

/// Everything a module knows and shows. Whoever holds it may look and set.
struct ModuleState : VolatileState {
    std::array<std::uint8_t, kSystemEepromSize> systemEeprom = erasedEeprom<kSystemEepromSize>();
    std::array<std::uint8_t, kUserEepromSize> userEeprom = erasedEeprom<kUserEepromSize>();
    // Readings as they are set; what is answered drifts around that (simulator/readings.h).
    std::array<std::uint16_t, 256> adc{564, 0, 498, 771};  ///< counts: 0 luminosity, 2 temperature, 3 battery voltage
    std::uint16_t temperature = 230;                       ///< tenths of a degree
    std::uint16_t vlcd = 118;
    Micros driftingFor = 0;              ///< how long the readings have been drifting
    std::string version = "OPane V2.0";  ///< bytes, 0..254 of them
    int node = 3;
    Bus bus = Bus::rs232;
    int quartz = 2;

    bool frameDrawn() const { return framePattern != 0; }
    std::uint8_t statusByte() const;
    void powerOn() { static_cast<VolatileState&>(*this) = VolatileState{}; }
};

}  // namespace opane::simulator
