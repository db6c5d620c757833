#include "platform/code_page.h"

#include <algorithm>
#include <array>

namespace opane {
namespace {

/// Codes 0x80 to 0x9F of Windows-1252; all other codes are the code points of the same number.
constexpr std::array<char32_t, 32> kHighControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
constexpr char32_t kFirst = 0x80;
constexpr char32_t kLast = 0x9F;

}  // namespace

std::optional<std::uint8_t> codePageByte(char32_t character) {
    if (character < kFirst || (character > kLast && character <= 0xFF))
        return static_cast<std::uint8_t>(character);
    const auto found = std::find(kHighControls.begin(), kHighControls.end(), character);
    if (found == kHighControls.end())
        return std::nullopt;
    return static_cast<std::uint8_t>(kFirst + static_cast<char32_t>(found - kHighControls.begin()));
}

char32_t codePageCharacter(std::uint8_t code) {
    return code >= kFirst && code <= kLast ? kHighControls[code - kFirst] : code;
}

}  // namespace opane
