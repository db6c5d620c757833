#include "shared/number_in_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

#include "shared/letter_case.h"

namespace opane {
namespace {

using Kind = NumberInText::Kind;

/// The whole text as a value of that type.
template <typename Value, typename... Format>
NumberInText parseWhole(std::string_view text, Kind kind, Format... format) {
    Value value{};
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value, format...);
    if (rest != end || error == std::errc::invalid_argument)
        return {};
    if (error == std::errc::result_out_of_range)
        return {Kind::tooLarge};
    return {kind, static_cast<long double>(value)};
}

/// Whether a number that no double holds is too small for one rather than too large: where its first digit stands.
bool isNearZero(std::string_view text) {
    const auto mantissa = text.substr(0, text.find_first_of("eE"));
    std::string_view exponentText = text.substr(std::min(mantissa.size() + 1, text.size()));
    if (exponentText.starts_with('+'))
        exponentText.remove_prefix(1);
    const auto exponent = parseWhole<std::int32_t>(exponentText, Kind::number);
    if (exponent.kind == Kind::tooLarge)
        return exponentText.starts_with('-');
    const auto firstDigit = static_cast<long double>(mantissa.find_first_of("123456789"));
    return static_cast<long double>(std::min(mantissa.find('.'), mantissa.size())) - firstDigit + exponent.value < 0;
}

}  // namespace

NumberInText numberInText(std::string_view text) {
    text = withoutBlanks(text);
    if (text.size() > 1 && text[0] == '&') {
        const char letter = lowerCase(text[1]);
        const int base = letter == 'h' ? 16 : 8;
        return letter == 'h' || letter == 'o' ? parseWhole<std::uint32_t>(text.substr(2), Kind::bits, base)
                                              : NumberInText{};
    }
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-')
        text.remove_prefix(1);
    if (text.find_first_of("0123456789") == std::string_view::npos)
        return {};  // the names of infinity and of no number too
    if (const auto whole = parseWhole<std::int64_t>(text, Kind::number); whole.kind == Kind::number)
        return whole;
    const auto real = parseWhole<double>(text, Kind::number);
    if (real.kind == Kind::tooLarge && isNearZero(text))
        return {Kind::number};
    return std::isfinite(real.value) ? real : NumberInText{};
}

std::string_view withoutBlanks(std::string_view text) {
    constexpr const char* kBlanks = " \t\r\n";
    const auto first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

long double roundedHalfToEven(long double value) {
    const long double floor = std::floor(value);
    const long double fraction = value - floor;
    if (fraction != 0.5L)
        return fraction < 0.5L ? floor : floor + 1;
    return std::fmod(floor, 2.0L) == 0 ? floor : floor + 1;
}

}  // namespace opane
