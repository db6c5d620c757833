#include <string>

#include "panel/frmOPane.h"
#include "panel/number_text.h"
#include "panel/panel_texts.h"

namespace opane {
namespace {

constexpr std::int16_t kQuartzType = 2;  // of every module that the panel is used on
constexpr int kIndexOf9600 = 3;

constexpr std::int16_t kLargestByte = 0xFF;

/// 0 "Commande", 1 "Data".
std::int16_t chosenRegister(const frmOPane& form) {
    return form.optSED1530Register.selected() == 0 ? 0 : 1;
}

}  // namespace

void frmOPane::cmdChangeBaudrate_Click() {
    if (panel::Link()->OPaneCmd_RS232Baudrate(std::stoi(cmbBaudrate.text()), kQuartzType)) {
        showSynchronized("");
    } else {
        startAgain();
    }
}

void frmOPane::cmdResetModule_Click() {
    if (panel::Link()->OPaneCmd_Reset(clsOPane::kResetModule)) {
        showSynchronized("");
        cmbBaudrate.select(kIndexOf9600);
        DisplayCommandStatus(true);
    } else {
        startAgain();
    }
}

void frmOPane::cmdResetLumControl_Click() {
    DisplayCommandStatus(panel::Link()->OPaneCmd_Reset(clsOPane::kResetLightControl));
}

void frmOPane::cmdReadSED1530_Click() {
    std::int16_t value = 0;
    const bool result = panel::Link()->OPaneCmd_ReadSED1530(chosenRegister(*this), value);
    if (result)
        txtSED1530Data.text(hexText(static_cast<std::uint32_t>(value)));
    DisplayCommandStatus(result);
}

void frmOPane::cmdWriteSED1530_Click() {
    if (txtSED1530Data.text().empty())
        return panel::refuse(panel_texts::kSed1530Empty, panel_texts::kSed1530Title);
    const auto value = hexNumber(txtSED1530Data.text(), kLargestByte);
    if (!value)
        return panel::refuse(panel_texts::kSed1530Number, panel_texts::kSed1530Title);
    DisplayCommandStatus(panel::Link()->OPaneCmd_WriteSED1530(chosenRegister(*this), *value));
}

}  // namespace opane
