#include <gtest/gtest.h>

#include <map>

#include "support/panel_bench.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;
using Texts = std::vector<std::string>;

std::string repeated(std::size_t times, const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

const auto kName = [](const auto& row) { return std::string(row.param.name); };
constexpr auto kOk = "Command OK";
constexpr auto kFailed = "Command Failed";

struct TypedCase {
    const char* name;
    const char* button;
    const char* box;
    std::optional<std::string> text;  // as it is at first, when nothing is typed
    std::string frame;                // empty: nothing is sent
    std::string refusal{};            // empty: left to the command
};

class TypedText : public testing::TestWithParam<TypedCase> {};

TEST_P(TypedText, IsSentOrRefusedAndStays) {
    SynchronizedPanel bench;
    const TypedCase& row = GetParam();
    bench.panel.cmbAffDataLigne.userSelects(5);
    bench.panel.cmbAffBloc1Ligne.userSelects(7);
    bench.panel.cmbAffBloc1Colonne.userSelects(14);
    bench.panel.cmbAffBloc4Ligne.userSelects(6);
    bench.panel.cmbAffBloc4Colonne.userSelects(13);
    bench.panel.optBacklightLumControl[1].click();
    if (row.text)
        bench.type(row.box, *row.text);
    const std::string text = bench.text(row.box);
    bench.click(row.button);
    EXPECT_EQ(bench.shown(), row.refusal.empty() ? Texts{} : Texts{row.refusal});
    EXPECT_EQ(bench.sent(), row.frame.empty() ? Texts{} : Texts{row.frame});
    EXPECT_EQ(bench.status(), !row.refusal.empty() ? "" : row.frame.empty() ? kFailed : kOk);
    EXPECT_EQ(bench.text(row.box), text);
}

const std::string kLength = " Error|Invalid Pattern Length";
const std::string kDigits = " Error|Invalid Pattern: hexadecimal digits only";
const std::string kBytes = "0123456789abcdef";
const std::string kTwoLines = repeated(32, "A") + "\r\n" + repeated(32, "A");
constexpr auto kBloc1Box = "txtAffBloc1Pattern";
constexpr auto kBloc4Box = "txtAffBloc4Pattern";
const TypedCase kPatterns[] = {
    {"line_at_first", "cmdAffData", "txtAffDataPattern", {}, "01 0500 " + repeated(120, "FF")},
    {"line_short", "cmdAffData", "txtAffDataPattern", "F", "", "Affiche Trame" + kLength},
    {"block_at_first", "cmdAffBloc1", kBloc1Box, {}, "03 070E " + repeated(8, "FF")},
    {"block", "cmdAffBloc1", kBloc1Box, kBytes, "03 070E 0123456789ABCDEF"},
    {"block_short", "cmdAffBloc1", kBloc1Box, repeated(15, "F"), "", "Affiche Bloc1" + kLength},
    {"block_letter", "cmdAffBloc1", kBloc1Box, repeated(15, "F") + "G", "", "Affiche Bloc1" + kDigits},
    {"block_sign", "cmdAffBloc1", kBloc1Box, repeated(14, "F") + "-1", "", "Affiche Bloc1" + kDigits},
    {"square", "cmdAffBloc4", kBloc4Box, repeated(32, "A5"), "04 060D " + repeated(32, "A5")},
    {"square_of_2_lines", "cmdAffBloc4", kBloc4Box, kTwoLines, "", "Affiche Bloc4" + kLength},
    {"clear_at_first", "cmdClear", "txtClearPattern", {}, "06 0000 "},
    {"clear_letters", "cmdClear", "txtClearPattern", "é0", "", "Clear" + kDigits},
    {"frame_at_first", "cmdCadre", "txtCadrePattern", {}, "05 FF00 "},
    {"frame_long", "cmdCadre", "txtCadrePattern", "0FF", "", "Cadre" + kLength},
};
INSTANTIATE_TEST_SUITE_P(Patterns, TypedText, testing::ValuesIn(kPatterns), kName);

constexpr auto kLevelBox = "txtWriteBacklightIntensity";
constexpr auto kDataBox = "txtSED1530Data";
const std::string kLevel = "Write BACKLIGHT Error|Invalid Intensity: decimal number expected";
const std::string kData = "SED1530 Write Error|Invalid Data SED1530: hexadecimal number from 0 to FF expected";
const TypedCase kRegisters[] = {
    {"green_255", "cmdWriteVert", kLevelBox, "255", "13 01FF "},
    {"red_10", "cmdWriteRouge", kLevelBox, "10", "14 010A "},
    {"red_256", "cmdWriteRouge", kLevelBox, "256", ""},
    {"green_70000", "cmdWriteVert", kLevelBox, "70000", ""},
    {"red_minus_70000", "cmdWriteRouge", kLevelBox, "-70000", ""},
    {"red_letters", "cmdWriteRouge", kLevelBox, "12x", "", kLevel},
    {"red_empty", "cmdWriteRouge", kLevelBox, "", "", "Write BACKLIGHT Error|Champ Intensité vide"},
    {"controller_0F", "cmdWriteSED1530", kDataBox, "0F", "11 0000 0F"},
    {"controller_f", "cmdWriteSED1530", kDataBox, "f", "11 0000 0F"},
    {"controller_100", "cmdWriteSED1530", kDataBox, "100", "", kData},
    {"controller_letters", "cmdWriteSED1530", kDataBox, "0x1", "", kData},
    {"controller_empty", "cmdWriteSED1530", kDataBox, "", "", "SED1530 Write Error|Champ Data SED1530 vide"},
};
INSTANTIATE_TEST_SUITE_P(Registers, TypedText, testing::ValuesIn(kRegisters), kName);

TEST(PanelAffiche, ShowsABitmapOrReportsACancelledChoice) {
    const TemporaryFolder folder;
    SynchronizedPanel bench;
    bench.click("cmdAfficheBMP");
    EXPECT_EQ(bench.status(), kFailed);
    EXPECT_TRUE(bench.sent().empty());
    bench.chosenFile = folder.write("blank.bmp", std::string(62, '\0'));
    bench.click("cmdAfficheBMP");
    EXPECT_EQ(bench.status(), kOk);
    EXPECT_EQ(bench.sent().size(), 8U);
    EXPECT_EQ(bench.dialogs, Texts(2, "Ouvrir fichier BPM pour OPane"));
}

std::string chosenFlags(PanelBench& bench) {
    std::string text;
    for (auto* const group : {&bench.panel.optSens, &bench.panel.optFond, &bench.panel.optCadre, &bench.panel.optLCD,
                              &bench.panel.optLumControl, &bench.panel.optVlcdControl})
        text += group->selected() == -1 ? "-" : std::to_string(group->selected());
    return text;
}

TEST(PanelStatus, WritesFalseForWhatIsNotChosen) {
    SynchronizedPanel bench;
    EXPECT_EQ(chosenFlags(bench), "------");
    bench.click("cmdWriteStatus");
    EXPECT_EQ(bench.sent(), (Texts{"05 0000 ", "0A 0000 ", "0A 0100 ", "0A 0200 ", "0A 0300 ", "0A 0400 "}));
    EXPECT_EQ(bench.status(), kOk);
    bench.panel.optCadre[1].click();
    bench.panel.optLCD[0].click();
    bench.panel.optVlcdControl[1].click();
    bench.refuseCommand(5);
    bench.click("cmdWriteStatus");
    EXPECT_EQ(bench.status(), kFailed);
    EXPECT_EQ(bench.module.state().framePattern, 255);
    EXPECT_TRUE(bench.module.state().lcdOn);
    bench.refuseCommand(0);  // only the frame: its result does not show
    bench.click("cmdWriteStatus");
    EXPECT_EQ(bench.status(), kOk);
    EXPECT_TRUE(bench.module.state().automaticVlcd);
}

TEST(PanelStatus, ShowsTheFlagsOrAllFalseAfterAFailedRead) {
    SynchronizedPanel bench;
    bench.module.state().upsideDown = true;
    bench.module.state().automaticVlcd = false;
    bench.click("cmdReadStatus");
    EXPECT_EQ(chosenFlags(bench), "100010");
    bench.module.state().lcdOn = false;
    bench.click("cmdReadStatus");
    EXPECT_EQ(chosenFlags(bench), "100110");
    bench.refuseCommand(0);
    bench.click("cmdReadStatus");
    EXPECT_EQ(chosenFlags(bench), "000100");
    EXPECT_EQ(bench.status(), kFailed);

    bench.click("cmdVersion");
    EXPECT_EQ(bench.text("txtVersion"), "OPane V2.0");
    bench.refuseCommand(0);
    bench.click("cmdVersion");
    EXPECT_EQ(bench.text("txtVersion"), "");
}

TEST(PanelRead, ShowsReadingsAndStartValuesOfFailedOnes) {
    SynchronizedPanel bench;
    auto& state = bench.module.state();
    state.adc = {0x1234, 9, 0, 771};
    state.lastKey = 0xFFFF;
    bench.refuseCommand(0);
    bench.click("cmdReadADC");
    EXPECT_EQ(bench.text("txtADCLum") + bench.text("txtADCTemp") + bench.text("txtADCUbat"), "$0$0$303");
    EXPECT_EQ(bench.status(), kOk);  // the last of the three
    bench.click("cmdReadADC");
    EXPECT_EQ(bench.text("txtADCLum"), "$1234");
    bench.click("cmdReadIR");
    EXPECT_EQ(bench.text("txtReadIR"), "$FFFF");
    bench.click("cmdReadVlcd");
    EXPECT_EQ(bench.text("txtReadVlcd"), "$76");
    for (const auto& [tenths, text] :
         std::map<std::uint16_t, std::string>{{215, "21.5"}, {220, "22"}, {3, "0.3"}, {65535, "6553.5"}}) {
        state.temperature = tenths;
        bench.click("cmdReadTemp");
        EXPECT_EQ(bench.text("txtReadTemp"), text);
    }
    bench.refuseCommand(0);
    bench.click("cmdReadTemp");
    EXPECT_EQ(bench.text("txtReadTemp"), "0");
    EXPECT_EQ(bench.status(), kFailed);
}

TEST(PanelBacklight, ReadsUpToTheFirstRegisterThatFails) {
    SynchronizedPanel bench;
    bench.module.state().red = {255, 10, 0, 1, 2, 3};
    bench.module.state().green = {4, 5, 6, 7, 8, 200};
    bench.click("cmdReadVert");
    EXPECT_EQ(bench.status(), kOk);
    bench.refuseCommand(3);
    bench.click("cmdReadRouge");
    EXPECT_EQ(bench.status(), kFailed);
    std::string rows;
    for (const std::string row : {"Physical", "Consigne", "Final", "ADC", "Zone", "Increment"})
        rows += bench.text("txtReadBacklight" + row) + "=" +
                bench.text("txtReadBacklight" + (row == "Physical" ? "physical" : row) + "Hexa") + " ";
    EXPECT_EQ(rows, "255=FF 10=A 0=0 7=7 8=8 200=C8 ");
}

TEST(PanelBacklight, WritesARegisterOnlyInItsMode) {
    SynchronizedPanel bench;
    const Texts refusal{
        "Write BACKLIGHT Error|Le registre physique ne peut être utilisé qu'en mode No Control. \r\n"
        "Le registre de consigne ne peut être utilisé qu'en mode Automatique.|Cancel"};
    bench.type("txtWriteBacklightIntensity", "7");
    bench.click("cmdWriteRouge");  // nothing is chosen yet
    EXPECT_EQ(bench.shown(), refusal);
    bench.panel.optBacklightLumControl[0].click();
    bench.click("cmdWriteRouge");
    EXPECT_EQ(bench.sent(), Texts{"14 0007 "});
    bench.panel.optWriteBacklightRegister[1].click();
    bench.click("cmdWriteVert");
    EXPECT_EQ(bench.shown(), refusal);
    EXPECT_TRUE(bench.sent().empty());
    EXPECT_EQ(bench.status(), kOk);
}

TEST(PanelBacklight, BringsTheModuleToTheChosenMode) {
    SynchronizedPanel bench;
    bench.module.state().upsideDown = true;
    bench.click("cmdBacklightStatus");
    bench.click("cmdBacklightStatus");
    EXPECT_EQ(bench.sent(), Texts(2, "09 0000 "));
    EXPECT_EQ(bench.panel.optBacklightLumControl.selected(), 1);
    EXPECT_EQ(bench.panel.optWriteBacklightRegister.selected(), 1);

    bench.panel.optBacklightLumControl[0].click();
    bench.click("cmdBacklightStatus");
    EXPECT_EQ(bench.sent(), (Texts{"09 0000 ", "0A 0001 ", "0A 0100 ", "0A 0201 ", "0A 0300 ", "0A 0401 "}));
    bench.panel.optBacklightLumControl[1].click();
    bench.refuseCommand(0);
    bench.click("cmdBacklightStatus");
    EXPECT_EQ(bench.sent(), Texts(5, "09 0000 "));  // what was not read is not written
    EXPECT_EQ(bench.status(), kFailed);
    bench.click("cmdBacklightStatus");
    EXPECT_TRUE(bench.module.state().automaticBacklight);
}

TEST(PanelOPane, ReadsTheChosenControllerRegisterAndResetsTheLightControl) {
    SynchronizedPanel bench;
    bench.module.state().sed1530 = {0xA0, 0x0B};
    bench.click("cmdReadSED1530");
    EXPECT_EQ(bench.text("txtSED1530Data"), "A0");
    bench.panel.optSED1530Register[1].click();
    bench.click("cmdReadSED1530");
    EXPECT_EQ(bench.text("txtSED1530Data"), "B");
    bench.sent();
    bench.click("cmdResetLumControl");
    EXPECT_EQ(bench.sent(), Texts{"07 0100 "});
    EXPECT_EQ(bench.status(), kOk);
}

TEST(PanelSilence, ShowsCommandFailedAndKeepsWhatWasTyped) {
    const std::map<std::string, std::string> typed{
        {kBloc4Box, repeated(32, "0F")}, {kLevelBox, "7"},         {kDataBox, "7"},
        {"txtEEPROMBaseAdress", "0"},    {"txtEEPROMLength", "1"}, {"txtEEPROMDataSmall", "AB"}};
    for (const auto* const button :
         {"cmdAffData",         "cmdAffBloc1",    "cmdAffBloc4",      "cmdClear",      "cmdCadre",
          "cmdReadStatus",      "cmdWriteStatus", "cmdVersion",       "cmdReadADC",    "cmdReadTemp",
          "cmdReadIR",          "cmdReadVlcd",    "cmdReadAllEEPROM", "cmdReadEEPROM", "cmdWriteEEPROM",
          "cmdWriteRouge",      "cmdWriteVert",   "cmdReadRouge",     "cmdReadVert",   "cmdBacklightStatus",
          "cmdResetLumControl", "cmdReadSED1530", "cmdWriteSED1530"}) {
        SynchronizedPanel bench;
        bench.panel.optBacklightLumControl[0].click();
        for (const auto& [box, text] : typed)
            bench.type(box, text);
        bench.module.fault({.fault = Fault::silent});
        bench.click(button);
        EXPECT_EQ(bench.status(), kFailed) << button;
        EXPECT_TRUE(bench.pagesShown()) << button;
        EXPECT_TRUE(bench.boxes.empty()) << button;
        for (const auto& [box, text] : typed)
            EXPECT_EQ(bench.text(box), text) << button;
    }
}

}  // namespace
}  // namespace opane::test
