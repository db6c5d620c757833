// Makes the pictures of docs/panel.md, by scripts/screenshots.
// usage: panel_screenshots FOLDER

#include <QDir>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <iostream>
#include <utility>

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
    window.click("cmdAffData");
    window.choose("cmbAffBloc1Ligne", "3");
    window.choose("cmbAffBloc1Colonne", "7");
    window.click("cmdAffBloc1");
    window.choose("cmbAffBloc4Ligne", "5");
    window.choose("cmbAffBloc4Colonne", "2");
    window.click("cmdAffBloc4");
    window.click("cmdCadre");
    for (const char* const button : {"cmdReadStatus", "cmdVersion", "cmdReadADC", "cmdReadTemp", "cmdReadIR",
                                     "cmdReadVlcd", "optEEPROMType(1)", "cmdReadAllEEPROM"})
        window.click(button);
    window.type("txtEEPROMBaseAdress", "80");
    window.type("txtEEPROMLength", "30");
    window.click("cmdReadEEPROM");
    window.click("optBacklightLumControl(0)");
    window.click("cmdBacklightStatus");
    window.type("txtWriteBacklightIntensity", "180");
    window.click("cmdWriteVert");
    window.click("cmdReadVert");
    window.click("cmdReadSED1530");
}

class Album {
public:
    explicit Album(QDir folder) : folder_(std::move(folder)) {}

    static QImage pictureOf(QWidget& widget) {
        QTest::qWait(kSettleMs);
        return widget.grab().toImage();
    }
    void add(const char* name, const QImage& picture) const {
        const QString file = folder_.filePath(QLatin1String(name) + QStringLiteral(".png"));
        if (!picture.save(file))
            throw std::runtime_error("cannot write " + file.toStdString());
    }

private:
    static constexpr int kSettleMs = 100;  // for the display server to have shown what is painted
    QDir folder_;
};

QImage sideBySide(const QImage& left, const QImage& right) {
    constexpr int kGap = 12;
    QImage both(left.width() + kGap + right.width(), std::max(left.height(), right.height()), QImage::Format_ARGB32);
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawImage(0, 0, left);
    painter.drawImage(left.width() + kGap, 0, right);
    return both;
}

void makePictures(const Album& album) {
    qt::applyTheme(qt::Theme::light);
    PanelWindow window;
    BoxAnswers answers;
    work(window);
    panel_tool::ModuleWindow moduleWindow(window.module);
    moduleWindow.resize(moduleWindow.width(), window.view.height());
    moduleWindow.show();
    const auto both = [&] {
        window.tabs().setCurrentIndex(0);
        return sideBySide(Album::pictureOf(window.view), Album::pictureOf(moduleWindow));
    };
    album.add("panel", both());
    const char* const otherPages[] = {"panel-status", "panel-read", "panel-eeprom", "panel-backlight", "panel-opane"};
    for (const char* const page : otherPages) {
        window.tabs().setCurrentIndex(window.tabs().currentIndex() + 1);
        album.add(page, Album::pictureOf(window.view));
    }
    answers.look = [&](QMessageBox& box) { album.add("panel-box", Album::pictureOf(box)); };
    answers.button = QMessageBox::Cancel;
    window.choose("cmbBusType", "RS485");
    qt::applyTheme(qt::Theme::dark);
    album.add("panel-dark", both());
}

}  // namespace
}  // namespace opane::test

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (argc != 2 || !QDir(argv[1]).exists()) {
        std::cerr << "usage: panel_screenshots FOLDER\n";
        return 2;
    }
    opane::test::makePictures(opane::test::Album(QDir(argv[1])));
    return 0;
}
