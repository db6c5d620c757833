#include <array>
#include <cstddef>
#include <string>

#include "panel/frmOPane.h"

namespace opane {
namespace {

/// The flags as the status commands have them.
enum Flag : std::size_t { upSideDown, invertedDisplay, cadreOn, lcdOn, automaticBacklight, automaticVlcd, flagCount };

struct StatusPair {
    window::OptionGroup PanelControls::*options;
    int whenTrue;  // index of the option that stands for a true flag
};

constexpr std::array<StatusPair, flagCount> kPairs{
    StatusPair{&PanelControls::optSens, 1},       StatusPair{&PanelControls::optFond, 1},
    StatusPair{&PanelControls::optCadre, 1},      StatusPair{&PanelControls::optLCD, 0},
    StatusPair{&PanelControls::optLumControl, 1}, StatusPair{&PanelControls::optVlcdControl, 1}};

}  // namespace

void frmOPane::cmdReadStatus_Click() {
    std::array<bool, flagCount> flags{};
    DisplayCommandStatus(panel::Link()->OPaneCmd_ReadStatus(flags[upSideDown], flags[invertedDisplay], flags[cadreOn],
                                                            flags[lcdOn], flags[automaticBacklight],
                                                            flags[automaticVlcd]));
    for (std::size_t flag = 0; flag < flagCount; ++flag)
        (this->*kPairs[flag].options).select(flags[flag] ? kPairs[flag].whenTrue : 1 - kPairs[flag].whenTrue);
}

void frmOPane::cmdWriteStatus_Click() {
    std::array<bool, flagCount> flags{};
    for (std::size_t flag = 0; flag < flagCount; ++flag)
        flags[flag] = (this->*kPairs[flag].options).selected() == kPairs[flag].whenTrue;
    const panel::Link link;
    link->OPaneCmd_Cadre(flags[cadreOn] ? clsOPane::kFrameDrawn : clsOPane::kNoFrame);  // its result is not shown
    DisplayCommandStatus(link->OPaneCmd_WriteStatus(flags[upSideDown], flags[invertedDisplay], flags[lcdOn],
                                                    flags[automaticBacklight], flags[automaticVlcd]));
}

void frmOPane::cmdVersion_Click() {
    std::string strVersion;
    DisplayCommandStatus(panel::Link()->OPaneCmd_Version(strVersion));
    txtVersion.text(strVersion);
}

}  // namespace opane
