#include <gtest/gtest.h>

#include "automation/clsOPaneCommDLL.h"
#include "support/bench.h"

namespace opane::test {
namespace {

using simulator::Fault;

class StatusMethods : public testing::Test {
protected:
    StatusMethods() {
        std::int16_t status = 1;
        object.Synchronize(1, 9600, 3, status);
        services->messageBox = [this](const std::string&, const std::string&, MessageBoxButtons) {
            ++boxes;
            return MessageBoxAnswer::ok;
        };
    }

    std::string readStatus() {
        std::int16_t a = 7, b = 7, c = 7, d = 7, e = 7, status = 7;
        object.ReadStatus(a, b, c, d, e, status);
        std::string text;
        for (const auto value : {a, b, c, d, e, status})
            text += std::to_string(value);
        return text;
    }

    Bench bench;
    ServicesScope services;
    clsOPaneCommDLL object;
    int boxes = 0;
};

TEST_F(StatusMethods, ReadStatusGivesFiveFlags) {
    auto& state = bench.module.state();
    state.upsideDown = true;
    state.framePattern = 255;
    state.lcdOn = false;
    EXPECT_EQ(readStatus(), "101010") << "the last is the return status";
    bench.module.fault({.fault = Fault::aux, .count = 5});
    EXPECT_EQ(readStatus(), "000001");
}

TEST_F(StatusMethods, WriteStatusDrawsTheFrameFirst) {
    std::int16_t status = 7;
    object.WriteStatus(1, 0, 1, 1, 0, status);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(bench.module.frames().size(), 6U);
    EXPECT_EQ(bench.module.frames()[0][5], 5);
    EXPECT_EQ(bench.module.frames()[0][3], 255);
    EXPECT_EQ(bench.module.state().statusByte(), 0b101101) << "automatic Vlcd is always on";
    bench.module.fault({.fault = Fault::aux, .count = 5});
    object.WriteStatus(0, 0, 0, 0, 0, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(bench.module.frames().size(), 6U + 5U) << "no status is written after a refused frame";
}

TEST_F(StatusMethods, WriteStatusRefusesOtherFlags) {
    for (int wrong = 0; wrong < 5; ++wrong) {
        for (const int value : {2, -1}) {
            std::int16_t flags[5]{};
            flags[wrong] = static_cast<std::int16_t>(value);
            std::int16_t status = 7;
            object.WriteStatus(flags[0], flags[1], flags[2], flags[3], flags[4], status);
            EXPECT_EQ(status, 1);
        }
    }
    EXPECT_TRUE(bench.module.frames().empty());
}

TEST_F(StatusMethods, ChangeBaudrateUsesCrystalType2) {
    std::int16_t status = 7;
    object.ChangeBaudrate(38400, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(bench.module.state().baudRate, 38400);
    const std::size_t sent = bench.module.frames().size();
    object.ChangeBaudrate(57600, status);
    EXPECT_EQ(status, 1);
    object.ChangeBaudrate(38400, status);
    EXPECT_EQ(status, 0) << "in use already";
    EXPECT_EQ(bench.module.frames().size(), sent);
    bench.module.fault({.fault = Fault::ignoreHandshake, .count = 1});
    object.ChangeBaudrate(9600, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(boxes, 1);
}

TEST_F(StatusMethods, EveryKeyHasTwoCodes) {
    struct Key {
        std::uint16_t code;
        std::int16_t number, toggle;
    };
    constexpr Key kKeys[]{{0x7F3, 1, 0},
                          {0xFF3, 1, 1},
                          {0x7C3, 2, 0},
                          {0xFC3, 2, 1},
                          {0x7D4, 3, 0},
                          {0xFD4, 3, 1},
                          {0x7D6, 4, 0},
                          {0xFD6, 4, 1},
                          {0x7DF, 5, 0},
                          {0xFDF, 5, 1},
                          {0x7EF, 6, 0},
                          {0xFEF, 6, 1},
                          {0x7DE, 7, 0},
                          {0xFDE, 7, 1},
                          {0x7EE, 8, 0},
                          {0xFEE, 8, 1},
                          {0x7F2, 9, 0},
                          {0xFF2, 9, 1},
                          {0xFFFF, 0, 0},
                          // No keys: what was passed stays.
                          {0x123, 42, 43},
                          {0x17F3, 42, 43},
                          {0xF7F3, 42, 43},
                          {0, 42, 43}};
    for (const Key& key : kKeys) {
        bench.module.state().lastKey = key.code;
        std::int16_t number = 42, toggle = 43, status = 7;
        object.ReadIRLastKey(number, toggle, status);
        EXPECT_EQ(number, key.number) << std::hex << key.code;
        EXPECT_EQ(toggle, key.toggle) << std::hex << key.code;
        EXPECT_EQ(status, 0);
    }
    bench.module.fault({.fault = Fault::aux, .count = 5});
    std::int16_t number = 42, toggle = 43, status = 7;
    object.ReadIRLastKey(number, toggle, status);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(toggle, 0);
    EXPECT_EQ(status, 1);
}

TEST(FileDialogsOfTheLink, AskWithTheirTextsAndFolder) {
    LinkBench bench;
    std::vector<FileDialogRequest> asked;
    std::optional<std::string> answer = "/tmp/chosen";
    bench.services->fileDialog = [&](const FileDialogRequest& request) {
        asked.push_back(request);
        return answer;
    };
    std::string name;
    EXPECT_TRUE(bench.link().SaveBINFile(name));
    EXPECT_TRUE(bench.link().OpenBINFile(name));
    EXPECT_TRUE(bench.link().OpenBMPFile(name));
    EXPECT_EQ(name, "/tmp/chosen");
    answer = std::nullopt;
    EXPECT_FALSE(bench.link().OpenBMPFile(name));
    EXPECT_EQ(name, "");

    struct Expected {
        const char *title, *folder, *filter;
        bool save;
    };
    constexpr Expected kExpected[]{{"Sauver fichier BIN pour EEPROM", "/bin", "Fichiers BIN (*.bin)|*.bin", true},
                                   {"Ouvrir fichier BIN pour EEPROM", "/bin", "Fichiers BIN (*.bin)|*.bin", false},
                                   {"Ouvrir fichier BPM pour OPane", "/bmp", "Fichiers BMP (*.bmp)|*.bmp", false}};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(asked[i].title, kExpected[i].title);
        EXPECT_TRUE(asked[i].folder.ends_with(kExpected[i].folder));
        EXPECT_EQ(asked[i].filter, kExpected[i].filter);
        EXPECT_EQ(asked[i].kind == FileDialogRequest::Kind::save, kExpected[i].save);
        EXPECT_EQ(asked[i].overwritePrompt, kExpected[i].save);
    }
}

}  // namespace
}  // namespace opane::test
