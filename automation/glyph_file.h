#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "shared/screen_geometry.h"

namespace opane {

class ByteReader;

// The format is described in docs/character-generator.md.

inline constexpr int kGlyphRecords = 256;  ///< one record for each character code, in code order
inline constexpr int kGlyphElements = 8;   ///< the character, one unused value, six pixel columns

/// Type tags of the values in a generator file.
enum class GlyphTag : std::uint16_t {
    empty = 0,
    null = 1,
    int16 = 2,
    int32 = 3,
    float32 = 4,
    float64 = 5,
    currency = 6,
    date = 7,
    string = 8,
    boolean = 11,
    byte = 17,
};

/// A character generator: what is drawn of the 256 records of a file.
class GlyphFile {
public:
    /// Reads a generator file, record by record, so that the longest one, of 134 MB, takes no more memory than a usual
    /// one. What a short file lacks is absent, a record that it cuts included; bytes after the last record are not
    /// looked at.
    /// @param path  UTF-8
    /// @throws RuntimeError as readFile (53 missing, 70, 75, 76), 321 (invalid file format) for an unknown type tag
    static GlyphFile read(const std::string& path);

    /// The same from bytes that are in memory.
    /// @param name  stands in the error's text
    static GlyphFile parse(std::span<const std::uint8_t> bytes, const std::string& name);

    /// Whether the record holds its own character, so that it can be shown.
    bool has(std::uint8_t code) const;

    /// How many of the 256 codes can be shown.
    int count() const;

    /// One pixel column of a glyph as a column byte: bit 7 the top row, a set bit dark.
    /// @param column    0..5 from the left
    /// @param inverted  the complement instead
    /// @throws RuntimeError 6 (overflow), 13 (type mismatch) or 94 (invalid use of null), by the value's tag as
    ///         docs/character-generator.md lists
    std::uint8_t column(std::uint8_t code, int column, bool inverted) const;

private:
    class Parser;

    /// What the value of a pixel column comes to, before it is complemented or narrowed to a byte.
    struct Column {
        enum class Kind : std::uint8_t { integer, byte, null, noNumber, tooLarge };
        Kind kind = Kind::integer;
        std::int64_t value = 0;
    };
    struct Glyph {
        bool isPresent = false;
        std::array<Column, kGlyphColumns> columns;
    };

    static GlyphFile parse(ByteReader& bytes, const std::string& name);

    std::vector<Glyph> glyphs_;  // by code; fewer than 256 from a short file
};

}  // namespace opane
