#include "shared/whole_number.h"

#include <charconv>
#include <system_error>

namespace opane {

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    if (hexadecimal && text.starts_with('-'))
        return std::nullopt;
    std::int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

}  // namespace opane
