#include <gtest/gtest.h>

#include "forms/common_dialog.h"
#include "platform/code_page.h"
#include "platform/services.h"
#include "shared/utf8.h"

namespace opane::test {
namespace {

TEST(CodePage, IsWindows1252AndGoesThereAndBack) {
    const std::pair<char32_t, int> codes[]{{U'A', 0x41}, {U'°', 0xB0}, {U'ÿ', 0xFF}, {U'€', 0x80},
                                           {U'œ', 0x9C}, {U'Ÿ', 0x9F}, {0x81, 0x81}};
    for (const auto& [character, code] : codes)
        EXPECT_EQ(codePageByte(character), code);
    for (const char32_t lacking : {char32_t{0x80}, char32_t{0x100}, U'ж', char32_t{0xFF21}, kInvalidCharacter})
        EXPECT_FALSE(codePageByte(lacking)) << static_cast<unsigned>(lacking);
    for (int code = 0; code < 256; ++code)
        EXPECT_EQ(codePageByte(codePageCharacter(static_cast<std::uint8_t>(code))), code);
}

TEST(Utf8, IsDecodedAndInvalidBytesAreToldApart) {
    constexpr char32_t kBad = kInvalidCharacter;
    const std::pair<std::string, std::u32string> sequences[]{
        {"A", U"A"},
        {"\xC3\xA9", U"é"},
        {"\xE2\x82\xAC", U"€"},
        {"\xF0\x9F\x98\x80", U"\U0001F600"},
        {"A\xE2\x82", {U'A', kBad, kBad}},               // cut
        {"\xE9tat", {kBad, U't', U'a', U't'}},           // Latin-1
        {"\xA9\xC0\xAF", {kBad, kBad, kBad}},            // a lone tail, overlong
        {"\xED\xA0\x80", {kBad, kBad, kBad}},            // a surrogate
        {"\xF4\x90\x80\x80", {kBad, kBad, kBad, kBad}},  // beyond Unicode
    };
    for (const auto& [bytes, characters] : sequences) {
        EXPECT_EQ(decodeUtf8(bytes), characters);
        std::string back;
        for (const char32_t character : characters)
            appendUtf8(back, character);
        EXPECT_EQ(back == bytes, isValidUtf8(bytes)) << bytes;
    }
}

TEST(FileDialog, SuggestsTheLastChoiceAndAsksOnlyBeforeItSaves) {
    ServicesScope services;
    std::string asked;
    services->fileDialog = [&asked](const FileDialogRequest& request) {
        asked += request.suggestion + (request.overwritePrompt ? "?" : "|");
        return std::optional<std::string>("/tmp/a.bin");
    };
    CommonDialog dialog;
    dialog.Flags = CommonDialog::kOverwritePrompt;
    dialog.ShowSave();
    dialog.ShowOpen();
    EXPECT_EQ(asked, "?/tmp/a.bin|");
}

}  // namespace
}  // namespace opane::test
