#include <string>

#include "panel/frmOPane.h"
#include "panel/number_text.h"
#include "panel/panel_texts.h"
#include "shared/screen_geometry.h"

namespace opane {
namespace {

/// The boxes of a pattern button, how many bytes its pattern is, and the command that takes them.
struct PatternRow {
    const char* errorTitle;
    std::size_t patternBytes;
    window::TextBox PanelControls::*pattern;
    window::ComboBox PanelControls::*ligne;    // null: none
    window::ComboBox PanelControls::*colonne;  // null: none
    bool (*send)(clsOPane& link, std::int16_t line, std::int16_t column, const ByteArray& pattern);
};

constexpr PatternRow kAffDataRow{"Affiche Trame Error",
                                 1,
                                 &PanelControls::txtAffDataPattern,
                                 &PanelControls::cmbAffDataLigne,
                                 nullptr,
                                 [](clsOPane& link, std::int16_t line, std::int16_t, const ByteArray& pattern) {
                                     return link.OPaneCmd_AffData(
                                         line, ByteArray(std::size_t{kBlockSize} * kBlockColumns, pattern[0]));
                                 }};
constexpr PatternRow kAffBloc1Row{"Affiche Bloc1 Error",
                                  8,
                                  &PanelControls::txtAffBloc1Pattern,
                                  &PanelControls::cmbAffBloc1Ligne,
                                  &PanelControls::cmbAffBloc1Colonne,
                                  [](clsOPane& link, std::int16_t line, std::int16_t column, const ByteArray& pattern) {
                                      return link.OPaneCmd_AffBloc1(line, column, pattern);
                                  }};
constexpr PatternRow kAffBloc4Row{"Affiche Bloc4 Error",
                                  32,
                                  &PanelControls::txtAffBloc4Pattern,
                                  &PanelControls::cmbAffBloc4Ligne,
                                  &PanelControls::cmbAffBloc4Colonne,
                                  [](clsOPane& link, std::int16_t line, std::int16_t column, const ByteArray& pattern) {
                                      return link.OPaneCmd_AffBloc4(line, column, pattern);
                                  }};
constexpr PatternRow kClearRow{"Clear Error",
                               1,
                               &PanelControls::txtClearPattern,
                               nullptr,
                               nullptr,
                               [](clsOPane& link, std::int16_t, std::int16_t, const ByteArray& pattern) {
                                   return link.OPaneCmd_Clear(pattern[0]);
                               }};
constexpr PatternRow kCadreRow{"Cadre Error",
                               1,
                               &PanelControls::txtCadrePattern,
                               nullptr,
                               nullptr,
                               [](clsOPane& link, std::int16_t, std::int16_t, const ByteArray& pattern) {
                                   return link.OPaneCmd_Cadre(pattern[0]);
                               }};

void sendPattern(frmOPane& form, const PatternRow& row) {
    const std::string& text = (form.*row.pattern).text();
    if (characterCount(text) != 2 * row.patternBytes)  // line breaks count
        return panel::refuse(panel_texts::kPatternLength, row.errorTitle);
    const auto pattern = hexBytes(text);
    if (!pattern)
        return panel::refuse(panel_texts::kPatternDigits, row.errorTitle);
    const auto position = [&form](window::ComboBox PanelControls::*box) {
        return static_cast<std::int16_t>(box == nullptr ? 0 : (form.*box).selected());
    };
    form.DisplayCommandStatus(row.send(*panel::Link(), position(row.ligne), position(row.colonne), *pattern));
}

}  // namespace

void frmOPane::cmdAffData_Click() {
    sendPattern(*this, kAffDataRow);
}

void frmOPane::cmdAffBloc1_Click() {
    sendPattern(*this, kAffBloc1Row);
}

void frmOPane::cmdAffBloc4_Click() {
    sendPattern(*this, kAffBloc4Row);
}

void frmOPane::cmdClear_Click() {
    sendPattern(*this, kClearRow);
}

void frmOPane::cmdCadre_Click() {
    sendPattern(*this, kCadreRow);
}

void frmOPane::cmdAfficheBMP_Click() {
    const panel::Link link;
    std::string strFileName;
    if (!link->OpenBMPFile(strFileName)) {
        DisplayCommandStatus(false);
        return;
    }
    ScreenImage arrImage{};
    DisplayCommandStatus(link->OPaneCmd_AfficheBMP(strFileName, arrImage));
}

}  // namespace opane
