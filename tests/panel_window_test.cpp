#include <gtest/gtest.h>

#include <QFileDialog>
#include <QImage>
#include <QProgressBar>
#include <QPushButton>
#include <algorithm>
#include <memory>
#include <numeric>

#include "support/panel_window.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "tools/opane-panel/module_window.h"

// The real window, without a screen, on a simulated module behind a pseudo-terminal.

// Qt is not instrumented: the thread sanitizer does not see how its threads wait for each other.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "called_from_lib:libQt6Core.so\n"
           "called_from_lib:libQt6Gui.so\n"
           "race:libQt6Gui.so\n";
}

namespace opane::test {
namespace {

using simulator::SimulatedModule;
using Texts = std::vector<std::string>;

constexpr auto kOk = "Command OK";
constexpr auto kFailed = "Command Failed";

class QtEnvironment final : public testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application_ = std::make_unique<QApplication>(count_, arguments_);
    }
    void TearDown() override { application_.reset(); }

private:
    int count_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};
const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

/// Answers every file dialog with a file of the folder: "file" and what its filter asks for.
class FileAnswers {
public:
    explicit FileAnswers(const TemporaryFolder& folder) : folder_(folder) {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { answer(); });
        timer_.start(0);
    }
    bool cancels = false;
    Texts asked;  ///< title and filter of each

private:
    void answer() {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible())
            return;
        const QString filter = dialog->nameFilters().constFirst();
        asked.push_back(dialog->windowTitle().toStdString() + "|" + filter.toStdString());
        dialog->selectFile(QString::fromStdString(folder_ / "file") + filter.section(u'*', 1).chopped(1));
        QMetaObject::invokeMethod(dialog, cancels ? "reject" : "accept");
    }
    const TemporaryFolder& folder_;
    QTimer timer_;
};

class Window : public testing::Test {
protected:
    template <class Use>
    decltype(auto) state(Use use) {
        return window.module.withModule([&](SimulatedModule& module) { return use(module.state()); });
    }
    void fault(const char* order) {
        window.module.withModule([&](SimulatedModule& module) { module.fault(simulator::faultOrder(order)); });
    }
    void expectStatus(const char* status) { EXPECT_EQ(window.text("txtCommandStatus"), status); }

    TemporaryFolder folder;
    PanelWindow window;
    BoxAnswers boxes;
    FileAnswers files{folder};
};

TEST_F(Window, ShowsPatternsAndWritesTheStatus) {
    EXPECT_FALSE(window.showsTabs());
    window.click("cmdSynchronize");
    ASSERT_TRUE(window.showsTabs());
    EXPECT_EQ(window.text("txtComPortstatus"), "RS232, COM1, 9600 bauds");
    window.type("txtAffBloc1Pattern", "0102030405060708");
    window.choose("cmbAffBloc1Ligne", "7");
    window.choose("cmbAffBloc1Colonne", "14");
    window.click("cmdAffBloc1");
    expectStatus(kOk);
    EXPECT_EQ(state([](const auto& module) { return module.screen[63][14]; }), 8);
    window.click("optSens(1)");
    window.click("optLCD(0)");
    window.click("optCadre(1)");
    window.click("cmdWriteStatus");
    EXPECT_TRUE(state([](const auto& module) { return module.upsideDown && module.lcdOn && module.frameDrawn(); }));
    window.type("txtCadrePattern", "1");
    window.click("cmdCadre");
    EXPECT_EQ(boxes.titles, Texts{"Cadre Error"});
    window.click("cmdVersion");
    window.type("txtVersion", "typed");
    EXPECT_EQ(window.text("txtVersion"), "OPane V2.0") << "a box that only shows";
}

TEST_F(Window, ReadsSavesAndRestoresTheEeprom) {
    state([](auto& module) { std::iota(module.systemEeprom.begin(), module.systemEeprom.end(), std::uint8_t{0}); });
    window.click("cmdSynchronize");
    window.click("optEEPROMType(1)");
    window.click("cmdReadAllEEPROM");
    const std::string dump = window.text("txtEEPROMData");
    EXPECT_EQ(dump.substr(0, 49), "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \n");
    EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 64);
    window.click("cmdSaveBINFile");
    const std::string image = contentOf(folder / "file.bin");
    EXPECT_EQ(image.size(), 1024U);
    state([](auto& module) { module.systemEeprom.fill(0); });
    window.click("cmdWriteAllEEPROM");
    expectStatus(kOk);
    EXPECT_EQ(
        state([](const auto& module) { return std::string(module.systemEeprom.begin(), module.systemEeprom.end()); }),
        image);
    EXPECT_EQ(files.asked, (Texts{"Sauver fichier BIN pour EEPROM|Fichiers BIN (*.bin)",
                                  "Ouvrir fichier BIN pour EEPROM|Fichiers BIN (*.bin)"}));
    EXPECT_EQ(boxes.titles, Texts{});
    window.click("cmdSaveBINFile");
    EXPECT_EQ(boxes.titles, Texts{"Sauver fichier BIN pour EEPROM"}) << "asks before it replaces the file";
    expectStatus(kOk);
    files.cancels = true;
    window.click("cmdAfficheBMP");
    expectStatus(kFailed);
}

TEST_F(Window, ChangesSpeedAndConnection) {
    window.click("cmdSynchronize");
    window.choose("cmbBaudrate", "19200");
    window.click("cmdChangeBaudrate");
    EXPECT_EQ(window.text("txtComPortstatus"), "COM1, 19200 bauds");
    window.click("cmdResetModule");
    EXPECT_EQ(window.text("cmbBaudrate"), "9600");
    expectStatus(kOk);
    boxes.button = QMessageBox::Cancel;
    window.choose("cmbBusType", "RS485");
    EXPECT_EQ(window.text("cmbBusType"), "RS232");
    EXPECT_TRUE(window.showsTabs());
    boxes.button = QMessageBox::Ok;
    window.choose("cmbBusType", "RS485");
    EXPECT_EQ(window.text("cmbBusType"), "RS485");
    EXPECT_FALSE(window.showsTabs());
    EXPECT_EQ(boxes.titles, Texts(2, "Changement de Type de Bus"));
    EXPECT_EQ(boxes.texts[0],
              "Le module est synchronisé en ce moment. Cette action \nva réinitialiser l'état de la communication.");
}

TEST_F(Window, TakesNothingButCancelWhileItWorks) {
    window.click("cmdSynchronize");
    fault("delay:150xall");
    bool progressShown = false;
    window.during([&] {
        ASSERT_TRUE(window.form.busy());
        progressShown = window.view.findChild<QProgressBar*>("workProgress")->isVisible();
        QTest::keyClicks(window.view.findChild<QWidget*>("txtEEPROMLength"), "7");
        QTest::mouseClick(window.view.findChild<QWidget*>("cmdVersion"), Qt::LeftButton);
        QTest::keyClick(window.view.findChild<QWidget*>("cmbBusType"), Qt::Key_Down);
        QTest::keyClick(&window.tabs(), Qt::Key_Escape);
    });
    window.click("cmdReadAllEEPROM");
    EXPECT_TRUE(progressShown);
    EXPECT_FALSE(window.view.findChild<QProgressBar*>("workProgress")->isVisible());
    EXPECT_EQ(window.frames(), 1U) << "cancelled after the first block";
    EXPECT_EQ(window.text("txtEEPROMLength") + window.text("txtVersion"), "");
    EXPECT_EQ(window.text("cmbBusType"), "RS232");
    expectStatus(kFailed);
}

TEST_F(Window, ClosesWhenTheRunningHandlerHasEnded) {
    window.click("cmdSynchronize");
    fault("delay:100");
    bool wasOpen = false;
    int closed = 0;
    window.view.onClosed = [&closed] { ++closed; };
    window.during([&] {
        window.view.close();
        window.view.close();
        wasOpen = window.view.isVisible() && window.form.loaded() && closed == 0;
    });
    window.click("cmdReadVlcd");
    EXPECT_TRUE(wasOpen);
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(window.view.isVisible());
    EXPECT_FALSE(window.form.loaded());
    EXPECT_EQ(threadGlobals(), nullptr);
}

TEST_F(Window, IsUsedByTheKeyboardAlone) {
    window.view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window.view));
    auto& button = window.at<QPushButton>("cmdSynchronize");
    button.setFocus();
    QTest::keyClick(&button, Qt::Key_Return);
    ASSERT_TRUE(window.showsTabs());
    Texts order;
    for (int i = 0; i < 12; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(order, (Texts{"cmdSynchronize", "qt_tabwidget_tabbar", "cmdAffData", "txtAffDataPattern",
                            "cmbAffDataLigne", "cmdAffBloc1", "txtAffBloc1Pattern", "cmbAffBloc1Ligne",
                            "cmbAffBloc1Colonne", "cmdAffBloc4", "txtAffBloc4Pattern", "cmbAffBloc4Ligne"}));
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
    const std::pair<const char*, const char*> names[] = {{"txtAffBloc1Pattern", "Affiche Bloc1 Pattern"},
                                                         {"txtReadIR", "Read IR"},
                                                         {"txtReadBacklightADCHexa", "ADC Hexa"},
                                                         {"txtEEPROMLength", "Length"},
                                                         {"txtEEPROMDataSmall", "EEPROM"},
                                                         {"cmbComPort", "COM Port"},
                                                         {"cmbBaudrate", "Change Baudrate"},
                                                         {"optLCD(1)", "LCD OFF"}};
    for (const auto& [name, expected] : names)
        EXPECT_EQ(window.at<QWidget>(name).accessibleName().toStdString(), expected) << name;
}

TEST_F(Window, GivesSpareRoomToTheDumpAndLessToTheData) {
    const auto heights = [this] {
        std::vector<int> all;
        for (const char* const name : {"txtEEPROMData", "txtEEPROMDataSmall", "txtEEPROMLength"})
            all.push_back(window.at<QWidget>(name).height());
        return all;
    };
    window.click("cmdSynchronize");
    const auto before = heights();
    window.view.resize(window.view.width() + 100, window.view.height() + 400);
    QApplication::processEvents();
    const auto after = heights();
    EXPECT_GT(after[1], before[1] + 50);
    EXPECT_GT(after[0] - before[0], 2 * (after[1] - before[1]));
    EXPECT_EQ(after[2], before[2]);
}

TEST_F(Window, OfTheSimulatedModuleShowsItsScreenAndPressesItsKeys) {
    panel_tool::ModuleWindow module(window.module);
    window.click("cmdSynchronize");
    window.type("txtClearPattern", "FF");
    window.click("cmdClear");
    QTest::mouseClick(module.findChild<QWidget*>("key5"), Qt::LeftButton);
    window.click("cmdReadIR");
    EXPECT_EQ(window.text("txtReadIR"), "$7DF");
    const QImage picture = module.findChild<QWidget*>("moduleScreen")->grab().toImage();
    const QColor ink = picture.pixelColor(picture.rect().center());
    EXPECT_EQ(ink, QColor(simulator::kInk.red, simulator::kInk.green, simulator::kInk.blue));
}

/// What is typed in every box that takes it.
Texts typed(PanelWindow& window) {
    Texts texts;
    for (const char* const name : {"txtAffDataPattern", "txtAffBloc1Pattern", "txtAffBloc4Pattern", "txtClearPattern",
                                   "txtCadrePattern", "txtEEPROMBaseAdress", "txtEEPROMLength", "txtEEPROMDataSmall",
                                   "txtWriteBacklightIntensity", "txtSED1530Data"})
        texts.push_back(window.text(name));
    return texts;
}

struct LostModule {
    const char* name;
    const char* fault;
    int errors;
};

class EveryButton : public testing::TestWithParam<LostModule> {};

TEST_P(EveryButton, FailsInWordsAndLosesNothingTyped) {
    const TemporaryFolder folder;
    folder.write("file.bin", std::string(1024, '\0'));
    QImage(120, 64, QImage::Format_Mono).save(QString::fromStdString(folder / "file.bmp"));
    Texts buttons;
    {
        const PanelWindow window;
        for (const auto* const button : window.view.findChildren<QPushButton*>())
            buttons.push_back(button->objectName().toStdString());
    }
    for (const char* const local : {"workCancel", "cmdEEPROMClearText", "cmdSynchronize"})
        std::erase(buttons, local);
    ASSERT_EQ(buttons.size(), 28U);
    for (const std::string& name : buttons) {
        SCOPED_TRACE(name);
        PanelWindow window;
        BoxAnswers boxes;
        const FileAnswers files(folder);
        window.click("cmdSynchronize");
        window.type("txtAffBloc4Pattern", std::string(64, 'F').c_str());
        window.type("txtEEPROMBaseAdress", "0");
        window.type("txtEEPROMLength", "1");
        window.type("txtEEPROMDataSmall", "FF");
        window.type("txtWriteBacklightIntensity", "1");
        window.type("txtSED1530Data", "1");
        window.click("optBacklightLumControl(0)");
        window.choose("cmbBaudrate", "1200");
        const Texts before = typed(window);
        window.module.withModule(
            [](SimulatedModule& module) { module.fault(simulator::faultOrder(GetParam().fault)); });
        window.time.leaps = GetParam().errors == 0;  // what vanishes needs its moment
        window.click(name.c_str());
        EXPECT_FALSE(window.form.busy());
        EXPECT_TRUE(window.text("txtCommandStatus") == kFailed ||
                    window.text("txtSystemStatus") == "System Not Synchronized");
        EXPECT_EQ(typed(window), before);
        EXPECT_EQ(std::count(boxes.titles.begin(), boxes.titles.end(), "OPane Error"), GetParam().errors);
        if (GetParam().errors > 0) {
            EXPECT_EQ(boxes.texts.back().find("Error 57: "), 0U) << boxes.texts.back();
            // Not the device again: another terminal of this machine may have its number by now.
            window.services->portMap = [](std::int16_t) { return std::string(); };
            window.click("cmdSynchronize");
            EXPECT_FALSE(window.showsTabs());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfALostModule, EveryButton,
                         testing::Values(LostModule{"silent", "silent", 0}, LostModule{"vanished", "unplug", 1}),
                         [](const auto& row) { return std::string(row.param.name); });

struct ProgramCase {
    const char* name;
    Texts words;
    int status;
    const char* said;
};

class PanelProgram : public testing::TestWithParam<ProgramCase> {};

TEST_P(PanelProgram, SaysWhatIsWrong) {
    Texts words{"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM", OPANE_PANEL_PROGRAM};
    words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
    const ProgramEnd end = runProgram(words);
    EXPECT_EQ(end.status, GetParam().status);
    EXPECT_NE((end.status == 0 ? end.output : end.errors).find(GetParam().said), std::string::npos) << end.errors;
}

const ProgramCase kProgramCases[] = {
    {"help", {"--help"}, 0, "--simulate"},
    {"two_modules", {"--simulate", "--device", "/dev/null"}, 2, "--device excludes --simulate"},
    {"empty_device", {"--device2", ""}, 2, "opane-panel: --device2: is empty"},
    {"log_level", {"--log-level", "4"}, 2, "--log-level: \"4\" is no number from 0 to 3"},
    {"theme", {"--theme", "pink"}, 2, "--theme"},
    {"no_display", {"--simulate"}, 3, "opane-panel: there is no display"},
};

INSTANTIATE_TEST_SUITE_P(Called, PanelProgram, testing::ValuesIn(kProgramCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace opane::test
