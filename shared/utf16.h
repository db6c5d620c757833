#pragma once

#include <string>
#include <string_view>

namespace opane {

/// UTF-8 in UTF-16; each byte that is not valid gives U+FFFD.
std::u16string utf16Text(std::string_view utf8);

/// UTF-16 in UTF-8. A lone surrogate gives bytes that are not valid UTF-8, and so a character that nothing has.
std::string utf8Text(std::u16string_view utf16);

}  // namespace opane
