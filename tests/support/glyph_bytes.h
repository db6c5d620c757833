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

/// A generator file that has every code, 26 bytes a record, but for one element of one code: 0 is its text, 1 unused,
/// the glyph's columns follow from kFirstColumn.
constexpr int kFirstColumn = 2;
inline ByteArray generator(int code = -1, int element = 0, const ByteArray& replacement = {}) {
    ByteArray bytes;
    for (int k = 0; k < 256; ++k) {
        const auto byte = static_cast<std::uint8_t>(k);
        const Glyph glyph = glyphOf(byte);
        for (int e = 0; e < 8; ++e) {
            ByteArray value{8, 0, 1, 0, byte};
            if (k == code && e == element)
                value = replacement;
            else if (e != 0)
                value = {17, 0, e == 1 ? std::uint8_t{0} : glyph[static_cast<std::size_t>(e - kFirstColumn)]};
            bytes.insert(bytes.end(), value.begin(), value.end());
        }
    }
    return bytes;
}

/// The bytes as the content of a file.
inline std::string fileText(const ByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace opane::test
