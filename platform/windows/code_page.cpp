#include "platform/code_page.h"

#include "platform/windows/system_headers.h"

namespace opane {
namespace {

constexpr UINT kWindows1252 = 1252;

/// The system's code page; Windows-1252 where the system's is not of single bytes (UTF-8, the East Asian ones).
UINT singleByteCodePage() {
    CPINFO info{};
    const UINT system = GetACP();
    return GetCPInfo(system, &info) != 0 && info.MaxCharSize == 1 ? system : kWindows1252;
}

}  // namespace

std::optional<std::uint8_t> codePageByte(char32_t character) {
    if (character > 0xFFFF)
        return std::nullopt;
    const auto wide = static_cast<wchar_t>(character);
    char byte = 0;
    BOOL replaced = FALSE;
    const int bytes =
        WideCharToMultiByte(singleByteCodePage(), WC_NO_BEST_FIT_CHARS, &wide, 1, &byte, 1, nullptr, &replaced);
    if (bytes != 1 || replaced != FALSE)
        return std::nullopt;
    return static_cast<std::uint8_t>(byte);
}

char32_t codePageCharacter(std::uint8_t code) {
    const char byte = static_cast<char>(code);
    wchar_t wide = 0;
    return MultiByteToWideChar(singleByteCodePage(), 0, &byte, 1, &wide, 1) == 1 ? wide : code;
}

}  // namespace opane
