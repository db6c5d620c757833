#include "tools/opane-generator/generator_bytes.h"

#include "automation/glyph_file.h"

namespace opane {
namespace {

void put16(ByteArray& bytes, std::uint16_t number) {
    bytes.push_back(static_cast<std::uint8_t>(number & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(number >> 8));
}

void putByteValue(ByteArray& bytes, std::uint8_t value) {
    put16(bytes, static_cast<std::uint16_t>(GlyphTag::byte));
    bytes.push_back(value);
}

}  // namespace

ByteArray generatorBytes(const FontGlyphs& glyphs) {
    ByteArray bytes;
    for (unsigned code = 0; code < glyphs.byCode.size(); ++code) {
        const auto& columns = glyphs.byCode[code];
        if (columns) {
            put16(bytes, static_cast<std::uint16_t>(GlyphTag::string));
            put16(bytes, 1);
            bytes.push_back(static_cast<std::uint8_t>(code));
        } else {
            put16(bytes, static_cast<std::uint16_t>(GlyphTag::empty));
        }
        putByteValue(bytes, 0);  // the element that nothing reads
        for (const std::uint8_t column : columns.value_or(GlyphColumns{}))
            putByteValue(bytes, column);
    }
    return bytes;
}

}  // namespace opane
