#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace opane {

/// A letter of ASCII in lower case; any other character as it is.
template <typename Character>
constexpr Character lowerCase(Character character) {
    return character >= 'A' && character <= 'Z' ? static_cast<Character>(character - 'A' + 'a') : character;
}

/// Whether two texts are the same but for the letter case of ASCII.
template <typename Text>
constexpr bool isSameName(std::string_view one, const Text& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, auto b) { return lowerCase<std::int32_t>(a) == lowerCase<std::int32_t>(b); });
}

}  // namespace opane
