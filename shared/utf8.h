#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace opane {

/// Stands for a byte that is part of no valid UTF-8 sequence; no code page has it.
inline constexpr char32_t kInvalidCharacter = 0xFFFF'FFFF;

/// Decodes UTF-8 into code points. Each byte that belongs to no valid sequence gives one kInvalidCharacter
/// (overlong forms, surrogates and values above U+10FFFF are not valid).
std::u32string decodeUtf8(std::string_view text);

/// Appends one code point (0..0x10FFFF) as UTF-8.
void appendUtf8(std::string& text, char32_t character);

bool isValidUtf8(std::string_view text);

/// Appends spaces until the text has that many characters (not bytes); a longer text stays as it is.
void padRight(std::string& text, std::size_t characters);

}  // namespace opane
