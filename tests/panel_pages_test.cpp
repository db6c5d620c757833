#include <gtest/gtest.h>

#include <map>
#include <numeric>

#include "support/panel_bench.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;

constexpr auto kOk = "Command OK";
constexpr auto kFailed = "Command Failed";

std::string repeated(std::size_t times, const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

/// Byte n of either EEPROM is n.
class PagesBench : public SynchronizedPanel {
public:
    PagesBench() {
        std::iota(module.state().systemEeprom.begin(), module.state().systemEeprom.end(), std::uint8_t{0});
        std::iota(module.state().userEeprom.begin(), module.state().userEeprom.end(), std::uint8_t{0});
    }

    /// What is in these boxes, with a blank behind each.
    std::string texts(const Texts& names) {
        std::string all;
        for (const std::string& name : names)
            all += text(name) + " ";
        return all;
    }
    std::string system() const { return {module.state().systemEeprom.begin(), module.state().systemEeprom.end()}; }
    /// Cancels when that many blocks are done.
    void cancelAfter(int blocks) {
        services->eventHook = [this, blocks] {
            if (panel.progress() && panel.progress()->value == blocks)
                panel.userCancels();
        };
    }
};

/// A button and the boxes that it takes what is typed from.
struct Entry {
    const char* button;
    const char* errorTitle;
    Texts boxes;
};
const Entry kLine{"cmdAffData", "Affiche Trame Error|", {"txtAffDataPattern"}};
const Entry kBloc1{"cmdAffBloc1", "Affiche Bloc1 Error|", {"txtAffBloc1Pattern"}};
const Entry kBloc4{"cmdAffBloc4", "Affiche Bloc4 Error|", {"txtAffBloc4Pattern"}};
const Entry kClear{"cmdClear", "Clear Error|", {"txtClearPattern"}};
const Entry kCadre{"cmdCadre", "Cadre Error|", {"txtCadrePattern"}};
const Entry kGreen{"cmdWriteVert", "Write BACKLIGHT Error|", {"txtWriteBacklightIntensity"}};
const Entry kRed{"cmdWriteRouge", "Write BACKLIGHT Error|", {"txtWriteBacklightIntensity"}};
const Entry kController{"cmdWriteSED1530", "SED1530 Write Error|", {"txtSED1530Data"}};
const Texts kRange{"txtEEPROMBaseAdress", "txtEEPROMLength", "txtEEPROMDataSmall"};
const Entry kRead{"cmdReadEEPROM", "EEPROM Error|", kRange};
const Entry kWrite{"cmdWriteEEPROM", "EEPROM Error|", kRange};

struct TypedCase {
    const char* name;
    const Entry& entry;
    Texts texts;            // one for each box; none: as they are at first
    std::string frame;      // empty: nothing is sent
    std::string refusal{};  // empty: left to the command
    std::string read{};     // what the last box shows then; empty: what it did
};

class TypedText : public testing::TestWithParam<TypedCase> {};

TEST_P(TypedText, IsSentOrRefusedAndStays) {
    PagesBench bench;
    const auto& [name, entry, texts, frame, refusal, read] = GetParam();
    bench.panel.cmbAffDataLigne.userSelects(5);
    bench.panel.cmbAffBloc1Ligne.userSelects(7);
    bench.panel.cmbAffBloc1Colonne.userSelects(14);
    bench.panel.cmbAffBloc4Ligne.userSelects(6);
    bench.panel.cmbAffBloc4Colonne.userSelects(13);
    bench.panel.optBacklightLumControl[1].click();
    for (std::size_t i = 0; i < texts.size(); ++i)
        bench.type(entry.boxes[i], texts[i]);
    std::string after = bench.texts(entry.boxes);
    if (!read.empty())
        after = texts[0] + " " + texts[1] + " " + read + " ";
    bench.click(entry.button);
    EXPECT_EQ(bench.shown(), refusal.empty() ? Texts{} : Texts{entry.errorTitle + refusal});
    EXPECT_EQ(bench.sent(), frame.empty() ? Texts{} : Texts{frame});
    EXPECT_EQ(bench.status(), !refusal.empty() ? "" : frame.empty() ? kFailed : kOk);
    EXPECT_EQ(bench.texts(entry.boxes), after);
}

const std::string kLength = "Invalid Pattern Length";
const std::string kDigits = "Invalid Pattern: hexadecimal digits only";
const std::string kEmpty = "Champ Base Adress et/ou Length vide(s)";
const std::string kFirstLine = "000102030405060708090A0B0C0D0E0F";
const TypedCase kTyped[] = {
    {"line_at_first", kLine, {}, "01 0500 " + repeated(120, "FF")},
    {"line_short", kLine, {"F"}, "", kLength},
    {"block", kBloc1, {"0123456789abcdef"}, "03 070E 0123456789ABCDEF"},
    {"block_letter", kBloc1, {repeated(15, "F") + "G"}, "", kDigits},
    {"block_sign", kBloc1, {repeated(14, "F") + "-1"}, "", kDigits},
    {"square", kBloc4, {repeated(32, "A5")}, "04 060D " + repeated(32, "A5")},
    {"square_of_2_lines", kBloc4, {repeated(32, "A") + "\r\n" + repeated(32, "A")}, "", kLength},
    {"clear_at_first", kClear, {}, "06 0000 "},
    {"clear_letters", kClear, {"é0"}, "", kDigits},
    {"frame_at_first", kCadre, {}, "05 FF00 "},
    {"frame_long", kCadre, {"0FF"}, "", kLength},
    {"green_255", kGreen, {"255"}, "13 01FF "},
    {"red_10", kRed, {"10"}, "14 010A "},
    {"green_65546", kGreen, {"65546"}, ""},
    {"red_letters", kRed, {"12x"}, "", "Invalid Intensity: decimal number expected"},
    {"red_empty", kRed, {""}, "", "Champ Intensité vide"},
    {"controller_f", kController, {"f"}, "11 0000 0F"},
    {"controller_100", kController, {"100"}, "", "Invalid Data SED1530: hexadecimal number from 0 to FF expected"},
    {"controller_empty", kController, {""}, "", "Champ Data SED1530 vide"},
    {"read_more_than_a_line", kRead, {"0", "14", ""}, "0C 0000 14", "", kFirstLine + "\r\n10111213"},
    {"read_lower_case", kRead, {"1fe", "02", "old"}, "0C FE01 02", "", "FEFF"},
    {"read_without_length", kRead, {"0", "", "old"}, "", kEmpty},
    {"read_length_beyond_64_bits", kRead, {"0", "10000000000000001", "old"}, ""},
    {"read_base_negative", kRead, {"-1", "1", "old"}, "", "Invalid Base Adress: hexadecimal digits only"},
    {"read_length_letter", kRead, {"0", "1g", "old"}, "", "Invalid Length: hexadecimal digits only"},
    {"write", kWrite, {"102", "3", "0aBc7F"}, "0D 0201 0ABC7F"},
    {"write_without_base", kWrite, {"", "1", "00"}, "", kEmpty},
    {"write_too_little", kWrite, {"0", "2", "000"}, "", "Longueur des data incorrecte"},
    {"write_letters", kWrite, {"0", "2", "000x"}, "", "Invalid Data: hexadecimal digits only"},
};
INSTANTIATE_TEST_SUITE_P(Boxes, TypedText, testing::ValuesIn(kTyped),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PanelFiles, AreLeftAloneAfterACancelledChoiceAndShownOtherwise) {
    const TemporaryFolder folder;
    SynchronizedPanel bench;
    for (const char* const button : {"cmdSaveBINFile", "cmdWriteAllEEPROM", "cmdAfficheBMP"}) {
        bench.click(button);
        EXPECT_EQ(bench.status(), kFailed) << button;
        EXPECT_TRUE(bench.sent().empty()) << button;
    }
    bench.chosenFile = folder.write("blank.bmp", std::string(62, '\0'));
    bench.click("cmdAfficheBMP");
    EXPECT_EQ(bench.status(), kOk);
    EXPECT_EQ(bench.sent().size(), 8U);
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
    PagesBench bench;
    auto& state = bench.module.state();
    state.adc = {0x1234, 9, 0, 771};
    state.lastKey = 0xFFFF;
    for (const char* const button : {"cmdReadIR", "cmdReadVlcd", "cmdReadADC"})
        bench.click(button);
    EXPECT_EQ(bench.texts({"txtReadIR", "txtReadVlcd", "txtADCLum"}), "$FFFF $76 $1234 ");
    bench.refuseCommand(0);
    bench.click("cmdReadADC");
    EXPECT_EQ(bench.texts({"txtADCLum", "txtADCTemp", "txtADCUbat"}), "$0 $0 $303 ");
    EXPECT_EQ(bench.status(), kOk);  // the last of the three
    const std::map<std::uint16_t, std::string> temperatures{{215, "21.5"}, {220, "22"}, {3, "0.3"}, {65535, "6553.5"}};
    for (const auto& [tenths, text] : temperatures) {
        state.temperature = tenths;
        bench.click("cmdReadTemp");
        EXPECT_EQ(bench.text("txtReadTemp"), text);
    }
    bench.refuseCommand(0);
    bench.click("cmdReadTemp");
    EXPECT_EQ(bench.text("txtReadTemp"), "0");
}

TEST(PanelBacklight, ReadsUpToTheFirstRegisterThatFails) {
    PagesBench bench;
    bench.module.state().red = {255, 10, 0, 1, 2, 3};
    bench.module.state().green = {4, 5, 6, 7, 8, 200};
    bench.click("cmdReadVert");
    EXPECT_EQ(bench.status(), kOk);
    bench.refuseCommand(3);
    bench.click("cmdReadRouge");
    EXPECT_EQ(bench.status(), kFailed);
    Texts boxes{"txtReadBacklightPhysical", "txtReadBacklightphysicalHexa"};
    for (const std::string row : {"Consigne", "Final", "ADC", "Zone", "Increment"})
        for (const char* const kind : {"", "Hexa"})
            boxes.push_back("txtReadBacklight" + row + kind);
    EXPECT_EQ(bench.texts(boxes), "255 FF 10 A 0 0 7 7 8 8 200 C8 ");
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
}

TEST(PanelOPane, ReadsTheChosenControllerRegisterAndResetsTheLightControl) {
    SynchronizedPanel bench;
    bench.module.state().sed1530 = {0xA0, 0x0B};
    bench.click("cmdReadSED1530");
    EXPECT_EQ(bench.text("txtSED1530Data"), "A0");
    bench.panel.optSED1530Register[1].click();
    bench.click("cmdReadSED1530");
    EXPECT_EQ(bench.text("txtSED1530Data"), "B");
    bench.click("cmdResetLumControl");
    EXPECT_EQ(bench.sent(), (Texts{"10 0000 ", "10 0001 ", "07 0100 "}));
    EXPECT_EQ(bench.status(), kOk);
}

TEST(PanelEeprom, RangeGoesToTheChosenEepromAndTheBoxCanBeCleared) {
    PagesBench bench;
    bench.panel.optEEPROMType[1].click();
    bench.type("txtEEPROMBaseAdress", "380");
    bench.type("txtEEPROMLength", "80");
    bench.click("cmdReadEEPROM");
    EXPECT_EQ(bench.sent(), Texts{"20 8003 80"});
    bench.click("cmdEEPROMClearText");
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), "");
    bench.type("txtEEPROMDataSmall", "old");
    ScriptedPeer script;  // answers with a byte too few
    script.answers = {{0xAA, 3, 3, 0, 0, 32, 1, 2, 3, 0}};
    bench.line.peer = &script;
    bench.type("txtEEPROMLength", "4");
    bench.click("cmdReadEEPROM");
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), "old");
    EXPECT_EQ(bench.status(), kFailed);
}

TEST(PanelEeprom, DumpsEveryBlockThatWasRead) {
    constexpr std::size_t kDumpLine = 50;  // 16 bytes of three characters, and the line break
    PagesBench bench;
    bench.refuseCommand(1);
    bench.click("cmdReadAllEEPROM");
    const std::string dump = bench.text("txtEEPROMData");
    EXPECT_EQ(dump.size(), 32 * kDumpLine);
    EXPECT_EQ(dump.substr(0, kDumpLine), "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \r\n");
    for (std::size_t line = 0; line < 32; ++line)
        EXPECT_EQ(dump.substr(line * kDumpLine, 3) == "-- ", line / 8 == 1) << line;
    EXPECT_EQ(bench.status(), kOk);  // the last block's
    EXPECT_TRUE(bench.boxes.empty());

    bench.panel.optEEPROMType[1].click();
    bench.cancelAfter(8);  // too late
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.text("txtEEPROMData").size(), 64 * kDumpLine);
    EXPECT_EQ(bench.text("txtEEPROMData").find('-'), std::string::npos);
    EXPECT_EQ(bench.status(), kOk);
    bench.cancelAfter(2);
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.text("txtEEPROMData").find('-'), 16 * kDumpLine);
    EXPECT_EQ(bench.status(), kFailed);
}

TEST(PanelEeprom, OnlyAWholeImageIsSavedAndItRestoresTheSystemEeprom) {
    const TemporaryFolder folder;
    PagesBench bench;
    const std::string before = bench.system();
    bench.chosenFile = folder.write("image.bin", std::string(2000, 'x'));
    bench.refuseCommand(2);
    bench.click("cmdSaveBINFile");
    EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|The EEPROM was not read completely. Nothing was saved."});
    EXPECT_EQ(bench.status(), kOk);    // the last block's
    for (const int blocks : {7, 8}) {  // also when all have been read
        bench.cancelAfter(blocks);
        bench.click("cmdSaveBINFile");
        EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|The save was cancelled. Nothing was saved."}) << blocks;
        EXPECT_EQ(bench.status(), kFailed);
    }
    EXPECT_EQ(contentOf(*bench.chosenFile), std::string(2000, 'x'));
    bench.cancelAfter(9);  // never
    bench.click("cmdSaveBINFile");
    EXPECT_EQ(contentOf(*bench.chosenFile), before);
    EXPECT_EQ(bench.status(), kOk);

    bench.module.state().systemEeprom.fill(0);
    bench.refuseCommand(3);
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|Only 7 of 8 blocks of the System EEPROM were written."});
    EXPECT_EQ(bench.status(), kOk);  // the last block's
    EXPECT_EQ(bench.system(), before.substr(0, 384) + std::string(128, '\0') + before.substr(512));
    bench.cancelAfter(1);
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|Only 1 of 8 blocks of the System EEPROM were written."});
    EXPECT_EQ(bench.status(), kFailed);
    bench.cancelAfter(8);  // too late
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.system(), before);
    EXPECT_EQ(bench.status(), kOk);
    EXPECT_TRUE(bench.boxes.empty());
}

TEST(PanelEeprom, WrongFilesCostNoExchange) {
    const TemporaryFolder folder;
    const std::pair<std::string, std::string> places[] = {{folder / "missing/image.bin", "OPane Error|Error 76:"},
                                                          {folder.path(), "OPane Error|Error 75:"}};
    for (const auto& [place, error] : places) {
        PagesBench bench;
        bench.chosenFile = place;
        bench.click("cmdSaveBINFile");
        ASSERT_EQ(bench.boxes.size(), 1U);
        EXPECT_EQ(bench.boxes[0].substr(0, error.size()), error);
        EXPECT_EQ(bench.status(), kFailed);
        EXPECT_TRUE(bench.sent().empty()) << place;
    }
    for (const std::size_t size : {0U, 1023U, 1025U}) {
        PagesBench bench;
        bench.chosenFile = folder.write("image.bin", std::string(size, 'x'));
        bench.click("cmdWriteAllEEPROM");
        EXPECT_EQ(bench.shown(),
                  Texts{"EEPROM Error|Invalid BIN File: exactly 1024 bytes expected. Nothing was written."});
        EXPECT_TRUE(bench.sent().empty()) << size;
        EXPECT_EQ(bench.status(), "");
    }
}

Texts buttonsOfThePages() {
    Texts names;
    const frmOPane panel;
    for (const auto* const control : controlsIn(panel.FrameSSTab))
        if (dynamic_cast<const window::CommandButton*>(control) != nullptr && control->name() != "cmdEEPROMClearText")
            names.push_back(control->name());
    return names;
}

TEST(PanelButtons, FailInWordsAndLoseNothingTypedWhenTheModuleIsLost) {
    const TemporaryFolder folder;
    const std::string image = folder.write("image", std::string(1024, '\0'));  // of a screen or an EEPROM
    Texts boxes;
    for (const Entry* const entry : {&kLine, &kBloc1, &kBloc4, &kClear, &kCadre, &kGreen, &kController, &kWrite})
        boxes.insert(boxes.end(), entry->boxes.begin(), entry->boxes.end());
    for (const Fault fault : {Fault::silent, Fault::unplug})
        for (const std::string& button : buttonsOfThePages()) {
            SCOPED_TRACE(button);
            PagesBench bench;
            bench.chosenFile = image;
            bench.panel.optBacklightLumControl[0].click();
            bench.panel.cmbBaudrate.userSelects(0);
            bench.type("txtAffBloc4Pattern", repeated(32, "0F"));
            for (const char* const box : {"txtWriteBacklightIntensity", "txtSED1530Data", "txtEEPROMLength"})
                bench.type(box, "1");
            bench.type("txtEEPROMBaseAdress", "0");
            bench.type("txtEEPROMDataSmall", "AB");
            const std::string before = bench.texts(boxes);
            bench.module.fault({.fault = fault});
            bench.click(button);
            const bool vanished = fault == Fault::unplug;
            const bool setsSpeed = button == "cmdChangeBaudrate" || button == "cmdResetModule";
            EXPECT_EQ(bench.status(), setsSpeed && !vanished ? "" : kFailed);
            EXPECT_EQ(bench.pagesShown(), !setsSpeed && !vanished);
            for (const std::string& box : bench.boxes)
                EXPECT_EQ(box.starts_with("OPane Error|Error 57: "), vanished) << box;
            EXPECT_TRUE(!vanished || bench.boxes.size() == 1);
            EXPECT_EQ(bench.texts(boxes), before);
            EXPECT_EQ(threadLink()->Timeout(), 1000);
        }
}

}  // namespace
}  // namespace opane::test
