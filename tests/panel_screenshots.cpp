// Makes the pictures of docs/panel.md, by scripts/screenshots.
// usage: panel_screenshots FOLDER

#include <QDir>
#include <QImage>
#include <QPainter>
#include <algorithm>

#include "forms/qt/theme.h"
#include "support/panel_window.h"
#include "tools/opane-panel/module_window.h"

namespace opane::test {
namespace {

/// What the pages show when somebody has worked with them.
void work(PanelWindow& window) {
    window.module.withModule([](simulator::SimulatedModule& module) {
        module.pressKey(5);
        for (std::size_t i = 0; i < module.state().systemEeprom.size(); ++i)
            module.state().systemEeprom[i] = static_cast<std::uint8_t>(i * 7 + i / 16);
    });
    window.click("cmdSynchronize");
    window.type("txtAffBloc4Pattern", "FF818181818181FFFF818181818181FF00183C7EFF3C3C3C00183C7EFF3C3C3C");
    window.choose("cmbAffBloc1Ligne", "3");
    window.choose("cmbAffBloc1Colonne", "7");
    window.choose("cmbAffBloc4Ligne", "5");
    window.choose("cmbAffBloc4Colonne", "2");
    window.type("txtEEPROMBaseAdress", "80");
    window.type("txtEEPROMLength", "30");
    window.type("txtWriteBacklightIntensity", "180");
    for (const char* const button :
         {"cmdAffData", "cmdAffBloc1", "cmdAffBloc4", "cmdCadre", "cmdReadStatus", "cmdVersion", "cmdReadADC",
          "cmdReadTemp", "cmdReadIR", "cmdReadVlcd", "optEEPROMType(1)", "cmdReadAllEEPROM", "cmdReadEEPROM",
          "optBacklightLumControl(0)", "cmdBacklightStatus", "cmdWriteVert", "cmdReadVert", "cmdReadSED1530"})
        window.click(button);
}

QImage pictureOf(QWidget& widget) {
    QTest::qWait(100);  // ms, for the display server to have shown what is painted
    return widget.grab().toImage();
}

QImage sideBySide(const QImage& left, const QImage& right) {
    QImage both(left.width() + 12 + right.width(), std::max(left.height(), right.height()), QImage::Format_ARGB32);
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawImage(0, 0, left);
    painter.drawImage(both.width() - right.width(), 0, right);
    return both;
}

void makePictures(const QDir& folder) {
    const auto add = [&folder](const std::string& name, const QImage& picture) {
        if (!picture.save(folder.filePath(QString::fromStdString(name + ".png"))))
            throw std::runtime_error("cannot write " + name + ".png");
    };
    qt::applyTheme(qt::Theme::light);
    PanelWindow window;
    BoxAnswers answers;
    work(window);
    panel_tool::ModuleWindow moduleWindow(window.module);
    moduleWindow.resize(moduleWindow.width(), window.view.height());
    moduleWindow.show();
    const auto both = [&] {
        window.tabs().setCurrentIndex(0);
        return sideBySide(pictureOf(window.view), pictureOf(moduleWindow));
    };
    add("panel", both());
    for (const char* const page : {"panel-status", "panel-read", "panel-eeprom", "panel-backlight", "panel-opane"}) {
        window.tabs().setCurrentIndex(window.tabs().currentIndex() + 1);
        add(page, pictureOf(window.view));
    }
    answers.look = [&](QMessageBox& box) {
        add("panel-box", pictureOf(box));
        box.reject();
    };
    window.choose("cmbBusType", "RS485");
    qt::applyTheme(qt::Theme::dark);
    add("panel-dark", both());
}

}  // namespace
}  // namespace opane::test

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    opane::test::makePictures(QDir(argv[1]));
    return 0;
}
