#include <gtest/gtest.h>

#include <set>

#include "support/panel_bench.h"

namespace opane::test {
namespace {

TEST(PanelLayout, NamesNothingTwiceAndLaysNothingOverAnother) {
    std::set<std::string> names;
    std::set<std::tuple<const window::Container*, int, int>> taken;
    forEachControl(frmOPane(), [&](const window::Control& control) {
        EXPECT_TRUE(names.insert(control.name()).second) << control.name();
        const auto place = control.place();
        for (int row = place.row; row < place.row + place.rowSpan; ++row)
            for (int column = place.column; column < place.column + place.columnSpan; ++column)
                EXPECT_TRUE(taken.emplace(&control.container(), row, column).second) << control.name();
    });
}

/// What the choices are for the next synchronisation.
std::string chosen() {
    const Globals& globals = *threadGlobals();
    return globals.gstrBusType + " " + std::to_string(globals.gintCommPort) + " " +
           std::to_string(globals.gintNodeNumber);
}

std::string shownState(PanelBench& bench) {
    return bench.panel.txtSystemStatus.text() + "|" + bench.panel.txtComPortstatus.text() + "|" +
           (bench.pagesShown() ? bench.panel.cmbBaudrate.text() : "no pages");
}

TEST(PanelConnection, StartsWithTheDefaultsAndEndsWithTheWindow) {
    PanelBench bench;
    EXPECT_EQ(shownState(bench), "||no pages");
    EXPECT_EQ(chosen(), "RS232 1 3");
    EXPECT_EQ(bench.line.portEvents, Texts{"open 1 9600,N,8,1"});
    bench.panel.userCloses();
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    EXPECT_EQ(threadGlobals(), nullptr);
}

TEST(PanelConnection, SynchronisesOverTheChosenBusPortAndNode) {
    PanelBench bench({.node = 1, .bus = simulator::Bus::rs485});
    bench.panel.cmbBusType.userSelects(1);
    bench.panel.cmbComPort.userSelects(1);
    bench.panel.cmbNodeNumber.userSelects(1);
    bench.services->eventHook = [&] { EXPECT_FALSE(bench.panel.cmdSynchronize.enabled()); };
    bench.synchronize();
    EXPECT_EQ(shownState(bench), "System Synchronized|RS485, COM2, 9600 bauds|9600");
    std::string lists;
    for (const auto* const list :
         {&bench.panel.cmbAffDataLigne, &bench.panel.cmbAffBloc1Ligne, &bench.panel.cmbAffBloc4Ligne,
          &bench.panel.cmbAffBloc1Colonne, &bench.panel.cmbAffBloc4Colonne})
        lists += list->text() + "-" + list->entries().back() + " ";
    EXPECT_EQ(lists, "0-7 0-7 0-6 0-14 0-13 ");
}

TEST(PanelConnection, AsksBeforeANewChoiceDropsIt) {
    const std::tuple<window::ComboBox PanelControls::*, int, std::string, std::string, std::string> choices[] = {
        {&PanelControls::cmbBusType, 1, "Changement de Type de Bus", "RS232", "RS485 1 3"},
        {&PanelControls::cmbComPort, 1, "Changement de COM Port", "1", "RS232 2 3"},
        {&PanelControls::cmbNodeNumber, 0, "Changement de Node", "3", "RS232 1 0"}};
    for (const auto& [member, index, title, before, after] : choices) {
        SCOPED_TRACE(title);
        SynchronizedPanel bench;
        window::ComboBox& box = bench.panel.*member;
        const std::string question = title +
                                     "|Le module est synchronisé en ce moment. Cette action \r\n"
                                     "va réinitialiser l'état de la communication.|Cancel";
        box.userSelects(box.selected());
        bench.answer = MessageBoxAnswer::cancel;
        box.userSelects(index);
        EXPECT_EQ(box.text(), before);
        EXPECT_TRUE(bench.pagesShown() && threadLink()->IsSynchronized());
        bench.answer = MessageBoxAnswer::ok;
        box.userSelects(index);
        EXPECT_EQ(bench.shown(), (Texts{question, question}));
        EXPECT_FALSE(threadLink()->IsOpen());
        EXPECT_EQ(shownState(bench), "||no pages");
        EXPECT_EQ(chosen(), after);
    }
}

TEST(PanelConnection, FollowsTheSpeedAndAlwaysSynchronisesAt9600) {
    SynchronizedPanel bench;
    bench.panel.cmbBaudrate.userSelects(4);
    bench.click("cmdChangeBaudrate");
    EXPECT_EQ(shownState(bench), "System Synchronized|COM1, 19200 bauds|19200");
    EXPECT_EQ(bench.status(), "");
    bench.click("cmdResetModule");
    EXPECT_EQ(shownState(bench), "System Synchronized|COM1, 9600 bauds|9600");
    EXPECT_EQ(bench.status(), "Command OK");
    EXPECT_EQ(bench.sent(), (Texts{"0E FE00 ", "07 0000 "}));

    threadLink()->Baudrate(57600);
    bench.panel.PrepareWindow(1);
    EXPECT_EQ(bench.panel.cmbBaudrate.text(), "38400");  // the last one when the link's is not in the list
    bench.synchronize();
    EXPECT_EQ(shownState(bench), "System Synchronized|RS232, COM1, 9600 bauds|9600");
    bench.module.fault({.fault = simulator::Fault::ignoreHandshake});
    bench.click("cmdSynchronize");
    EXPECT_EQ(shownState(bench), "System Not Synchronized||no pages");
    EXPECT_EQ(threadLink()->Timeout(), 1000);
    bench.line.missingPort = 2;
    bench.panel.cmbComPort.userSelects(1);
    EXPECT_EQ(bench.press("cmdSynchronize").back().find("OPane Error|Error 8018: "), 0U);
    EXPECT_EQ(shownState(bench), "System Not Synchronized||no pages");
    EXPECT_TRUE(bench.panel.cmdSynchronize.enabled());
    EXPECT_EQ(threadLink()->Timeout(), 1000);
}

TEST(PanelConnection, RefusedRateChangeOrResetGoesBackToTheDefaults) {
    for (const auto* const button : {"cmdChangeBaudrate", "cmdResetModule"}) {
        PanelBench bench({.node = 0});
        bench.panel.cmbNodeNumber.userSelects(0);
        bench.synchronize();
        bench.refuseCommand(0);
        bench.panel.cmbBaudrate.userSelects(0);
        bench.click(button);
        EXPECT_EQ(shownState(bench), "System Not Synchronized||no pages") << button;
        EXPECT_EQ(bench.panel.cmbNodeNumber.text(), "3");
        EXPECT_EQ(chosen(), "RS232 1 3");
        EXPECT_EQ(bench.boxes.back().substr(0, 19), "Changement de Node|");
    }
}

TEST(PanelControls, IgnoreThePersonWhileHiddenDisabledReadOnlyOrNotLoaded) {
    PanelBench bench;
    int reported = 0;
    bench.panel.txtClearPattern.observer(
        [&](window::Change what) { reported += what == window::Change::text ? 1 : 0; });
    bench.type("txtClearPattern", "hidden");
    bench.panel.FrameSSTab.visible(true);
    bench.panel.pageAffiche.enabled(false);
    bench.type("txtClearPattern", "disabled");
    EXPECT_EQ(bench.text("txtClearPattern"), "00");
    EXPECT_EQ(reported, 2);  // so that a view puts its own text back
    bench.type("txtVersion", "typed");
    EXPECT_EQ(bench.text("txtVersion"), "");
    bench.type("txtEEPROMDataSmall", "1\n2\r\n3");
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), "1\r\n2\r\n3");
    bench.panel.userCloses();
    EXPECT_EQ(bench.press("cmdSynchronize"), Texts{""});
}

TEST(PanelControls, TakeNothingButCancelAndCloseWhileAHandlerRuns) {
    SynchronizedPanel bench;
    bench.services->eventHook = [&] {
        EXPECT_TRUE(bench.panel.busy());
        bench.click("optSens(1)", "cmdVersion");
        bench.type("txtClearPattern", "FF");
        bench.panel.cmbNodeNumber.userSelects(0);
        bench.panel.userCloses();
        bench.panel.userCancels();
    };
    EXPECT_EQ(bench.press("cmdReadAllEEPROM", {"txtClearPattern", "txtVersion"}), (Texts{"00", "", "Command Failed"}));
    EXPECT_EQ(bench.panel.optSens.selected(), window::OptionGroup::kNone);
    EXPECT_EQ(bench.panel.cmbNodeNumber.text(), "3");
    EXPECT_FALSE(bench.panel.busy() || bench.panel.progress() || bench.panel.loaded());
}

TEST(PanelControls, ShowWhatAHandlerRaisesAndGoOn) {
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[] { throw RuntimeError(ErrorNumber::fileNotFound, "gone"); }, "Error 53: gone"},
        {[] { throw std::bad_alloc(); }, "Error 7: out of memory"},
        {[] { throw std::runtime_error("odd"); }, "Error without a number: odd"},
        {[] { throw 1; }, "Error without a number or a text"},
    };
    SynchronizedPanel bench;
    for (const auto& [raise, text] : cases) {
        bench.panel.cmdVersion.onClick = raise;
        EXPECT_EQ(bench.press("cmdVersion"), (Texts{"Command Failed", "OPane Error|" + text}));
    }
}

}  // namespace
}  // namespace opane::test
