#include "panel/panel_controls.h"

#include "panel/panel_texts.h"

namespace opane {

PanelControls::PanelControls() : Form(panel_texts::kWindow, panel_texts::kErrorTitle) {
    struct LabelRow {
        window::Container& container;
        const char* name;
        const char* caption;
        window::Place place;
    };
    const LabelRow labels[] = {
        {*this, "lblNodeNumber", "Node Nb.", {0, 0}},
        {*this, "lblComPort", "COM Port", {0, 2}},
        {*this, "lblBusType", "Bus Type", {0, 4}},

        {pageAffiche, "lblAffDataPattern", "Pattern", {0, 1}},
        {pageAffiche, "lblAffDataLigne", "Ligne", {0, 3}},
        {pageAffiche, "lblAffBloc1Pattern", "Pattern", {1, 1}},
        {pageAffiche, "lblAffBloc1Ligne", "Ligne", {1, 3}},
        {pageAffiche, "lblAffBloc1Colonne", "Col.", {1, 5}},
        {pageAffiche, "lblAffBloc4Pattern", "Pattern", {2, 1}},
        {pageAffiche, "lblAffBloc4Ligne", "Ligne", {2, 3}},
        {pageAffiche, "lblAffBloc4Colonne", "Col.", {2, 5}},
        {pageAffiche, "lblClearPattern", "Pattern", {3, 1}},
        {pageAffiche, "lblCadrePattern", "Pattern", {4, 1}},

        {pageRead, "lblADCLum", "Lum", {0, 1}},
        {pageRead, "lblADCTemp", "Temp", {0, 3}},
        {pageRead, "lblADCUbat", "UBat", {0, 5}},

        {pageEEPROM, "lblWriteAllEEPROM", "(only SYSTEM)", {5, 0}},
        {pageEEPROM, "lblEEPROMBaseAdress", "Base Adress", {7, 0}},
        {pageEEPROM, "lblEEPROMLength", "Length", {8, 0}},

        {pageBacklight, "lblWriteBacklightIntensity", "Intensity", {6, 0}},
        {pageBacklight, "lblWriteBacklightRange", "0..255", {6, 2}},
        {pageBacklight, "lblReadBacklightPhysical", "Physical register", {0, 3}},
        {pageBacklight, "lblReadBacklightPhysicalHexa", "Hexa", {0, 5}},
        {pageBacklight, "lblReadBacklightConsigne", "Consigne register", {1, 3}},
        {pageBacklight, "lblReadBacklightConsigneHexa", "Hexa", {1, 5}},
        {pageBacklight, "lblReadBacklightFinal", "Final future value", {2, 3}},
        {pageBacklight, "lblReadBacklightFinalHexa", "Hexa", {2, 5}},
        {pageBacklight, "lblReadBacklightADC", "ADC", {3, 3}},
        {pageBacklight, "lblReadBacklightADCHexa", "Hexa", {3, 5}},
        {pageBacklight, "lblReadBacklightZone", "Zone", {4, 3}},
        {pageBacklight, "lblReadBacklightZoneHexa", "Hexa", {4, 5}},
        {pageBacklight, "lblReadBacklightIncrement", "Increment register", {5, 3}},
        {pageBacklight, "lblReadBacklightIncrementHexa", "Hexa", {5, 5}},

        {pageOPane, "lblSED1530Data", "Data SED1530", {4, 1}},
    };
    for (const LabelRow& row : labels)
        label(row.container, row.name, row.caption, row.place);
    line(pageEEPROM, "lineEEPROM", {6, 0, 4});
    line(pageOPane, "lineOPane", {3, 0, 3});
}

}  // namespace opane
