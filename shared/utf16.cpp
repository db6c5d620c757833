#include "shared/utf16.h"

#include "shared/utf8.h"

namespace opane {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstSupplementary = 0x1'0000;  // the first that takes two units

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

}  // namespace

std::u16string utf16Text(std::string_view utf8) {
    std::u16string result;
    for (char32_t character : decodeUtf8(utf8)) {
        if (character == kInvalidCharacter)
            character = kReplacement;
        if (character >= kFirstSupplementary) {
            result += static_cast<char16_t>(0xD800 + ((character - kFirstSupplementary) >> 10));
            character = 0xDC00 + ((character - kFirstSupplementary) & 0x3FF);
        }
        result += static_cast<char16_t>(character);
    }
    return result;
}

std::string utf8Text(std::u16string_view utf16) {
    std::string result;
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t character = utf16[i];
        if (isHighSurrogate(character) && i + 1 < utf16.size() && isLowSurrogate(utf16[i + 1]))
            character = kFirstSupplementary + ((character - 0xD800) << 10) + (char32_t{utf16[++i]} - 0xDC00);
        appendUtf8(result, character);
    }
    return result;
}

}  // namespace opane
