#pragma once

#include <limits>
#include <optional>
#include <string_view>

namespace opane {

/// What a text stands for where a number is expected: the one reading of it, in every locale.
struct NumberInText {
    enum class Kind {
        none,      ///< no number
        tooLarge,  ///< beyond every type, or more than 32 bits in hexadecimal or octal
        number,
        bits,  ///< written in hexadecimal or octal, 0 to 2^32 - 1: a type of just that many bits takes them as its bits
    };
    Kind kind = Kind::none;
    long double value = 0;
};

/// Reads a decimal number with a point and an exponent (" -1.5e3"), or one in hexadecimal or octal ("&HFF", "&O17"), in
/// any letter case and with blanks around it. No thousands separators, currencies, brackets or dates.
/// @param text  any single-byte characters; those that are not ASCII are part of no number
NumberInText numberInText(std::string_view text);

/// The text without the blanks around it: spaces, tabs and line ends.
std::string_view withoutBlanks(std::string_view text);

/// Rounds to the nearest integer, halves to the even one, whatever the rounding mode is.
long double roundedHalfToEven(long double value);

/// The same as an integer of that type; nothing outside its range and for what is no number.
template <typename Integer>
std::optional<Integer> roundedTo(long double value) {
    using Limits = std::numeric_limits<Integer>;
    const long double integer = roundedHalfToEven(value);
    if (!(integer >= static_cast<long double>(Limits::min()) && integer <= static_cast<long double>(Limits::max())))
        return std::nullopt;
    return static_cast<Integer>(integer);
}

}  // namespace opane
