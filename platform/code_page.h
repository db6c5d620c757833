#pragma once

#include <cstdint>
#include <optional>

namespace opane {

/// The single-byte code page of generator files and version texts: Windows-1252 on POSIX, the system's on Windows. The
/// five codes that Windows-1252 leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) are the control characters of the same
/// number, as Windows has them.

/// The code of a character; nothing when the code page lacks it (it is never replaced by a likeness).
std::optional<std::uint8_t> codePageByte(char32_t character);

/// The character of a code.
char32_t codePageCharacter(std::uint8_t code);

}  // namespace opane
