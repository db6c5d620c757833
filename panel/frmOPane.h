#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "link/clsOPane.h"
#include "panel/panel_controls.h"
#include "shared/mdlConstantes.h"

namespace opane {

/// The diagnostic window: chooses bus, port and node, synchronises, and runs every command of the module by hand from
/// six pages. While it is loaded it owns the thread's link and log. A view shows it (forms/window_controls.h); it
/// needs none.
///
/// Each handler blocks as long as its commands do. What is typed is refused with a message box before anything is sent,
/// and stays as it was typed. A raised error is shown in one box; afterwards another synchronisation can be tried, and
/// the pages are hidden unless the link is still open and synchronised.
class frmOPane final : public PanelControls {
public:
    frmOPane();

    /// Puts the window into a state: 0 not connected, with the connection choices at their defaults; 1 synchronised;
    /// 2 connection dropped. Any other number does nothing.
    /// @throws RuntimeError 91 (object variable not set) when the thread has no link
    void PrepareWindow(std::int16_t intStateOfWindow);

    /// Shows whether the last command succeeded.
    void DisplayCommandStatus(bool blnStatusToDisplay);

private:
    void Form_Load() override;
    void Form_Unload() override;
    void afterError() override;

    void fillLineAndColumnBoxes();
    void showBaudrate(const clsOPane& link);
    void showSynchronized(const std::string& portPrefix);
    void showNotSynchronized();
    void startAgain();
    GlobalsHolder& holder();
    Globals& globals() { return holder().globals(); }

    void cmbBusType_Click();
    void cmbComPort_Click();
    void cmbNodeNumber_Click();
    void cmdSynchronize_Click();
    bool leaveConnection(const char* title);

    void cmdAffData_Click();
    void cmdAffBloc1_Click();
    void cmdAffBloc4_Click();
    void cmdClear_Click();
    void cmdCadre_Click();
    void cmdAfficheBMP_Click();

    void cmdReadStatus_Click();
    void cmdWriteStatus_Click();
    void cmdVersion_Click();

    void cmdReadADC_Click();
    void cmdReadTemp_Click();
    void cmdReadIR_Click();
    void cmdReadVlcd_Click();

    void cmdReadAllEEPROM_Click();
    void cmdSaveBINFile_Click();
    void cmdWriteAllEEPROM_Click();
    void cmdReadEEPROM_Click();
    void cmdWriteEEPROM_Click();
    void cmdEEPROMClearText_Click();

    void optBacklightLumControl_Click();
    void cmdWriteRouge_Click();
    void cmdWriteVert_Click();
    void cmdReadRouge_Click();
    void cmdReadVert_Click();
    void cmdBacklightStatus_Click();

    void cmdChangeBaudrate_Click();
    void cmdResetModule_Click();
    void cmdResetLumControl_Click();
    void cmdReadSED1530_Click();
    void cmdWriteSED1530_Click();

    std::optional<GlobalsHolder> holder_{std::in_place};
    bool blnFormLoading = false;  // the link does not exist yet
};

/// What every page's handlers use.
namespace panel {

/// The thread's link and its log, kept until a handler that runs commands ends.
class Link {
public:
    Link() : link_(threadLink()), running_(*link_) {}

    clsOPane* operator->() const { return link_.get(); }
    clsOPane& operator*() const { return *link_; }

private:
    std::shared_ptr<clsOPane> link_;
    clsOPane::Running running_;
};

/// Refuses what was typed: a box with an OK button alone.
void refuse(const char* prompt, const char* title);

}  // namespace panel
}  // namespace opane
