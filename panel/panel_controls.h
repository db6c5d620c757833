#pragma once

#include <array>

#include "forms/window_controls.h"

namespace opane {

/// Every control of the diagnostic window by its name, in tab order. What a handler never touches, the labels and the
/// separator lines, is made by the constructor.
class PanelControls : public window::Form {
public:
    PanelControls();

protected:
    using ComboBox = window::ComboBox;
    using CommandButton = window::CommandButton;
    using Frame = window::Frame;
    using OptionGroup = window::OptionGroup;
    using TabPage = window::TabPage;
    using TextBox = window::TextBox;

    static constexpr TextBox::Style kShown{.characters = 10, .readOnly = true};
    static constexpr TextBox::Style kShownText{.characters = 24, .readOnly = true};

public:
    ComboBox cmbNodeNumber{*this, "cmbNodeNumber", {0, 1}};
    ComboBox cmbComPort{*this, "cmbComPort", {0, 3}};
    ComboBox cmbBusType{*this, "cmbBusType", {0, 5}};
    TextBox txtSystemStatus{*this, "txtSystemStatus", {1, 0, 2}, kShownText};
    TextBox txtComPortstatus{*this, "txtComPortstatus", {1, 2, 2}, kShownText};
    CommandButton cmdSynchronize{*this, "cmdSynchronize", "Synchronize", {1, 4, 2}};
    Frame FrameSSTab{*this, "FrameSSTab", "OPane", {2, 0, 6}};
    window::TabControl SSTab{FrameSSTab, "SSTab", {0, 0}};
    TextBox txtCommandStatus{FrameSSTab, "txtCommandStatus", {1, 0}, kShownText};

    TabPage pageAffiche{SSTab, "SSTab(0)", "Affiche"};
    TabPage pageStatus{SSTab, "SSTab(1)", "Status"};
    TabPage pageRead{SSTab, "SSTab(2)", "Read"};
    TabPage pageEEPROM{SSTab, "SSTab(3)", "EEPROM"};
    TabPage pageBacklight{SSTab, "SSTab(4)", "BackLight"};
    TabPage pageOPane{SSTab, "SSTab(5)", "OPane"};

    // Affiche
    CommandButton cmdAffData{pageAffiche, "cmdAffData", "Affiche Trame", {0, 0}};
    TextBox txtAffDataPattern{pageAffiche, "txtAffDataPattern", {0, 2}, {.characters = 4}, "FF"};
    ComboBox cmbAffDataLigne{pageAffiche, "cmbAffDataLigne", {0, 4}};
    CommandButton cmdAffBloc1{pageAffiche, "cmdAffBloc1", "Affiche Bloc1", {1, 0}};
    TextBox txtAffBloc1Pattern{pageAffiche, "txtAffBloc1Pattern", {1, 2}, {.characters = 18}, "FFFFFFFFFFFFFFFF"};
    ComboBox cmbAffBloc1Ligne{pageAffiche, "cmbAffBloc1Ligne", {1, 4}};
    ComboBox cmbAffBloc1Colonne{pageAffiche, "cmbAffBloc1Colonne", {1, 6}};
    CommandButton cmdAffBloc4{pageAffiche, "cmdAffBloc4", "Affiche Bloc 4", {2, 0}};
    TextBox txtAffBloc4Pattern{
        pageAffiche, "txtAffBloc4Pattern", {2, 2}, {.characters = 34, .lines = 3, .fixedPitch = true}};
    ComboBox cmbAffBloc4Ligne{pageAffiche, "cmbAffBloc4Ligne", {2, 4}};
    ComboBox cmbAffBloc4Colonne{pageAffiche, "cmbAffBloc4Colonne", {2, 6}};
    CommandButton cmdClear{pageAffiche, "cmdClear", "Clear", {3, 0}};
    TextBox txtClearPattern{pageAffiche, "txtClearPattern", {3, 2}, {.characters = 4}, "00"};
    CommandButton cmdCadre{pageAffiche, "cmdCadre", "Cadre", {4, 0}};
    TextBox txtCadrePattern{pageAffiche, "txtCadrePattern", {4, 2}, {.characters = 4}, "FF"};
    CommandButton cmdAfficheBMP{pageAffiche, "cmdAfficheBMP", "Affiche BMP", {5, 0}};

    // Status
    Frame frameSens{pageStatus, "frameSens", "Sens", {0, 0}};
    OptionGroup optSens{frameSens, "optSens", {"Normal", "Up Side Down"}, {0, 0}};
    Frame frameFond{pageStatus, "frameFond", "Fond", {0, 1}};
    OptionGroup optFond{frameFond, "optFond", {"Non Inverted", "Inverted"}, {0, 0}};
    Frame frameCadre{pageStatus, "frameCadre", "Cadre", {0, 2}};
    OptionGroup optCadre{frameCadre, "optCadre", {"Cadre OFF", "Cadre ON"}, {0, 0}};
    Frame frameDisplay{pageStatus, "frameDisplay", "Display", {1, 0}};
    OptionGroup optLCD{frameDisplay, "optLCD", {"LCD ON", "LCD OFF"}, {0, 0}};
    Frame frameLumControl{pageStatus, "frameLumControl", "Lum Control", {1, 1}};
    OptionGroup optLumControl{frameLumControl, "optLumControl", {"No control", "Automatic"}, {0, 0}};
    Frame frameVlcd{pageStatus, "frameVlcd", "Vlcd Control", {1, 2}};
    OptionGroup optVlcdControl{frameVlcd, "optVlcdControl", {"No control", "Automatic"}, {0, 0}};
    CommandButton cmdReadStatus{pageStatus, "cmdReadStatus", "Read Status", {2, 0}};
    CommandButton cmdWriteStatus{pageStatus, "cmdWriteStatus", "Write Status", {2, 1}};
    CommandButton cmdVersion{pageStatus, "cmdVersion", "Version", {3, 0}};
    TextBox txtVersion{pageStatus, "txtVersion", {3, 1, 2}, kShownText};

    // Read
    CommandButton cmdReadADC{pageRead, "cmdReadADC", "Read ADC", {0, 0}};
    TextBox txtADCLum{pageRead, "txtADCLum", {0, 2}, kShown};
    TextBox txtADCTemp{pageRead, "txtADCTemp", {0, 4}, kShown};
    TextBox txtADCUbat{pageRead, "txtADCUbat", {0, 6}, kShown};
    CommandButton cmdReadTemp{pageRead, "cmdReadTemp", "Read Temp", {1, 0}};
    TextBox txtReadTemp{pageRead, "txtReadTemp", {1, 2}, kShown};
    CommandButton cmdReadIR{pageRead, "cmdReadIR", "Read IR", {2, 0}};
    TextBox txtReadIR{pageRead, "txtReadIR", {2, 2}, kShown};
    CommandButton cmdReadVlcd{pageRead, "cmdReadVlcd", "Read Vlcd", {3, 0}};
    TextBox txtReadVlcd{pageRead, "txtReadVlcd", {3, 2}, kShown};

    // EEPROM
    OptionGroup optEEPROMType{pageEEPROM, "optEEPROMType", {"User", "System"}, {0, 0}, 0};
    CommandButton cmdReadAllEEPROM{pageEEPROM, "cmdReadAllEEPROM", "Read All EEPROM", {2, 0}};
    CommandButton cmdSaveBINFile{pageEEPROM, "cmdSaveBINFile", "Save to BIN File", {3, 0}};
    CommandButton cmdWriteAllEEPROM{pageEEPROM, "cmdWriteAllEEPROM", "Write All EEPROM", {4, 0}};
    TextBox txtEEPROMData{
        pageEEPROM,
        "txtEEPROMData",
        {0, 1, 3, 6},
        {.characters = 50, .lines = 12, .readOnly = true, .fixedPitch = true, .verticalScrollBar = true}};
    TextBox txtEEPROMBaseAdress{pageEEPROM, "txtEEPROMBaseAdress", {7, 1}, {}};
    TextBox txtEEPROMLength{pageEEPROM, "txtEEPROMLength", {8, 1}, {}};
    TextBox txtEEPROMDataSmall{pageEEPROM,
                               "txtEEPROMDataSmall",
                               {7, 2, 1, 3},
                               {.characters = 34, .lines = 4, .fixedPitch = true, .verticalScrollBar = true}};
    CommandButton cmdReadEEPROM{pageEEPROM, "cmdReadEEPROM", "Read EEPROM", {7, 3}};
    CommandButton cmdWriteEEPROM{pageEEPROM, "cmdWriteEEPROM", "Write EEPROM", {8, 3}};
    CommandButton cmdEEPROMClearText{pageEEPROM, "cmdEEPROMClearText", "Clear Text", {9, 3}};

    // BackLight
    Frame Frame1{pageBacklight, "Frame1", "Lum Control", {0, 0, 3, 3}};
    OptionGroup optBacklightLumControl{Frame1, "optBacklightLumControl", {"No Control", "Automatic"}, {0, 0}};
    Frame Frame2{pageBacklight, "Frame2", "Write Register", {3, 0, 3, 3}};
    OptionGroup optWriteBacklightRegister{Frame2, "optWriteBacklightRegister", {"Physical", "Consigne"}, {0, 0}};
    TextBox txtWriteBacklightIntensity{pageBacklight, "txtWriteBacklightIntensity", {6, 1}, {}};
    CommandButton cmdWriteRouge{pageBacklight, "cmdWriteRouge", "Write Rouge", {7, 0}};
    CommandButton cmdWriteVert{pageBacklight, "cmdWriteVert", "Write Vert", {7, 1}};
    CommandButton cmdReadRouge{pageBacklight, "cmdReadRouge", "Read Rouge", {8, 0}};
    CommandButton cmdReadVert{pageBacklight, "cmdReadVert", "Read Vert", {8, 1}};
    CommandButton cmdBacklightStatus{pageBacklight, "cmdBacklightStatus", "Update/Read Status", {9, 0, 2}};
    TextBox txtReadBacklightPhysical{pageBacklight, "txtReadBacklightPhysical", {0, 4}, kShown};
    TextBox txtReadBacklightphysicalHexa{pageBacklight, "txtReadBacklightphysicalHexa", {0, 6}, kShown};
    TextBox txtReadBacklightConsigne{pageBacklight, "txtReadBacklightConsigne", {1, 4}, kShown};
    TextBox txtReadBacklightConsigneHexa{pageBacklight, "txtReadBacklightConsigneHexa", {1, 6}, kShown};
    TextBox txtReadBacklightFinal{pageBacklight, "txtReadBacklightFinal", {2, 4}, kShown};
    TextBox txtReadBacklightFinalHexa{pageBacklight, "txtReadBacklightFinalHexa", {2, 6}, kShown};
    TextBox txtReadBacklightADC{pageBacklight, "txtReadBacklightADC", {3, 4}, kShown};
    TextBox txtReadBacklightADCHexa{pageBacklight, "txtReadBacklightADCHexa", {3, 6}, kShown};
    TextBox txtReadBacklightZone{pageBacklight, "txtReadBacklightZone", {4, 4}, kShown};
    TextBox txtReadBacklightZoneHexa{pageBacklight, "txtReadBacklightZoneHexa", {4, 6}, kShown};
    TextBox txtReadBacklightIncrement{pageBacklight, "txtReadBacklightIncrement", {5, 4}, kShown};
    TextBox txtReadBacklightIncrementHexa{pageBacklight, "txtReadBacklightIncrementHexa", {5, 6}, kShown};

    // OPane
    ComboBox cmbBaudrate{pageOPane, "cmbBaudrate", {0, 0}};
    CommandButton cmdChangeBaudrate{pageOPane, "cmdChangeBaudrate", "Change Baudrate", {0, 1}};
    CommandButton cmdResetModule{pageOPane, "cmdResetModule", "Reset Module", {1, 1}};
    CommandButton cmdResetLumControl{pageOPane, "cmdResetLumControl", "Reset Lum Control", {2, 1}};
    Frame Frame3{pageOPane, "Frame3", "Register", {4, 0, 1, 2}};
    OptionGroup optSED1530Register{Frame3, "optSED1530Register", {"Commande", "Data"}, {0, 0}, 0};
    TextBox txtSED1530Data{pageOPane, "txtSED1530Data", {4, 2}, {}};
    CommandButton cmdReadSED1530{pageOPane, "cmdReadSED1530", "Read SED1530", {5, 1}};
    CommandButton cmdWriteSED1530{pageOPane, "cmdWriteSED1530", "Write SED1530", {5, 2}};
};

}  // namespace opane
