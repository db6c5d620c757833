#include <gtest/gtest.h>

#include <QFileDialog>
#include <QImage>
#include <QProgressBar>
#include <QPushButton>
#include <algorithm>

#include "support/panel_window.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "tools/opane-panel/module_window.h"

// Qt is not instrumented: the thread sanitizer does not see how its threads wait for each other.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "called_from_lib:libQt6Core.so\n"
           "called_from_lib:libQt6Gui.so\n"
           "race:libQt6Gui.so\n";
}

namespace opane::test {
namespace {

using Texts = std::vector<std::string>;

/// Without a screen.
class Window : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static int count = 1;
        static char name[] = "test";
        static char* arguments[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = new QApplication(count, arguments);
    }
    static void TearDownTestSuite() { delete application; }

    Window() {
        QObject::connect(&fileTimer, &QTimer::timeout, &fileTimer, [this] { answerFileDialog(); });
        fileTimer.start(0);
    }
    /// With the file of the folder that is called "file" and what the dialog's filter asks for; or not at all.
    void answerFileDialog() {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible())
            return;
        const QString filter = dialog->nameFilters().constFirst();
        asked.push_back((dialog->windowTitle() + u'|' + filter).toStdString());
        dialog->selectFile(QString::fromStdString(folder / "file") + filter.section(u'*', 1).chopped(1));
        QMetaObject::invokeMethod(dialog, cancelsFiles ? "reject" : "accept");
    }

    static inline QApplication* application = nullptr;
    TemporaryFolder folder;
    PanelWindow window;
    BoxAnswers boxes;
    QTimer fileTimer;
    bool cancelsFiles = false;
    Texts asked;  // title and filter of each file dialog
};

TEST_F(Window, PassesOnWhatIsTypedChosenAndClicked) {
    window.click("cmdSynchronize");
    window.type("txtAffBloc1Pattern", "0102030405060708");
    window.choose("cmbAffBloc1Ligne", "7");
    window.click("cmdAffBloc1");
    EXPECT_EQ(window.text("txtCommandStatus"), "Command OK");
    window.click("optSens(1)");
    window.click("cmdWriteStatus");
    window.module.withModule([](simulator::SimulatedModule& module) {
        EXPECT_EQ(module.state().screen[63][0], 8);
        EXPECT_TRUE(module.state().upsideDown);
    });
    panel_tool::ModuleWindow module(window.module);
    QTest::mouseClick(module.findChild<QWidget*>("key5"), Qt::LeftButton);
    window.click("optLCD(0)");
    window.click("cmdWriteStatus");
    window.type("txtClearPattern", "FF");
    window.click("cmdClear");
    const QColor ink(simulator::kInk.red, simulator::kInk.green, simulator::kInk.blue);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        const QImage picture = module.findChild<QWidget*>("moduleScreen")->grab().toImage();
        return picture.pixelColor(picture.rect().center()) == ink;
    }));
    window.click("cmdReadIR");
    window.type("txtReadIR", "typed");
    EXPECT_EQ(window.text("txtReadIR"), "$7DF") << "a box that only shows";

    window.choose("cmbBusType", "RS485");
    EXPECT_EQ(window.text("cmbBusType"), "RS485");
    EXPECT_FALSE(window.showsTabs());
    EXPECT_EQ(boxes.said, Texts{"Changement de Type de Bus|Le module est synchronisé en ce moment. Cette action \n"
                                "va réinitialiser l'état de la communication."});
}

TEST_F(Window, AsksForFilesAndShowsLines) {
    window.click("cmdSynchronize");
    window.click("cmdReadAllEEPROM");
    const std::string dump = window.text("txtEEPROMData");
    EXPECT_EQ(dump.substr(0, 49), "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF \n");
    EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 32);
    window.click("cmdSaveBINFile");
    EXPECT_EQ(contentOf(folder / "file.bin"), std::string(1024, '\xFF'));
    EXPECT_EQ(boxes.said, Texts{});
    window.click("cmdSaveBINFile");
    EXPECT_EQ(boxes.said.size(), 1U) << "asks before it replaces the file";
    cancelsFiles = true;
    window.click("cmdWriteAllEEPROM");
    EXPECT_EQ(window.text("txtCommandStatus"), "Command Failed");
    EXPECT_EQ(asked.front(), "Sauver fichier BIN pour EEPROM|Fichiers BIN (*.bin)");
    EXPECT_EQ(asked.back(), "Ouvrir fichier BIN pour EEPROM|Fichiers BIN (*.bin)");
}

TEST_F(Window, TakesNothingButCancelAndCloseWhileItWorks) {
    window.click("cmdSynchronize");
    window.module.withModule(
        [](simulator::SimulatedModule& module) { module.fault(simulator::faultOrder("delay:150xall")); });
    int closed = 0;
    window.view.onClosed = [&closed] { ++closed; };
    auto* const progress = window.view.findChild<QProgressBar*>("workProgress");
    QTimer meanwhile;  // while the module's first answer is waited for
    QObject::connect(&meanwhile, &QTimer::timeout, &meanwhile, [&] {
        if (window.frames() == 0)
            return;
        meanwhile.stop();
        EXPECT_TRUE(progress->isVisible());
        QTest::keyClicks(window.view.findChild<QWidget*>("txtEEPROMLength"), "7");
        QTest::keyClick(window.view.findChild<QWidget*>("cmbBusType"), Qt::Key_Down);
        QTest::keyClick(&window.tabs(), Qt::Key_Escape);
        window.view.close();
        window.view.close();
        EXPECT_TRUE(window.view.isVisible() && window.form.loaded() && closed == 0);
    });
    meanwhile.start(0);
    window.click("cmdReadAllEEPROM");
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(window.view.isVisible() || window.form.loaded() || progress->isVisible());
    EXPECT_EQ(window.frames(), 1U) << "cancelled after the first block";
    EXPECT_EQ(window.text("txtEEPROMLength") + window.text("cmbBusType"), "RS232");
}

TEST_F(Window, IsUsedByTheKeyboardAlone) {
    window.view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window.view));
    auto& button = window.at<QPushButton>("cmdSynchronize");
    button.setFocus();
    QTest::keyClick(&button, Qt::Key_Return);
    ASSERT_TRUE(window.showsTabs());
    Texts order;
    for (int i = 0; i < 8; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(order, (Texts{"cmdSynchronize", "qt_tabwidget_tabbar", "cmdAffData", "txtAffDataPattern",
                            "cmbAffDataLigne", "cmdAffBloc1", "txtAffBloc1Pattern", "cmbAffBloc1Ligne"}));
    auto& user = window.at<QAbstractButton>("optEEPROMType(0)");
    user.setFocus();
    QTest::keyClick(&user, Qt::Key_Down);
    EXPECT_EQ(window.form.optEEPROMType.selected(), 1);
    window.at<QWidget>("cmbNodeNumber").setFocus();
    boxes.look = [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); };
    QTest::keyClick(&window.at<QWidget>("cmbNodeNumber"), Qt::Key_Up);
    EXPECT_EQ(window.text("cmbNodeNumber"), "3") << "Escape cancels";
}

TEST_F(Window, NamesEveryWidgetForAReader) {
    Texts names;
    for (const char* const widget : {"txtAffBloc1Pattern", "txtReadIR", "txtReadBacklightADCHexa", "txtEEPROMDataSmall",
                                     "cmbBaudrate", "optLCD(1)"})
        names.push_back(window.at<QWidget>(widget).accessibleName().toStdString());
    EXPECT_EQ(names, (Texts{"Affiche Bloc1 Pattern", "Read IR", "ADC Hexa", "EEPROM", "Change Baudrate", "LCD OFF"}));
}

TEST_F(Window, GivesSpareRoomToTheDumpAndLessToTheData) {
    window.click("cmdSynchronize");
    const auto height = [this](const char* name) { return window.at<QWidget>(name).height(); };
    const int dump = height("txtEEPROMData");
    const int data = height("txtEEPROMDataSmall");
    window.view.resize(window.view.width() + 100, window.view.height() + 400);
    QApplication::processEvents();
    EXPECT_GT(height("txtEEPROMDataSmall"), data + 50);
    EXPECT_GT(height("txtEEPROMData") - dump, 2 * (height("txtEEPROMDataSmall") - data));
}

TEST(PanelProgram, SaysWhatIsWrong) {
    const std::tuple<std::string, int, const char*> rows[] = {
        {"--device2 ''", 2, "opane-panel: --device2: is empty"},
        {"--theme pink", 2, "\"pink\" is no theme"},
        {"--simulate", 3, "opane-panel: there is no display"},
    };
    for (const auto& [options, status, said] : rows) {
        const ProgramEnd end = runProgram({"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM",
                                           "sh", "-c", OPANE_PANEL_PROGRAM " " + options});
        EXPECT_EQ(end.status, status);
        EXPECT_PRED2(holds, end.errors, said);
    }
}

}  // namespace
}  // namespace opane::test
