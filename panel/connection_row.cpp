#include "link/connection.h"
#include "panel/frmOPane.h"
#include "panel/panel_texts.h"
#include "platform/dialogs.h"

namespace opane {
namespace {

constexpr std::int32_t kSynchronisationRate = 9600;  // whatever rate the link had

}  // namespace

/// Asks before a new choice drops a connection. The choice itself takes effect at the next synchronisation.
/// @return false when the operator cancels
bool frmOPane::leaveConnection(const char* title) {
    const auto link = threadLink();
    if (!link->IsSynchronized())
        return true;
    if (showMessageBox(panel_texts::kConfirmChange, title, MessageBoxButtons::okCancel) == MessageBoxAnswer::cancel)
        return false;
    link->CloseCommunication();
    PrepareWindow(2);
    return true;
}

void frmOPane::cmbBusType_Click() {
    if (blnFormLoading || leaveConnection(panel_texts::kBusTitle))
        globals().gstrBusType = cmbBusType.text();
    else
        cmbBusType.text(globals().gstrBusType);
}

void frmOPane::cmbComPort_Click() {
    if (blnFormLoading)
        return;  // Form_Load records the port itself
    if (leaveConnection(panel_texts::kPortTitle))
        globals().gintCommPort = static_cast<std::int16_t>(cmbComPort.selected() + 1);
    else
        cmbComPort.text(std::to_string(globals().gintCommPort));
}

void frmOPane::cmbNodeNumber_Click() {
    if (blnFormLoading || leaveConnection(panel_texts::kNodeTitle))
        globals().gintNodeNumber = static_cast<std::int16_t>(std::stoi(cmbNodeNumber.text()));
    else
        cmbNodeNumber.text(std::to_string(globals().gintNodeNumber));
}

void frmOPane::cmdSynchronize_Click() {
    cmdSynchronize.enabled(false);
    const panel::Link link;
    const Globals& chosen = globals();
    if (makeConnection(*link, {chosen.gintCommPort, kSynchronisationRate, chosen.gintNodeNumber, chosen.gstrBusType})) {
        showSynchronized(globals().gstrBusType + ", ");
        PrepareWindow(1);
    } else {
        PrepareWindow(2);  // first, as it clears the boxes
        showNotSynchronized();
    }
    cmdSynchronize.enabled(true);
}

}  // namespace opane
