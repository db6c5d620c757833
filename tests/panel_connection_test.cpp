#include <gtest/gtest.h>

#include <set>

#include "support/panel_bench.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Texts = std::vector<std::string>;

void checkNamesAndCells(const window::Container& container, std::set<std::string>& names) {
    std::set<std::pair<int, int>> taken;
    for (const window::Control* const control : container.controls()) {
        EXPECT_TRUE(names.insert(control->name()).second) << control->name();
        const auto place = control->place();
        for (int row = place.row; row < place.row + place.rowSpan; ++row) {
            for (int column = place.column; column < place.column + place.columnSpan; ++column)
                EXPECT_TRUE(taken.emplace(row, column).second) << control->name();
        }
        if (const auto* const inner = dynamic_cast<const window::Container*>(control))
            checkNamesAndCells(*inner, names);
    }
}

TEST(PanelLayout, NamesNothingTwiceAndLaysNothingOverAnother) {
    std::set<std::string> names;
    checkNamesAndCells(frmOPane(), names);
}

TEST(PanelConnection, StartsWithTheDefaults) {
    PanelBench bench;
    EXPECT_FALSE(bench.pagesShown());
    EXPECT_EQ(bench.panel.txtSystemStatus.text() + bench.panel.txtComPortstatus.text() + bench.status(), "");
    EXPECT_EQ(bench.panel.cmbNodeNumber.text(), "3");
    EXPECT_EQ(bench.panel.cmbComPort.text(), "1");
    EXPECT_EQ(bench.panel.cmbBusType.text(), "RS232");
    EXPECT_EQ(threadGlobals()->gintNodeNumber, 3);
    EXPECT_EQ(threadGlobals()->gintCommPort, 1);
    EXPECT_EQ(threadGlobals()->gstrBusType, "RS232");
    EXPECT_EQ(threadLink()->CommunicationType(), "RS232");
    EXPECT_EQ(bench.line.portEvents, Texts{"open 1 9600,N,8,1"});
    EXPECT_TRUE(bench.boxes.empty());

    bench.panel.userCloses();
    EXPECT_EQ(bench.line.portEvents.back(), "close");
    EXPECT_EQ(threadGlobals(), nullptr);
}

TEST(PanelConnection, SynchronisesOverTheChosenBusPortAndNode) {
    PanelBench bench({.node = 1, .bus = simulator::Bus::rs485});
    bench.panel.cmbBusType.userSelects(1);
    bench.panel.cmbComPort.userSelects(1);
    bench.panel.cmbNodeNumber.userSelects(1);
    EXPECT_TRUE(bench.boxes.empty());
    bench.synchronize();
    EXPECT_EQ(bench.panel.txtComPortstatus.text(), "RS485, COM2, 9600 bauds");
    EXPECT_TRUE(bench.pagesShown());
    EXPECT_EQ(bench.panel.cmbBaudrate.text(), "9600");
    const std::pair<window::ComboBox&, std::string> lists[] = {{bench.panel.cmbAffDataLigne, "7"},
                                                               {bench.panel.cmbAffBloc1Ligne, "7"},
                                                               {bench.panel.cmbAffBloc4Ligne, "6"},
                                                               {bench.panel.cmbAffBloc1Colonne, "14"},
                                                               {bench.panel.cmbAffBloc4Colonne, "13"}};
    for (const auto& [list, last] : lists) {
        EXPECT_EQ(list.entries().back(), last) << list.name();
        EXPECT_EQ(list.text(), "0") << list.name();
    }
    EXPECT_EQ(bench.status(), "");
}

struct ChoiceCase {
    const char* name;
    window::ComboBox PanelControls::*box;
    const char* title;
    const char* before;
    const char* after;
    int index;
};

class PanelChoice : public testing::TestWithParam<ChoiceCase> {};

TEST_P(PanelChoice, AsksBeforeItDropsTheConnection) {
    SynchronizedPanel bench;
    window::ComboBox& box = bench.panel.*GetParam().box;
    const Texts question{std::string(GetParam().title) +
                         "|Le module est synchronisé en ce moment. Cette action \r\nva réinitialiser l'état de la "
                         "communication.|Cancel"};
    bench.answer = MessageBoxAnswer::cancel;
    box.userSelects(GetParam().index);
    EXPECT_EQ(bench.shown(), question);
    EXPECT_EQ(box.text(), GetParam().before);
    EXPECT_TRUE(bench.pagesShown());
    EXPECT_TRUE(threadLink()->IsSynchronized());

    bench.answer = MessageBoxAnswer::ok;
    box.userSelects(GetParam().index);
    EXPECT_EQ(bench.shown(), question);
    EXPECT_FALSE(threadLink()->IsOpen());
    EXPECT_FALSE(bench.pagesShown());
    EXPECT_EQ(bench.panel.txtSystemStatus.text() + bench.panel.txtComPortstatus.text(), "");
    const Globals& globals = *threadGlobals();
    EXPECT_EQ(globals.gstrBusType + std::to_string(globals.gintCommPort) + std::to_string(globals.gintNodeNumber),
              GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Boxes, PanelChoice,
    testing::Values(ChoiceCase{"bus", &PanelControls::cmbBusType, "Changement de Type de Bus", "RS232", "RS48513", 1},
                    ChoiceCase{"port", &PanelControls::cmbComPort, "Changement de COM Port", "1", "RS23223", 1},
                    ChoiceCase{"node", &PanelControls::cmbNodeNumber, "Changement de Node", "3", "RS23210", 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PanelConnection, FailedSynchronisationHidesThePages) {
    SynchronizedPanel bench;
    bench.module.fault({.fault = Fault::ignoreHandshake});
    bench.panel.cmdSynchronize.click();
    EXPECT_FALSE(bench.pagesShown());
    EXPECT_EQ(bench.panel.txtSystemStatus.text(), "System Not Synchronized");
    EXPECT_EQ(bench.panel.txtComPortstatus.text(), "");
    EXPECT_TRUE(bench.panel.cmdSynchronize.enabled());
    EXPECT_EQ(threadLink()->Timeout(), 1000);
    EXPECT_EQ(bench.status(), "");
}

TEST(PanelConnection, AlwaysSynchronisesAt9600) {
    SynchronizedPanel bench;
    bench.panel.cmbBaudrate.userSelects(5);
    bench.click("cmdChangeBaudrate");
    EXPECT_EQ(bench.panel.txtComPortstatus.text(), "COM1, 38400 bauds");
    EXPECT_EQ(bench.status(), "");
    EXPECT_TRUE(bench.pagesShown());
    bench.module.state().powerOn();
    bench.synchronize();
    EXPECT_EQ(bench.panel.txtComPortstatus.text(), "RS232, COM1, 9600 bauds");
    EXPECT_EQ(bench.panel.cmbBaudrate.text(), "9600");

    threadLink()->Baudrate(57600);
    bench.panel.PrepareWindow(1);
    EXPECT_EQ(bench.panel.cmbBaudrate.text(), "38400");  // the last one when the link's is not in the list
}

TEST(PanelConnection, ResetBringsTheModuleBackTo9600) {
    SynchronizedPanel bench;
    bench.panel.cmbBaudrate.userSelects(4);
    bench.click("cmdChangeBaudrate");
    bench.click("cmdResetModule");
    EXPECT_EQ(bench.sent(), (Texts{"0E FE00 ", "07 0000 "}));
    EXPECT_EQ(bench.panel.cmbBaudrate.text(), "9600");
    EXPECT_EQ(bench.panel.txtComPortstatus.text(), "COM1, 9600 bauds");
    EXPECT_EQ(bench.status(), "Command OK");
}

TEST(PanelConnection, FailedRateChangeOrResetGoesBackToTheDefaults) {
    for (const auto* const button : {"cmdChangeBaudrate", "cmdResetModule"}) {
        PanelBench bench({.node = 0});
        bench.panel.cmbNodeNumber.userSelects(0);
        bench.synchronize();
        bench.panel.cmbBaudrate.userSelects(0);
        bench.module.fault({.fault = Fault::silent});
        bench.click(button);
        EXPECT_FALSE(bench.pagesShown()) << button;
        EXPECT_EQ(bench.panel.txtSystemStatus.text(), "System Not Synchronized");
        EXPECT_EQ(bench.panel.txtComPortstatus.text() + bench.status(), "");
        EXPECT_EQ(bench.panel.cmbNodeNumber.text(), "3");
        EXPECT_EQ(threadGlobals()->gintNodeNumber, 3);
        EXPECT_TRUE(bench.boxes.empty()) << button;
    }
}

TEST(PanelConnection, ARefusedRateChangeSaysSoAlsoAfterItsQuestion) {
    PanelBench bench({.node = 0});
    bench.panel.cmbNodeNumber.userSelects(0);
    bench.synchronize();
    bench.module.fault({.fault = Fault::typeZero, .count = simulator::kForEver});  // the handshakes are answered
    bench.panel.cmbBaudrate.userSelects(0);
    bench.click("cmdChangeBaudrate");
    ASSERT_FALSE(bench.boxes.empty());
    EXPECT_EQ(bench.boxes.back().substr(0, 19), "Changement de Node|");
    EXPECT_EQ(bench.panel.txtSystemStatus.text(), "System Not Synchronized");
    EXPECT_FALSE(bench.pagesShown());
}

TEST(PanelConnection, TakesNoInputAndDoesNotCloseWhileItSynchronises) {
    PanelBench bench;
    bool nodeStayed = true;
    bool couldPress = false;
    bench.services->eventHook = [&] {
        bench.panel.cmbNodeNumber.userSelects(0);
        bench.panel.cmdSynchronize.click();
        bench.panel.userCloses();
        nodeStayed = nodeStayed && bench.panel.cmbNodeNumber.selected() == 3;
        couldPress = couldPress || bench.panel.cmdSynchronize.enabled();
    };
    bench.panel.cmdSynchronize.click();
    EXPECT_TRUE(nodeStayed);
    EXPECT_FALSE(couldPress);
    EXPECT_EQ(bench.module.handshakes(), 1U);
    EXPECT_EQ(bench.panel.txtSystemStatus.text(), "System Synchronized");
    EXPECT_FALSE(bench.panel.loaded());
}

void expectDisconnected(PanelBench& bench, const std::string& error) {
    const Texts shown = bench.shown();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].substr(0, error.size()), error);
    EXPECT_FALSE(bench.pagesShown());
    EXPECT_TRUE(bench.panel.cmdSynchronize.enabled());
    EXPECT_EQ(threadLink()->Timeout(), 1000);
    EXPECT_FALSE(threadLink()->IsSynchronized());
}

TEST(PanelErrors, MissingPortIsShownOnceAndAnotherCanBeTried) {
    PanelBench bench;
    bench.line.missingPort = 2;
    bench.panel.cmbComPort.userSelects(1);
    bench.panel.cmdSynchronize.click();
    expectDisconnected(bench, "OPane Error|Error 8018: ");
    bench.panel.cmbComPort.userSelects(0);
    bench.synchronize();
    EXPECT_TRUE(bench.pagesShown());
}

TEST(PanelErrors, VanishedDeviceEndsTheConnection) {
    SynchronizedPanel bench;
    bench.module.fault({.fault = Fault::unplug});
    bench.click("cmdVersion");
    expectDisconnected(bench, "OPane Error|Error 57: ");
    bench.panel.cmbNodeNumber.userSelects(0);
    EXPECT_TRUE(bench.boxes.empty());  // nothing is left to drop
}

TEST(PanelErrors, ErrorBesideTheLinkKeepsThePages) {
    const TemporaryFolder folder;
    SynchronizedPanel bench;
    bench.chosenFile = folder / "missing.bmp";
    bench.click("cmdAfficheBMP");
    ASSERT_EQ(bench.boxes.size(), 1U);
    EXPECT_EQ(bench.boxes[0].substr(0, 21), "OPane Error|Error 53:");
    EXPECT_EQ(bench.status(), "Command Failed");
    EXPECT_TRUE(bench.pagesShown());
}

}  // namespace
}  // namespace opane::test
