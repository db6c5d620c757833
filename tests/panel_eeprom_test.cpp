#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "support/panel_bench.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using Texts = std::vector<std::string>;

constexpr auto kOk = "Command OK";
constexpr auto kFailed = "Command Failed";
constexpr std::size_t kDumpLine = 50;  // 16 bytes of three characters, and the line break

/// A synchronised panel; byte n of either EEPROM is n.
class EepromBench : public SynchronizedPanel {
public:
    EepromBench() {
        std::iota(module.state().systemEeprom.begin(), module.state().systemEeprom.end(), std::uint8_t{0});
        std::iota(module.state().userEeprom.begin(), module.state().userEeprom.end(), std::uint8_t{0});
    }

    void range(const std::string& base, const std::string& length) {
        type("txtEEPROMBaseAdress", base);
        type("txtEEPROMLength", length);
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

constexpr auto kRead = "cmdReadEEPROM";
constexpr auto kWrite = "cmdWriteEEPROM";

struct RangeCase {
    const char* name;
    const char* button;
    const char* base;
    const char* length;
    std::string data;       // typed
    std::string frame;      // empty: nothing is sent
    std::string refusal{};  // empty: left to the command
    std::string read{};     // replaces the data; empty: they stay
};

class Range : public testing::TestWithParam<RangeCase> {};

TEST_P(Range, IsReadWrittenOrRefused) {
    EepromBench bench;
    const RangeCase& row = GetParam();
    bench.range(row.base, row.length);
    bench.type("txtEEPROMDataSmall", row.data);
    bench.click(row.button);
    EXPECT_EQ(bench.shown(), row.refusal.empty() ? Texts{} : Texts{"EEPROM Error|" + row.refusal});
    EXPECT_EQ(bench.sent(), row.frame.empty() ? Texts{} : Texts{row.frame});
    EXPECT_EQ(bench.status(), !row.refusal.empty() ? "" : row.frame.empty() ? kFailed : kOk);
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), row.read.empty() ? row.data : row.read);
}

constexpr auto kEmpty = "Champ Base Adress et/ou Length vide(s)";
constexpr auto kBase = "Invalid Base Adress: hexadecimal digits only";
constexpr auto kLength = "Invalid Length: hexadecimal digits only";
constexpr auto kWrongLength = "Longueur des data incorrecte";
const std::string kLine = "000102030405060708090A0B0C0D0E0F";

const RangeCase kRanges[] = {
    {"read_a_line", kRead, "0", "10", "", "0C 0000 10", "", kLine},
    {"read_more", kRead, "0", "14", "", "0C 0000 14", "", kLine + "\r\n10111213"},
    {"read_lower_case", kRead, "1fe", "02", "old", "0C FE01 02", "", "FEFF"},
    {"read_81", kRead, "0", "81", "old", ""},
    {"read_beyond_the_end", kRead, "1FF", "2", "old", ""},
    {"read_0", kRead, "0", "0", "old", ""},
    {"read_without_length", kRead, "0", "", "old", "", kEmpty},
    {"read_base_8000", kRead, "8000", "1", "old", ""},
    {"read_length_beyond_64_bits", kRead, "0", "11112222333344445", "old", ""},
    {"read_base_negative", kRead, "-1", "1", "old", "", kBase},
    {"read_length_letter", kRead, "0", "1g", "old", "", kLength},
    {"write", kWrite, "102", "3", "0aBc7F", "0D 0201 0ABC7F"},
    {"write_base_12345", kWrite, "12345", "1", "00", ""},
    {"write_without_base", kWrite, "", "1", "00", "", kEmpty},
    {"write_too_little", kWrite, "0", "2", "000", "", kWrongLength},
    {"write_over_two_lines", kWrite, "0", "2", "00\r\n00", "", kWrongLength},
    {"write_letters", kWrite, "0", "2", "000x", "", "Invalid Data: hexadecimal digits only"},
    {"write_0_bytes", kWrite, "0", "0", "", ""},
};
INSTANTIATE_TEST_SUITE_P(Typed, Range, testing::ValuesIn(kRanges),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PanelEeprom, RangeGoesToTheChosenEepromAndTheBoxCanBeCleared) {
    EepromBench bench;
    bench.panel.optEEPROMType[1].click();
    bench.range("380", "80");
    bench.click(kRead);
    EXPECT_EQ(bench.sent(), Texts{"20 8003 80"});
    EXPECT_EQ(bench.text("txtEEPROMDataSmall").size(), 8 * 32 + 7 * 2U);
    bench.click("cmdEEPROMClearText");
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), "");
}

TEST(PanelEeprom, ShortAnswerIsNotShown) {
    EepromBench bench;
    bench.range("0", "4");
    bench.type("txtEEPROMDataSmall", "old");
    ScriptedPeer script;
    script.answers = {{0xAA, 3, 3, 0, 0, 12, 1, 2, 3, 0}};
    bench.line.peer = &script;
    bench.click(kRead);
    EXPECT_EQ(bench.text("txtEEPROMDataSmall"), "old");
    EXPECT_EQ(bench.status(), kFailed);
}

TEST(PanelEeprom, DumpsEveryBlockThatWasRead) {
    EepromBench bench;
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
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.text("txtEEPROMData").size(), 64 * kDumpLine);
    EXPECT_EQ(bench.text("txtEEPROMData").find('-'), std::string::npos);

    bench.sent();
    bench.cancelAfter(2);
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.sent().size(), 2U);
    EXPECT_EQ(bench.text("txtEEPROMData").find('-'), 16 * kDumpLine);
    EXPECT_EQ(bench.status(), kFailed);
    bench.cancelAfter(8);  // too late
    bench.click("cmdReadAllEEPROM");
    EXPECT_EQ(bench.status(), kOk);
}

TEST(PanelEeprom, SavedImageRestoresTheSystemEeprom) {
    const TemporaryFolder folder;
    EepromBench bench;
    const std::string before = bench.system();
    for (const auto* const button : {"cmdSaveBINFile", "cmdWriteAllEEPROM"}) {
        bench.click(button);  // the dialog is cancelled
        EXPECT_EQ(bench.status(), kFailed);
        EXPECT_TRUE(bench.sent().empty());
    }
    bench.chosenFile = folder.write("image.bin", std::string(2000, 'x'));
    bench.click("cmdSaveBINFile");
    EXPECT_EQ(contentOf(*bench.chosenFile), before);
    EXPECT_EQ(bench.status(), kOk);
    bench.module.state().systemEeprom.fill(0);
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.system(), before);
    EXPECT_TRUE(bench.boxes.empty());
}

TEST(PanelEeprom, IncompleteImageIsNotSaved) {
    const TemporaryFolder folder;
    EepromBench bench;
    bench.chosenFile = folder.write("image.bin", "old");
    bench.refuseCommand(2);
    bench.click("cmdSaveBINFile");
    EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|The EEPROM was not read completely. Nothing was saved."});
    EXPECT_EQ(bench.status(), kOk);    // the last block's
    for (const int blocks : {7, 8}) {  // also when all have been read
        bench.cancelAfter(blocks);
        bench.click("cmdSaveBINFile");
        EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|The save was cancelled. Nothing was saved."}) << blocks;
        EXPECT_EQ(bench.status(), kFailed);
        EXPECT_EQ(contentOf(*bench.chosenFile), "old");
    }
}

TEST(PanelEeprom, SaveToAWrongPlaceCostsNoReading) {
    const TemporaryFolder folder;
    for (const auto& [place, box] : std::map<std::string, std::string>{
             {folder / "missing/image.bin", "Error 76:"}, {folder.path(), "Error 75:"}, {"/dev/null", "Error 75:"}}) {
        EepromBench bench;
        bench.chosenFile = place;
        bench.click("cmdSaveBINFile");
        ASSERT_EQ(bench.boxes.size(), 1U);
        EXPECT_EQ(bench.boxes[0].substr(0, 21), "OPane Error|" + box) << place;
        EXPECT_EQ(bench.status(), kFailed);
        EXPECT_TRUE(bench.sent().empty()) << place;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(PanelEeprom, ImageOfAnotherSizeIsNotWritten) {
    const TemporaryFolder folder;
    for (const std::size_t size : {0U, 1023U, 1025U}) {
        EepromBench bench;
        bench.chosenFile = folder.write("image.bin", std::string(size, 'x'));
        bench.click("cmdWriteAllEEPROM");
        EXPECT_EQ(bench.shown(),
                  Texts{"EEPROM Error|Invalid BIN File: exactly 1024 bytes expected. Nothing was written."});
        EXPECT_TRUE(bench.sent().empty()) << size;
        EXPECT_EQ(bench.status(), "");
    }
}

TEST(PanelEeprom, UnfinishedRestoreSaysSo) {
    const TemporaryFolder folder;
    EepromBench bench;
    bench.chosenFile = folder.write("image.bin", std::string(1024, 'x'));
    bench.refuseCommand(3);
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|Only 7 of 8 blocks of the System EEPROM were written."});
    EXPECT_EQ(bench.status(), kOk);  // the last block's
    EXPECT_EQ(bench.system().find('x', 384), 512U);
    bench.cancelAfter(1);
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.shown(), Texts{"EEPROM Error|Only 1 of 8 blocks of the System EEPROM were written."});
    EXPECT_EQ(bench.status(), kFailed);
    bench.cancelAfter(8);  // too late
    bench.click("cmdWriteAllEEPROM");
    EXPECT_EQ(bench.shown(), Texts{});
    EXPECT_EQ(bench.status(), kOk);
}

}  // namespace
}  // namespace opane::test
