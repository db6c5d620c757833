#include "panel/frmOPane.h"

#include "log/clsLog.h"
#include "panel/panel_texts.h"
#include "platform/dialogs.h"
#include "shared/runtime_error.h"
#include "shared/screen_geometry.h"

namespace opane {
namespace {

constexpr const char* kBaudRates[] = {"1200", "2400", "4800", "9600", "19200", "38400"};

constexpr int kDefaultNodeIndex = 3;
constexpr int kDefaultPortIndex = 0;
constexpr int kDefaultBusIndex = 0;

}  // namespace

namespace panel {

void refuse(const char* prompt, const char* title) {
    showMessageBox(prompt, title, MessageBoxButtons::ok);
}

}  // namespace panel

frmOPane::frmOPane() {
    const auto runs = [this](auto& control, void (frmOPane::*handler)()) {
        control.onClick = [this, handler] { (this->*handler)(); };
    };
    runs(cmbNodeNumber, &frmOPane::cmbNodeNumber_Click);
    runs(cmbComPort, &frmOPane::cmbComPort_Click);
    runs(cmbBusType, &frmOPane::cmbBusType_Click);
    runs(cmdSynchronize, &frmOPane::cmdSynchronize_Click);
    runs(cmdAffData, &frmOPane::cmdAffData_Click);
    runs(cmdAffBloc1, &frmOPane::cmdAffBloc1_Click);
    runs(cmdAffBloc4, &frmOPane::cmdAffBloc4_Click);
    runs(cmdClear, &frmOPane::cmdClear_Click);
    runs(cmdCadre, &frmOPane::cmdCadre_Click);
    runs(cmdAfficheBMP, &frmOPane::cmdAfficheBMP_Click);
    runs(cmdReadStatus, &frmOPane::cmdReadStatus_Click);
    runs(cmdWriteStatus, &frmOPane::cmdWriteStatus_Click);
    runs(cmdVersion, &frmOPane::cmdVersion_Click);
    runs(cmdReadADC, &frmOPane::cmdReadADC_Click);
    runs(cmdReadTemp, &frmOPane::cmdReadTemp_Click);
    runs(cmdReadIR, &frmOPane::cmdReadIR_Click);
    runs(cmdReadVlcd, &frmOPane::cmdReadVlcd_Click);
    runs(cmdReadAllEEPROM, &frmOPane::cmdReadAllEEPROM_Click);
    runs(cmdSaveBINFile, &frmOPane::cmdSaveBINFile_Click);
    runs(cmdWriteAllEEPROM, &frmOPane::cmdWriteAllEEPROM_Click);
    runs(cmdReadEEPROM, &frmOPane::cmdReadEEPROM_Click);
    runs(cmdWriteEEPROM, &frmOPane::cmdWriteEEPROM_Click);
    runs(cmdEEPROMClearText, &frmOPane::cmdEEPROMClearText_Click);
    runs(optBacklightLumControl, &frmOPane::optBacklightLumControl_Click);
    runs(cmdWriteRouge, &frmOPane::cmdWriteRouge_Click);
    runs(cmdWriteVert, &frmOPane::cmdWriteVert_Click);
    runs(cmdReadRouge, &frmOPane::cmdReadRouge_Click);
    runs(cmdReadVert, &frmOPane::cmdReadVert_Click);
    runs(cmdBacklightStatus, &frmOPane::cmdBacklightStatus_Click);
    runs(cmdChangeBaudrate, &frmOPane::cmdChangeBaudrate_Click);
    runs(cmdResetModule, &frmOPane::cmdResetModule_Click);
    runs(cmdResetLumControl, &frmOPane::cmdResetLumControl_Click);
    runs(cmdReadSED1530, &frmOPane::cmdReadSED1530_Click);
    runs(cmdWriteSED1530, &frmOPane::cmdWriteSED1530_Click);
}

void frmOPane::PrepareWindow(std::int16_t intStateOfWindow) {
    switch (intStateOfWindow) {
        case 0:
            for (int node = 0; node <= 3; ++node)
                cmbNodeNumber.entry(static_cast<std::size_t>(node), std::to_string(node));
            cmbComPort.entry(0, "1");
            cmbComPort.entry(1, "2");
            cmbBusType.entry(0, panel_texts::kBus232);
            cmbBusType.entry(1, panel_texts::kBus485);
            cmbNodeNumber.select(kDefaultNodeIndex);
            cmbComPort.select(kDefaultPortIndex);
            cmbBusType.select(kDefaultBusIndex);
            FrameSSTab.visible(false);
            break;
        case 1:
            FrameSSTab.visible(true);
            fillLineAndColumnBoxes();
            showBaudrate(*threadLink());
            break;
        case 2:
            FrameSSTab.visible(false);
            txtSystemStatus.text("");
            txtComPortstatus.text("");
            break;
        default:
            break;
    }
}

void frmOPane::DisplayCommandStatus(bool blnStatusToDisplay) {
    txtCommandStatus.text(blnStatusToDisplay ? panel_texts::kCommandOk : panel_texts::kCommandFailed);
}

void frmOPane::Form_Load() {
    blnFormLoading = true;
    PrepareWindow(0);
    holder().adopt(clsOPane::create());
    holder().adopt(std::make_shared<clsLog>());
    blnFormLoading = false;
    Globals& chosen = holder().globals();
    chosen.gintCommPort = static_cast<std::int16_t>(std::stoi(cmbComPort.text()));
    chosen.gintNodeNumber = static_cast<std::int16_t>(std::stoi(cmbNodeNumber.text()));
    const auto link = threadLink();
    link->Initialize();
    link->CommunicationType(cmbBusType.text());
}

void frmOPane::Form_Unload() {
    holder_.reset();
}

void frmOPane::afterError() {
    blnFormLoading = false;
    cmdSynchronize.enabled(true);
    const auto link = holder().link();
    if (link)
        link->Timeout(clsOPane::kUsualTimeoutMs);
    if (FrameSSTab.visible())
        DisplayCommandStatus(false);
    if (link && link->IsSynchronized())
        return;
    PrepareWindow(2);
    showNotSynchronized();
}

/// Entry 0 of every list is selected, whatever was.
void frmOPane::fillLineAndColumnBoxes() {
    const auto fill = [](ComboBox& box, int last) {
        for (int index = 0; index <= last; ++index)
            box.entry(static_cast<std::size_t>(index), std::to_string(index));
        box.select(0);
    };
    constexpr int kLastLine = kTextLines - 1;
    constexpr int kLastColumn = kBlockColumns - 1;
    fill(cmbAffDataLigne, kLastLine);
    fill(cmbAffBloc1Ligne, kLastLine);
    fill(cmbAffBloc4Ligne, kLastLine - 1);
    fill(cmbAffBloc1Colonne, kLastColumn);
    fill(cmbAffBloc4Colonne, kLastColumn - 1);
}

void frmOPane::showBaudrate(const clsOPane& link) {
    for (std::size_t index = 0; index < std::size(kBaudRates); ++index)
        cmbBaudrate.entry(index, kBaudRates[index]);
    // The last entry stays selected when none is the link's.
    for (std::size_t index = 0; index < std::size(kBaudRates); ++index) {
        cmbBaudrate.select(static_cast<int>(index));
        if (std::stoi(cmbBaudrate.text()) == link.Baudrate())
            break;
    }
}

void frmOPane::showSynchronized(const std::string& portPrefix) {
    const auto link = threadLink();
    txtSystemStatus.text(panel_texts::kSynchronized);
    txtComPortstatus.text(portPrefix + "COM" + std::to_string(link->CommPort()) + ", " +
                          std::to_string(link->Baudrate()) + " bauds");
}

void frmOPane::showNotSynchronized() {
    txtSystemStatus.text(panel_texts::kNotSynchronized);
    txtComPortstatus.text("");
}

void frmOPane::startAgain() {
    showNotSynchronized();
    PrepareWindow(0);
    showNotSynchronized();  // a default that the operator has just confirmed has cleared the boxes
}

GlobalsHolder& frmOPane::holder() {
    if (!holder_)
        throw RuntimeError(ErrorNumber::objectNotSet, "the window has been unloaded");
    return *holder_;
}

}  // namespace opane
