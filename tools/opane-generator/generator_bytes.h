#pragma once

#include "shared/frame_byte.h"
#include "tools/opane-generator/font_glyphs.h"

namespace opane {

/// The generator file of these glyphs (docs/character-generator.md), every column a byte value; a code without glyph
/// has an empty value where its character would stand.
ByteArray generatorBytes(const FontGlyphs& glyphs);

}  // namespace opane
