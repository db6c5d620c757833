#include <gtest/gtest.h>

#include "forms/common_dialog.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "platform/services.h"
#include "shared/utf8.h"

namespace opane::test {
namespace {

struct CodeCase {
    const char* name;
    char32_t character;
    int code;  // -1: the code page lacks it
};

class CodePage : public testing::TestWithParam<CodeCase> {};

TEST_P(CodePage, HasThisCode) {
    const auto code = codePageByte(GetParam().character);
    EXPECT_EQ(code ? int{*code} : -1, GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    Windows1252, CodePage,
    testing::Values(CodeCase{"letter", U'A', 0x41}, CodeCase{"degree", U'°', 0xB0}, CodeCase{"last", U'ÿ', 0xFF},
                    CodeCase{"euro", U'€', 0x80}, CodeCase{"ligature", U'œ', 0x9C}, CodeCase{"capital_y", U'Ÿ', 0x9F},
                    CodeCase{"undefined_0x81", 0x81, 0x81}, CodeCase{"control_0x80_is_not_the_euro", 0x80, -1},
                    CodeCase{"beyond_latin_1", 0x100, -1}, CodeCase{"cyrillic", U'ж', -1},
                    CodeCase{"full_width_a", 0xFF21, -1}, CodeCase{"invalid", kInvalidCharacter, -1}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CodePageTable, GoesThereAndBack) {
    for (int code = 0; code < 256; ++code)
        EXPECT_EQ(codePageByte(codePageCharacter(static_cast<std::uint8_t>(code))), code);
}

struct Utf8Case {
    const char* name;
    std::string bytes;
    std::u32string characters;
};

class Utf8 : public testing::TestWithParam<Utf8Case> {};

constexpr char32_t kBad = kInvalidCharacter;

TEST_P(Utf8, IsDecoded) {
    EXPECT_EQ(decodeUtf8(GetParam().bytes), GetParam().characters);
    if (isValidUtf8(GetParam().bytes)) {
        std::string back;
        for (const char32_t character : GetParam().characters)
            appendUtf8(back, character);
        EXPECT_EQ(back, GetParam().bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(Sequences, Utf8,
                         testing::Values(Utf8Case{"plain", "A", U"A"}, Utf8Case{"two_bytes", "\xC3\xA9", U"é"},
                                         Utf8Case{"three_bytes", "\xE2\x82\xAC", U"€"},
                                         Utf8Case{"four_bytes", "\xF0\x9F\x98\x80", U"\U0001F600"},
                                         Utf8Case{"cut", "A\xE2\x82", {U'A', kBad, kBad}},
                                         Utf8Case{"lone_tail", "\xA9", {kBad}},
                                         Utf8Case{"latin_1", "\xE9tat", {kBad, U't', U'a', U't'}},
                                         Utf8Case{"overlong", "\xC0\xAF", {kBad, kBad}},
                                         Utf8Case{"surrogate", "\xED\xA0\x80", {kBad, kBad, kBad}},
                                         Utf8Case{"beyond_unicode", "\xF4\x90\x80\x80", {kBad, kBad, kBad, kBad}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(FileDialog, GivesTheChoiceAndForgetsItWhenCancelled) {
    std::vector<FileDialogRequest> asked;
    std::optional<std::string> answer = "/tmp/a.bin";
    ServicesScope services;
    services->fileDialog = [&](const FileDialogRequest& request) {
        asked.push_back(request);
        return answer;
    };
    CommonDialog dialog;
    dialog.DialogTitle = "title";
    dialog.Flags = CommonDialog::kOverwritePrompt;
    dialog.ShowSave();
    EXPECT_EQ(dialog.FileName, "/tmp/a.bin");
    EXPECT_TRUE(asked.at(0).overwritePrompt);
    answer = std::nullopt;
    dialog.ShowOpen();
    EXPECT_EQ(dialog.FileName, "");
    EXPECT_FALSE(asked.at(1).overwritePrompt) << "only a save dialog asks";
    EXPECT_EQ(asked.at(1).suggestion, "/tmp/a.bin");
}

TEST(Services, WithoutHandlersALibraryNeverBlocks) {
    EXPECT_EQ(showMessageBox("text", "title", MessageBoxButtons::okCancel), MessageBoxAnswer::ok);
    CommonDialog dialog;
    dialog.ShowOpen();
    EXPECT_EQ(dialog.FileName, "");
}

}  // namespace
}  // namespace opane::test
