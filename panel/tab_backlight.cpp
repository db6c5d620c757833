#include <string>

#include "panel/frmOPane.h"
#include "panel/number_text.h"
#include "panel/panel_texts.h"
#include "platform/dialogs.h"

namespace opane {
namespace {

// Options of the two groups. The numbers of the second one are the registers'.
enum LumControl : int { noControl = 0, automatic = 1 };
enum WriteRegister : std::int16_t { physical = 0, consigne = 1 };

struct RegisterRow {
    window::TextBox PanelControls::*decimal;
    window::TextBox PanelControls::*hexadecimal;
};

/// By register.
constexpr RegisterRow kRegisterRows[] = {
    {&PanelControls::txtReadBacklightPhysical, &PanelControls::txtReadBacklightphysicalHexa},
    {&PanelControls::txtReadBacklightConsigne, &PanelControls::txtReadBacklightConsigneHexa},
    {&PanelControls::txtReadBacklightFinal, &PanelControls::txtReadBacklightFinalHexa},
    {&PanelControls::txtReadBacklightADC, &PanelControls::txtReadBacklightADCHexa},
    {&PanelControls::txtReadBacklightZone, &PanelControls::txtReadBacklightZoneHexa},
    {&PanelControls::txtReadBacklightIncrement, &PanelControls::txtReadBacklightIncrementHexa}};

/// Stops at the first register that cannot be read; the rows from there on keep what they show.
void readChannel(frmOPane& form, bool (clsOPane::*read)(std::int16_t intRegister, std::int16_t& intValueRead)) {
    const panel::Link link;
    bool result = true;
    for (std::int16_t number = 0; result && number < static_cast<std::int16_t>(std::size(kRegisterRows)); ++number) {
        std::int16_t value = 0;
        result = (*link.*read)(number, value);
        if (!result)
            break;
        const RegisterRow& row = kRegisterRows[number];
        (form.*row.decimal).text(std::to_string(value));
        (form.*row.hexadecimal).text(hexText(static_cast<std::uint32_t>(value)));
    }
    form.DisplayCommandStatus(result);
}

/// Each register is written in the one mode in which the module takes it.
void writeChannel(frmOPane& form, bool (clsOPane::*write)(std::int16_t intRegister, std::int16_t intIntensity)) {
    const std::string& text = form.txtWriteBacklightIntensity.text();
    if (text.empty())
        return panel::refuse(panel_texts::kIntensityEmpty, panel_texts::kBacklightTitle);
    const auto intensity = decimalNumber(text);
    if (!intensity)
        return panel::refuse(panel_texts::kIntensityNumber, panel_texts::kBacklightTitle);
    const int written = form.optWriteBacklightRegister.selected();
    const int mode = form.optBacklightLumControl.selected();
    if ((written == physical && mode == noControl) || (written == consigne && mode == automatic))
        form.DisplayCommandStatus((*panel::Link().*write)(static_cast<std::int16_t>(written), *intensity));
    else  // either button means the same
        showMessageBox(panel_texts::kRegisterAndMode, panel_texts::kBacklightTitle, MessageBoxButtons::okCancel);
}

}  // namespace

void frmOPane::optBacklightLumControl_Click() {
    optWriteBacklightRegister.select(optBacklightLumControl.selected() == noControl ? physical : consigne);
}

void frmOPane::cmdWriteRouge_Click() {
    writeChannel(*this, &clsOPane::OPaneCmd_WriteRouge);
}

void frmOPane::cmdWriteVert_Click() {
    writeChannel(*this, &clsOPane::OPaneCmd_WriteVert);
}

void frmOPane::cmdReadRouge_Click() {
    readChannel(*this, &clsOPane::OPaneCmd_ReadRouge);
}

void frmOPane::cmdReadVert_Click() {
    readChannel(*this, &clsOPane::OPaneCmd_ReadVert);
}

void frmOPane::cmdBacklightStatus_Click() {
    const panel::Link link;
    bool blnUpSideDown = false;
    bool blnInvertedDisplay = false;
    bool blnCadreON = false;
    bool blnLCDOn = false;
    bool blnAutomaticBacklightON = false;
    bool blnAutomaticVlcdON = false;
    bool result = link->OPaneCmd_ReadStatus(blnUpSideDown, blnInvertedDisplay, blnCadreON, blnLCDOn,
                                            blnAutomaticBacklightON, blnAutomaticVlcdON);
    const int modeOfModule = blnAutomaticBacklightON ? automatic : noControl;
    const int modeChosen = optBacklightLumControl.selected();
    if (modeChosen == OptionGroup::kNone)
        optBacklightLumControl.select(modeOfModule);
    else if (result && modeChosen != modeOfModule)  // flags that were not read are not written either
        result = link->OPaneCmd_WriteStatus(blnUpSideDown, blnInvertedDisplay, blnLCDOn, modeChosen == automatic,
                                            blnAutomaticVlcdON);
    DisplayCommandStatus(result);
}

}  // namespace opane
