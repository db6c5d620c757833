#include "panel/number_text.h"

#include <charconv>
#include <limits>
#include <system_error>

#include "shared/utf8.h"

namespace opane {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr auto kHexadecimal = 16;
constexpr auto kDecimal = 10;

/// The whole text as one number; one beyond 16 bits is the nearest that fits.
std::optional<std::int16_t> number(std::string_view text, int base) {
    std::int16_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, base);
    if (stop != end || error == std::errc::invalid_argument)
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return text.front() == '-' ? std::numeric_limits<std::int16_t>::min() : kLargestNumber;
    return value;
}

}  // namespace

std::string hexText(std::uint32_t value) {
    std::string text;
    do {
        text.insert(text.begin(), kDigits[value % kHexadecimal]);
        value /= kHexadecimal;
    } while (value != 0);
    return text;
}

std::string hexByteText(std::uint8_t value) {
    return {kDigits[value / kHexadecimal], kDigits[value % kHexadecimal]};
}

std::optional<ByteArray> hexBytes(std::string_view text) {
    ByteArray bytes;
    bytes.reserve(text.size() / 2);
    for (; text.size() >= 2; text.remove_prefix(2)) {
        const auto value = hexNumber(text.substr(0, 2), 0xFF);
        if (!value)
            return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(*value));
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

std::optional<std::int16_t> hexNumber(std::string_view text, std::int16_t largest) {
    const auto value = number(text, kHexadecimal);
    return value && text.front() != '-' && *value <= largest ? value : std::nullopt;
}

std::optional<std::int16_t> decimalNumber(std::string_view text) {
    return number(text, kDecimal);
}

std::size_t characterCount(std::string_view text) {
    return decodeUtf8(text).size();
}

}  // namespace opane
