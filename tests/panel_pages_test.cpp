#include <gtest/gtest.h>

#include <map>

#include "support/panel_bench.h"
#include "support/row_name.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

constexpr auto kOk = "Command OK";
constexpr auto kFailed = "Command Failed";

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
    SynchronizedPanel bench;
    const auto& [name, entry, texts, frame, refusal, read] = GetParam();
    bench.panel.cmbAffDataLigne.userSelects(5);
    bench.panel.cmbAffBloc1Ligne.userSelects(7);
    bench.panel.cmbAffBloc1Colonne.userSelects(14);
    bench.panel.cmbAffBloc4Ligne.userSelects(6);
    bench.panel.cmbAffBloc4Colonne.userSelects(13);
    bench.click("optBacklightLumControl(1)");
    Texts expected;
    for (std::size_t i = 0; i < entry.boxes.size(); ++i) {
        if (!texts.empty())
            bench.type(entry.boxes[i], texts[i]);
        expected.push_back(bench.text(entry.boxes[i]));
    }
    if (!read.empty())
        expected.back() = read;
    expected.push_back(!refusal.empty() ? "" : frame.empty() ? kFailed : kOk);
    if (!frame.empty() || !refusal.empty())
        expected.push_back(refusal.empty() ? frame : entry.errorTitle + refusal);
    EXPECT_EQ(bench.press(entry.button, entry.boxes), expected);
}

const std::string kLength = "Invalid Pattern Length";
const std::string kDigits = "Invalid Pattern: hexadecimal digits only";
const std::string kEmpty = "Champ Base Adress et/ou Length vide(s)";
const TypedCase kTyped[] = {
    {"line_at_first", kLine, {}, "01 0500 " + std::string(240, 'F')},
    {"line_short", kLine, {"F"}, "", kLength},
    {"block", kBloc1, {"0123456789abcdef"}, "03 070E 0123456789ABCDEF"},
    {"block_letter", kBloc1, {"FFFFFFFFFFFFFFFG"}, "", kDigits},
    {"square", kBloc4, {std::string(64, 'a')}, "04 060D " + std::string(64, 'A')},
    {"square_of_2_lines", kBloc4, {std::string(32, 'A') + "\r\n" + std::string(32, 'A')}, "", kLength},
    {"clear_at_first", kClear, {}, "06 0000 "},
    {"clear_letters", kClear, {"é0"}, "", kDigits},
    {"frame_at_first", kCadre, {}, "05 FF00 "},
    {"frame_long", kCadre, {"0FF"}, "", kLength},
    {"green_255", kGreen, {"255"}, "13 01FF "},
    {"green_65546", kGreen, {"65546"}, ""},
    {"red_letters", kRed, {"12x"}, "", "Invalid Intensity: decimal number expected"},
    {"red_empty", kRed, {""}, "", "Champ Intensité vide"},
    {"controller_f", kController, {"f"}, "11 0000 0F"},
    {"controller_100", kController, {"100"}, "", "Invalid Data SED1530: hexadecimal number from 0 to FF expected"},
    {"controller_empty", kController, {""}, "", "Champ Data SED1530 vide"},
    {"read_more_than_a_line", kRead, {"0", "14", ""}, "0C 0000 14", "", "000102030405060708090A0B0C0D0E0F\r\n10111213"},
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
INSTANTIATE_TEST_SUITE_P(Boxes, TypedText, testing::ValuesIn(kTyped), rowName);

std::string chosenFlags(PanelBench& bench) {
    std::string text;
    for (auto* const group : {&bench.panel.optSens, &bench.panel.optFond, &bench.panel.optCadre, &bench.panel.optLCD,
                              &bench.panel.optLumControl, &bench.panel.optVlcdControl})
        text += group->selected() == -1 ? "-" : std::to_string(group->selected());
    return text;
}

TEST(PanelStatus, IsWrittenWithFalseForWhatIsNotChosenAndRead) {
    SynchronizedPanel bench;
    EXPECT_EQ(bench.press("cmdWriteStatus"),
              (Texts{kOk, "05 0000 ", "0A 0000 ", "0A 0100 ", "0A 0200 ", "0A 0300 ", "0A 0400 "}));
    bench.refuseCommand(5);
    bench.click("optCadre(1)", "optLCD(0)", "optVlcdControl(1)", "cmdWriteStatus");
    EXPECT_EQ(bench.status(), kFailed);
    bench.refuseCommand(0);  // only the frame: its result does not show
    bench.click("cmdWriteStatus");
    EXPECT_EQ(bench.status(), kOk);
    bench.module.state().upsideDown = true;
    bench.click("cmdReadStatus");
    EXPECT_EQ(chosenFlags(bench), "101001");
    bench.refuseCommand(0);
    bench.click("cmdReadStatus");
    EXPECT_EQ(chosenFlags(bench), "000100");
    EXPECT_EQ(bench.status(), kFailed);
}

TEST(PanelRead, ShowsReadingsAndStartValuesOfFailedOnes) {
    SynchronizedPanel bench;
    auto& state = bench.module.state();
    state.adc = {0x1234, 9, 0, 771};
    EXPECT_EQ(bench.press("cmdReadIR", {"txtReadIR"}), (Texts{"$FFFF", kOk, "12 0100 "}));
    EXPECT_EQ(bench.press("cmdReadVlcd", {"txtReadVlcd"}), (Texts{"$76", kOk, "12 0200 "}));
    EXPECT_EQ(bench.press("cmdReadADC", {"txtADCLum", "txtADCTemp", "txtADCUbat"}),
              (Texts{"$1234", "$0", "$303", kOk, "0B 0000 ", "0B 0200 ", "0B 0300 "}));
    EXPECT_EQ(bench.press("cmdVersion", {"txtVersion"}), (Texts{"OPane V2.0", kOk, "08 0000 "}));
    state.sed1530 = {0xA0, 0x0B};
    EXPECT_EQ(bench.press("cmdReadSED1530", {"txtSED1530Data"}), (Texts{"A0", kOk, "10 0000 "}));
    bench.click("optSED1530Register(1)");
    EXPECT_EQ(bench.press("cmdReadSED1530", {"txtSED1530Data"}), (Texts{"B", kOk, "10 0001 "}));
    const std::map<std::uint16_t, std::string> temperatures{{215, "21.5"}, {220, "22"}, {3, "0.3"}, {65535, "6553.5"}};
    for (const auto& [tenths, text] : temperatures) {
        state.temperature = tenths;
        EXPECT_EQ(bench.press("cmdReadTemp", {"txtReadTemp"}), (Texts{text, kOk, "12 0000 "}));
    }
    bench.refuseCommand(0);
    EXPECT_EQ(bench.press("cmdReadTemp", {"txtReadTemp"})[0], "0");
    bench.refuseCommand(0);
    EXPECT_EQ(bench.press("cmdReadADC", {"txtADCLum"})[0], "$0");
    EXPECT_EQ(bench.status(), kOk);  // the last of the three
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
    Texts rows;
    for (const std::string row : {"Physical", "physicalHexa", "Consigne", "ConsigneHexa", "Final", "FinalHexa", "ADC",
                                  "ADCHexa", "Zone", "ZoneHexa", "Increment", "IncrementHexa"})
        rows.push_back(bench.text("txtReadBacklight" + row));
    EXPECT_EQ(rows, (Texts{"255", "FF", "10", "A", "0", "0", "7", "7", "8", "8", "200", "C8"}));
}

TEST(PanelBacklight, WritesARegisterOnlyInItsMode) {
    SynchronizedPanel bench;
    const std::string refusal =
        "Write BACKLIGHT Error|Le registre physique ne peut être utilisé qu'en mode No Control. \r\n"
        "Le registre de consigne ne peut être utilisé qu'en mode Automatique.|Cancel";
    bench.type("txtWriteBacklightIntensity", "7");
    EXPECT_EQ(bench.press("cmdWriteRouge"), (Texts{"", refusal}));  // nothing is chosen yet
    bench.click("optBacklightLumControl(0)");
    EXPECT_EQ(bench.press("cmdWriteRouge"), (Texts{kOk, "14 0007 "}));
    bench.click("optWriteBacklightRegister(1)", "optBacklightLumControl(0)");  // the second one stays as it is
    EXPECT_EQ(bench.press("cmdWriteVert"), (Texts{kOk, refusal}));
    EXPECT_EQ(bench.press("cmdResetLumControl"), (Texts{kOk, "07 0100 "}));
}

TEST(PanelBacklight, BringsTheModuleToTheChosenMode) {
    SynchronizedPanel bench;
    bench.module.state().upsideDown = true;
    EXPECT_EQ(bench.press("cmdBacklightStatus"), (Texts{kOk, "09 0000 "}));
    EXPECT_EQ(bench.panel.optBacklightLumControl.selected(), 1);
    EXPECT_EQ(bench.panel.optWriteBacklightRegister.selected(), 1);
    bench.click("optBacklightLumControl(0)");
    EXPECT_EQ(bench.press("cmdBacklightStatus"),
              (Texts{kOk, "09 0000 ", "0A 0001 ", "0A 0100 ", "0A 0201 ", "0A 0300 ", "0A 0401 "}));
    bench.click("optBacklightLumControl(1)");
    bench.refuseCommand(0);  // what was not read is not written
    EXPECT_EQ(bench.press("cmdBacklightStatus"),
              (Texts{kFailed, "09 0000 ", "09 0000 ", "09 0000 ", "09 0000 ", "09 0000 "}));
}

TEST(PanelEeprom, RangeGoesToTheChosenEepromAndTheBoxCanBeCleared) {
    SynchronizedPanel bench;
    bench.type("txtEEPROMBaseAdress", "3FE");
    bench.type("txtEEPROMLength", "2");
    bench.click("optEEPROMType(1)");
    EXPECT_EQ(bench.press("cmdReadEEPROM", {"txtEEPROMDataSmall"}), (Texts{"FEFF", kOk, "20 FE03 02"}));
    ScriptedPeer script;  // answers with a byte too few
    script.answers = {{0xAA, 1, 3, 0, 0, 32, 1, 219}};
    bench.line.peer = &script;
    EXPECT_EQ(bench.press("cmdReadEEPROM", {"txtEEPROMDataSmall"}), (Texts{"FEFF", kFailed}));
    bench.click("cmdEEPROMClearText");
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), "");
}

TEST(PanelEeprom, DumpsEveryBlockThatWasRead) {
    constexpr std::size_t kDumpLine = 50;  // 16 bytes of three characters, and the line break
    SynchronizedPanel bench;
    bench.refuseCommand(1);
    bench.click("cmdReadAllEEPROM");
    const std::string dump = bench.text("txtEEPROMData");
    EXPECT_EQ(dump.size(), 32 * kDumpLine);
    EXPECT_EQ(dump.substr(0, kDumpLine), "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \r\n");
    for (std::size_t line = 0; line < 32; ++line)
        EXPECT_EQ(dump.substr(line * kDumpLine, 3) == "-- ", line / 8 == 1) << line;
    EXPECT_EQ(bench.status(), kOk);  // the last block's

    bench.panel.optEEPROMType[1].click();
    bench.cancelAfter(8);  // too late
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.text("txtEEPROMData").size(), 64 * kDumpLine);
    EXPECT_EQ(bench.text("txtEEPROMData").find('-'), std::string::npos);
    bench.cancelAfter(2);
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.text("txtEEPROMData").find('-'), 16 * kDumpLine);
    EXPECT_EQ(bench.status(), kFailed);
}

TEST(PanelEeprom, OnlyAWholeImageIsSavedAndItRestoresTheSystemEeprom) {
    const TemporaryFolder folder;
    SynchronizedPanel bench;
    const auto& eeprom = bench.module.state().systemEeprom;
    const auto system = [&eeprom] { return std::string(eeprom.begin(), eeprom.end()); };
    const std::string before = system();
    const auto press = [&bench](const char* button) {  // the status and the box
        Texts report = bench.press(button);
        std::erase_if(report, [](const std::string& text) { return text.starts_with("2"); });
        return report;
    };
    bench.chosenFile = folder.write("image.bin", std::string(2000, 'x'));
    bench.refuseCommand(2);  // the status is the last block's
    EXPECT_EQ(press("cmdSaveBINFile"),
              (Texts{kOk, "EEPROM Error|The EEPROM was not read completely. Nothing was saved."}));
    for (const int blocks : {7, 8}) {  // also when all have been read
        bench.cancelAfter(blocks);
        EXPECT_EQ(press("cmdSaveBINFile"), (Texts{kFailed, "EEPROM Error|The save was cancelled. Nothing was saved."}));
    }
    EXPECT_EQ(contentOf(*bench.chosenFile), std::string(2000, 'x'));
    bench.cancelAfter(9);  // never
    EXPECT_EQ(press("cmdSaveBINFile"), Texts{kOk});
    EXPECT_EQ(contentOf(*bench.chosenFile), before);

    bench.module.state().systemEeprom.fill(0);
    bench.refuseCommand(3);
    EXPECT_EQ(press("cmdWriteAllEEPROM"),
              (Texts{kOk, "EEPROM Error|Only 7 of 8 blocks of the System EEPROM were written."}));
    EXPECT_EQ(system(), before.substr(0, 384) + std::string(128, '\0') + before.substr(512));
    bench.cancelAfter(1);
    EXPECT_EQ(press("cmdWriteAllEEPROM"),
              (Texts{kFailed, "EEPROM Error|Only 1 of 8 blocks of the System EEPROM were written."}));
    bench.cancelAfter(8);  // too late
    EXPECT_EQ(press("cmdWriteAllEEPROM"), Texts{kOk});
    EXPECT_EQ(system(), before);
}

TEST(PanelFiles, ThatAreWrongOrNotChosenCostNoExchange) {
    const TemporaryFolder folder;
    SynchronizedPanel bench;
    for (const char* const button : {"cmdSaveBINFile", "cmdWriteAllEEPROM", "cmdAfficheBMP"})
        EXPECT_EQ(bench.press(button), Texts{kFailed}) << button;
    for (const std::size_t size : {0U, 1023U, 1025U}) {
        bench.chosenFile = folder.write("image.bin", std::string(size, 'x'));
        EXPECT_EQ(bench.press("cmdWriteAllEEPROM"),
                  (Texts{kFailed, "EEPROM Error|Invalid BIN File: exactly 1024 bytes expected. Nothing was written."}));
    }
    bench.chosenFile = folder / "missing/image.bin";
    EXPECT_EQ(bench.press("cmdSaveBINFile").back().find("OPane Error|Error 76: "), 0U);
    bench.chosenFile = folder.write("blank.bmp", std::string(62, '\0'));
    EXPECT_EQ(bench.press("cmdAfficheBMP").size(), 1U + 8U);
}

TEST(PanelButtons, FailInWordsAndLoseNothingTypedWhenTheModuleIsLost) {
    const TemporaryFolder folder;
    const std::string image = folder.write("image", std::string(1024, '\0'));  // of a screen or an EEPROM
    const char* const boxes[] = {"txtWriteBacklightIntensity", "txtSED1530Data", "txtEEPROMBaseAdress",
                                 "txtEEPROMDataSmall"};
    Texts buttons;
    forEachControl(frmOPane().FrameSSTab, [&](const window::Control& control) {
        if (dynamic_cast<const window::CommandButton*>(&control) != nullptr && control.name() != "cmdEEPROMClearText")
            buttons.push_back(control.name());
    });
    for (const std::string& button : buttons)
        for (const bool vanished : {false, true}) {
            SCOPED_TRACE(button);
            SynchronizedPanel bench;
            bench.chosenFile = image;
            bench.panel.cmbBaudrate.userSelects(0);
            bench.click("optBacklightLumControl(0)");
            bench.type("txtAffBloc4Pattern", std::string(64, '0'));
            bench.type("txtEEPROMLength", "1");
            for (const char* const box : boxes)
                bench.type(box, "11");
            bench.module.fault({.fault = vanished ? simulator::Fault::unplug : simulator::Fault::silent});
            bench.click(button);
            const bool setsSpeed = button == "cmdChangeBaudrate" || button == "cmdResetModule";
            EXPECT_EQ(bench.status(), setsSpeed && !vanished ? "" : kFailed);
            EXPECT_EQ(bench.pagesShown(), !setsSpeed && !vanished);
            EXPECT_TRUE(!vanished || bench.boxes.size() == 1);
            for (const std::string& box : bench.boxes)
                EXPECT_EQ(box.starts_with("OPane Error|Error 57: "), vanished) << box;
            for (const char* const box : boxes)
                EXPECT_EQ(bench.text(box), "11");
        }
}

}  // namespace
}  // namespace opane::test
