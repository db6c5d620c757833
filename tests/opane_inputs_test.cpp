#include <algorithm>

#include "support/opane_program.h"

// What the program opane refuses before anything is sent.

namespace opane::test {
namespace {

struct Refusal {
    const char* name;
    const char* words;  // EMPTY is an empty word
    const char* message;
    std::string content = "";  ///< of FILE
    int status = 2;
};

class OpaneRefusal : public OpaneCommands, public testing::WithParamInterface<Refusal> {};

TEST_P(OpaneRefusal, NamesWhatIsWrongAndSendsNothing) {
    Words words = wordsOf(GetParam().words);
    std::replace(words.begin(), words.end(), std::string("FILE"), folder.write("file", GetParam().content));
    std::replace(words.begin(), words.end(), std::string("EMPTY"), std::string());
    const ProgramEnd end = opane(words);
    EXPECT_EQ(end.status, GetParam().status);
    EXPECT_PRED2(holds, end.errors, GetParam().message);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(module.withModule([](SimulatedModule& served) { return served.handshakes(); }), 0U);
}

const std::string kGood = bitmap(120, 64);

INSTANTIATE_TEST_SUITE_P(
    Words, OpaneRefusal,
    testing::Values(
        Refusal{"missing", "bitmap /nowhere/x.bmp", "its folder does not exist"},
        Refusal{"empty", "bitmap FILE", "is empty"},
        Refusal{"text", "bitmap FILE", "does not begin with \"BM\"", "This is a text."},
        Refusal{"cut_header", "bitmap FILE", "ends within its header", kGood.substr(0, 53)},
        Refusal{"cut_pixels", "bitmap FILE", "1023 bytes of them; expected 1024", kGood.substr(0, kGood.size() - 1)},
        Refusal{"old_header", "bitmap FILE", "second header of 12 bytes", std::string(kGood).replace(14, 1, "\x0C")},
        Refusal{"top_row_first", "bitmap FILE", "height -64; expected 64 pixels, stored from", bitmap(120, -64)},
        Refusal{"pixels_far", "bitmap FILE", "byte 318; expected 62", std::string(kGood).replace(11, 1, "\x01")},
        Refusal{"empty_generator", "text A --line 0 --generator FILE", "holds no character"},
        Refusal{"code_that_a_short_file_lacks", "text z --line 0 --generator FILE", "\"z\"",
                contentOf(OPANE_DEFAULT_GENERATOR).substr(0, 2000)},
        Refusal{"too_long", "text ABCDEFGHIJKLMNOPQRSTU --line 0", "21 characters"},
        Refusal{"a_pixel_too_far", "text ABCDEFGHIJKLMNOPQRST --line 0 --pre-gap 1", "need 121 pixels"},
        Refusal{"left_of_the_screen", "text A --line 0 --pre-gap -1", "pixel column -1"},
        Refusal{"absent_character", "text A日 --line 0", "character 2 of the text, \"日\""},
        Refusal{"no_utf8", "text A\xFF --line 0", "no valid UTF-8"},
        Refusal{"empty_text", "text EMPTY --line 0", "the text is empty"},
        Refusal{"pattern_256", "clear 256", "\"256\"; expected a byte"},
        Refusal{"odd_digits", "block 123 --line 0", "3 hexadecimal digits"},
        Refusal{"too_few_bytes", "line 1122 --line 0", "expected 120"},
        Refusal{"no_hexadecimal", "eeprom write --address 0 0G", "\"G\""},
        Refusal{"baud_12345", "--baud 12345 clear", "--baud: 12345"},
        Refusal{"log_folder", "--log-folder /dev/null/log --log-level 2 clear", "\"/dev/null\" cannot be made"},
        Refusal{"no_command", "", "no command"},
        Refusal{"mistyped_command", "stauts", "unknown command \"stauts\"; is status meant?"},
        Refusal{"missing_device", "--device /nowhere/tty clear", "/nowhere/tty does not exist", "", 3},
        Refusal{"no_serial_device", "--device /dev/null clear", "is no serial device", "", 3},
        Refusal{"empty_device", "--device EMPTY clear", "--device: is empty"},
        Refusal{"option_without_its_value", "--device= status", "--device= is empty"},
        Refusal{"no_time", "--timeout nan status", "--timeout: \"nan\" is no number of seconds"},
        Refusal{"no_flag", "set-status", "no flag is named"},
        Refusal{"backlight_register_6", "backlight read red 6", "the register is \"6\"; expected 0 physical"},
        Refusal{"backlight_value_256", "backlight write red 0 256", "the value is \"256\"; expected a byte"},
        Refusal{"controller_value_negative", "controller write data -1", "the value is \"-1\""},
        Refusal{"rate_that_there_is_not", "baudrate 14400", "14400 not in"},
        Refusal{"rate_of_quartz_1", "baudrate 38400 --quartz 1", "quartz 1 does not offer 38400 baud"},
        Refusal{"rate_of_quartz_2", "baudrate 57600", "quartz 2 does not offer 57600 baud"},
        Refusal{"eeprom_and_what", "eeprom", "no command of eeprom is given"},
        Refusal{"address_1024", "eeprom dump --address 1024", "\"1024\"; expected 0 to 1023"},
        Refusal{"user_address_512", "eeprom read --user --address 0x200", "expected 0 to 511"},
        Refusal{"length_0", "eeprom read --length 0", "the length is \"0\"; expected 1 to 1024"},
        Refusal{"length_past_the_end", "eeprom read --address 1000 --length 25", "expected 1 to 24"},
        Refusal{"bytes_past_the_end", "eeprom write --address 1023 0102", "2 bytes from address 0x3FF"},
        Refusal{"save_into_a_folder", "eeprom save /tmp", "is a folder"},
        Refusal{"image_too_short", "eeprom restore FILE", "has 1023 bytes; expected 1024", image(1023)},
        Refusal{"image_too_long", "eeprom restore FILE", "has more than 1024 bytes", image(1025)},
        Refusal{"image_of_the_other", "eeprom verify --user FILE", "expected 512", image(1024)}),
    rowName);

}  // namespace
}  // namespace opane::test
