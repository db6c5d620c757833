#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "shared/frame_byte.h"

namespace opane::test {

using Glyph = std::array<std::uint8_t, 6>;

/// The glyph that the made generators have for a code: columns that tell codes and columns apart.
inline Glyph glyphOf(std::uint8_t code) {
    Glyph glyph{};
    for (std::size_t column = 0; column < glyph.size(); ++column)
        glyph[column] = static_cast<std::uint8_t>(code * 5 + static_cast<int>(column) * 41);
    return glyph;
}

/// A tagged value of that many bytes, little-endian.
template <std::size_t Bytes>
ByteArray tagged(std::uint16_t tag, std::uint64_t value) {
    ByteArray bytes{static_cast<std::uint8_t>(tag & 0xFF), static_cast<std::uint8_t>(tag >> 8)};
    for (std::size_t i = 0; i < Bytes; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    return bytes;
}

/// A generator file that has every code, 26 bytes a record, but for one element of one code.
inline ByteArray generatorWith(int code, int element, const ByteArray& replacement) {
    ByteArray bytes;
    for (int k = 0; k < 256; ++k) {
        const Glyph glyph = glyphOf(static_cast<std::uint8_t>(k));
        for (int e = 0; e < 8; ++e) {
            ByteArray value;
            if (k == code && e == element)
                value = replacement;
            else if (e == 0)
                value = {8, 0, 1, 0, static_cast<std::uint8_t>(k)};
            else
                value = {17, 0, e == 1 ? std::uint8_t{0} : glyph[static_cast<std::size_t>(e - 2)]};
            bytes.insert(bytes.end(), value.begin(), value.end());
        }
    }
    return bytes;
}

/// The bytes as the content of a file.
inline std::string fileText(const ByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

inline ByteArray generator() {
    return generatorWith(-1, 0, {});
}
inline ByteArray generatorWithElement0(int code, const ByteArray& element) {
    return generatorWith(code, 0, element);
}
inline ByteArray generatorWithColumn(int code, int column, const ByteArray& value) {
    return generatorWith(code, column + 2, value);
}

}  // namespace opane::test
