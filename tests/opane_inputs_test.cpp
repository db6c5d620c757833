#include <gtest/gtest.h>

#include <algorithm>

#include "support/opane_program.h"

// What the program takes and what it refuses before anything is sent.

namespace opane::test {
namespace {

/// A white picture with a black pixel in its top left corner.
std::string bitmap(int width, int height, int bits = 1, int headerSize = 40) {
    std::string file = "BM";
    const auto put = [&file](int value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file += static_cast<char>((value >> (8 * i)) & 0xFF);
    };
    file.append(8, 0);
    put(14 + headerSize + 8, 4);
    for (const int field : {headerSize, width, height, 1 | bits << 16})
        put(field, 4);
    file.resize(static_cast<std::size_t>(14 + headerSize + 4));  // the first colour is black,
    put(0xFFFFFF, 4);                                            // the second one white
    const auto rowBytes = static_cast<std::size_t>((width * bits + 31) / 32 * 4);
    std::string pixels(rowBytes * static_cast<std::size_t>(std::abs(height)), '\xFF');
    pixels[pixels.size() - rowBytes] = '\x7F';
    return file + pixels;
}

TEST_F(OpaneCommands, ABitmapIsShownWhole) {
    for (const int headerSize : {40, 124}) {
        set([](ModuleState& served) { served.screen[63].fill(0xFF); });
        const ProgramEnd end = opane({"bitmap", folder.write("white.bmp", bitmap(120, 64, 1, headerSize))});
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.output + end.errors, "");
        ScreenImage expected{};
        expected[0][0] = 0x80;
        EXPECT_EQ(state().screen, expected);
    }
    std::string reversed = bitmap(120, 64);
    std::swap_ranges(reversed.begin() + 54, reversed.begin() + 58, reversed.begin() + 58);
    const ProgramEnd end = opane({"bitmap", folder.write("reversed.bmp", reversed)});
    EXPECT_EQ(end.status, 0);
    EXPECT_NE(end.errors.find("will be shown inverted"), std::string::npos);
}

// --- what is refused before anything is sent

struct Refusal {
    const char* name;
    const char* words;
    const char* message;
    std::string content = "";  ///< of FILE
};

class OpaneRefusal : public OpaneCommands, public testing::WithParamInterface<Refusal> {};

TEST_P(OpaneRefusal, NamesWhatIsWrongAndSendsNothing) {
    Words words = wordsOf(GetParam().words);
    std::replace(words.begin(), words.end(), std::string("FILE"), folder.write("file", GetParam().content));
    std::replace(words.begin(), words.end(), std::string("EMPTY"), std::string());
    const ProgramEnd end = opane(words);
    EXPECT_EQ(end.status, 2);
    EXPECT_NE(end.errors.find(GetParam().message), std::string::npos) << end.errors;
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(requests(), 0U);
    EXPECT_EQ(module.withModule([](SimulatedModule& served) { return served.handshakes(); }), 0U);
}

const std::string kGood = bitmap(120, 64);

INSTANTIATE_TEST_SUITE_P(
    Bitmaps, OpaneRefusal,
    testing::Values(
        Refusal{"missing", "bitmap /nowhere/x.bmp", "its folder does not exist"},
        Refusal{"folder", "bitmap /tmp", "is a folder"}, Refusal{"empty", "bitmap FILE", "is empty"},
        Refusal{"text", "bitmap FILE", "does not begin with \"BM\"", "This is a text."},
        Refusal{"cut_header", "bitmap FILE", "ends within its header", kGood.substr(0, 53)},
        Refusal{"cut_pixels", "bitmap FILE", "1023 bytes of them; expected 1024", kGood.substr(0, kGood.size() - 1)},
        Refusal{"old_header", "bitmap FILE", "second header of 12 bytes", std::string(kGood).replace(14, 1, "\x0C")},
        Refusal{"rows_65", "bitmap FILE", "height 65; expected 64", bitmap(120, 65)},
        Refusal{"top_row_first", "bitmap FILE", "height -64; expected 64 pixels, stored from", bitmap(120, -64)},
        Refusal{"width_4216", "bitmap FILE", "width 4216; expected 120", bitmap(4216, 64)},
        Refusal{"height_4096", "bitmap FILE", "height 4096; expected 64", bitmap(120, 4096)},
        Refusal{"colours", "bitmap FILE", "bits per pixel 8; expected 1", bitmap(120, 64, 8)},
        Refusal{"planes", "bitmap FILE", "colour planes 2; expected 1", std::string(kGood).replace(26, 1, "\x02")},
        Refusal{"compressed", "bitmap FILE", "compression 1; expected 0", std::string(kGood).replace(30, 1, "\x01")},
        Refusal{"pixels_far", "bitmap FILE", "byte 318; expected 62", std::string(kGood).replace(11, 1, "\x01")},
        Refusal{"no_palette", "bitmap FILE", "byte 54; expected 62", std::string(kGood).replace(10, 1, "\x36")}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Inputs, OpaneRefusal,
    testing::Values(
        Refusal{"no_flag", "set-status", "no flag is named"},
        Refusal{"flag_value", "set-status --lcd 1", "--lcd: 1 not in {on,off}"},
        Refusal{"count_without_watch", "key --count 2", "--watch"},
        Refusal{"colour", "backlight read blue", "blue not in {red,green}"},
        Refusal{"backlight_register_6", "backlight read red 6", "the register is \"6\"; expected 0 physical"},
        Refusal{"backlight_register_negative", "backlight write red -1 0", "the register is \"-1\""},
        Refusal{"backlight_value_256", "backlight write red 0 256", "the value is \"256\"; expected a byte"},
        Refusal{"controller_value_negative", "controller write data -1", "the value is \"-1\""},
        Refusal{"controller_register", "controller read 2", "2 not in {command,data}"},
        Refusal{"rate_that_there_is_not", "baudrate 14400", "14400 not in"},
        Refusal{"rate_of_quartz_1", "baudrate 38400 --quartz 1", "quartz 1 does not offer 38400 baud"},
        Refusal{"rate_of_quartz_2", "baudrate 57600", "quartz 2 does not offer 57600 baud"},
        Refusal{"quartz_4", "baudrate 9600 --quartz 4", "--quartz"},
        Refusal{"reset_of_what", "reset all", "all not in {module,light}"},
        Refusal{"eeprom_and_what", "eeprom", "no command of eeprom is given"},
        Refusal{"address_1024", "eeprom dump --address 1024", "\"1024\"; expected 0 to 1023"},
        Refusal{"user_address_512", "eeprom read --user --address 0x200", "expected 0 to 511"},
        Refusal{"address_negative", "eeprom read --address -1", "the address is \"-1\""},
        Refusal{"length_0", "eeprom read --length 0", "the length is \"0\"; expected 1 to 1024"},
        Refusal{"length_past_the_end", "eeprom read --address 1000 --length 25", "expected 1 to 24"},
        Refusal{"odd_digits", "eeprom write --address 0 123", "3 hexadecimal digits"},
        Refusal{"empty_option", "eeprom dump --address EMPTY", "--address: is empty; leave it out for the default"},
        Refusal{"empty_word", "eeprom write --address 0 EMPTY", "is empty"},
        Refusal{"empty_file", "eeprom save EMPTY", "is empty"},
        Refusal{"empty_common_option", "--node EMPTY status", "--node: "},
        Refusal{"empty_rate", "baudrate EMPTY", "RATE: is empty"},
        Refusal{"rate_in_words", "--baud fast status", "--baud: \"fast\" is no whole number"},
        Refusal{"blank_before_a_number", "--node +3 status", "--node: \"+3\" is no whole number"},
        Refusal{"option_without_its_value", "--device= status", "--device= is empty"},
        Refusal{"no_time", "--timeout nan status", "--timeout: \"nan\" is no number of seconds"},
        Refusal{"mistyped_command", "stauts", "unknown command \"stauts\"; is status meant?"},
        Refusal{"no_hexadecimal", "eeprom write --address 0 0G", "\"G\""},
        Refusal{"bytes_past_the_end", "eeprom write --address 1023 0102", "2 bytes from address 0x3FF"},
        Refusal{"save_into_a_folder", "eeprom save /tmp", "is a folder"},
        Refusal{"save_into_no_folder", "eeprom save /nowhere/x", "its folder does not exist"},
        Refusal{"image_too_short", "eeprom restore FILE", "has 1023 bytes; expected 1024", image(1023)},
        Refusal{"image_too_long", "eeprom restore FILE", "has more than 1024 bytes", image(1025)},
        Refusal{"image_of_the_other", "eeprom verify --user FILE", "expected 512", image(1024)},
        Refusal{"missing_image", "eeprom restore /tmp/none/x", "its folder does not exist"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace opane::test
