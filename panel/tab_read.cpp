#include <array>
#include <string>

#include "panel/frmOPane.h"
#include "panel/number_text.h"
#include "platform/regional_text.h"

namespace opane {
namespace {

struct AdcRow {
    std::int16_t input;
    window::TextBox PanelControls::*box;
};

constexpr AdcRow kAdcRows[] = {
    {0, &PanelControls::txtADCLum}, {2, &PanelControls::txtADCTemp}, {3, &PanelControls::txtADCUbat}};

std::string readingText(std::int32_t value) {
    return std::string("$").append(hexText(static_cast<std::uint32_t>(value)));
}

/// Tenths as a decimal number without trailing zeros.
std::string temperatureText(std::int32_t tenths) {
    const std::string whole = std::to_string(tenths / 10);
    return tenths % 10 == 0 ? whole : whole + decimalSeparator() + std::to_string(tenths % 10);
}

struct SingleReading {
    std::int16_t parameter;
    window::TextBox PanelControls::*box;
    std::string (*text)(std::int32_t value);
};

constexpr SingleReading kTemperature{0, &PanelControls::txtReadTemp, temperatureText};
constexpr SingleReading kLastKey{1, &PanelControls::txtReadIR, readingText};
constexpr SingleReading kVlcd{2, &PanelControls::txtReadVlcd, readingText};

/// A failed reading shows as 0.
void read(frmOPane& form, const SingleReading& reading) {
    std::int32_t value = 0;
    form.DisplayCommandStatus(panel::Link()->OPaneCmd_TempIRandVLCD(reading.parameter, value));
    (form.*reading.box).text(reading.text(value));
}

}  // namespace

void frmOPane::cmdReadADC_Click() {
    const panel::Link link;
    std::array<std::int32_t, std::size(kAdcRows)> values{};
    bool lastResult = false;
    for (std::size_t row = 0; row < values.size(); ++row)
        lastResult = link->OPaneCmd_ReadADC(kAdcRows[row].input, values[row]);
    DisplayCommandStatus(lastResult);
    for (std::size_t row = 0; row < values.size(); ++row)
        (this->*kAdcRows[row].box).text(readingText(values[row]));
}

void frmOPane::cmdReadTemp_Click() {
    read(*this, kTemperature);
}

void frmOPane::cmdReadIR_Click() {
    read(*this, kLastKey);
}

void frmOPane::cmdReadVlcd_Click() {
    read(*this, kVlcd);
}

}  // namespace opane
