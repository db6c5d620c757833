#include "tools/opane-generator/font_glyphs.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

#include <ft2build.h>
#include FT_BITMAP_H
#include FT_FREETYPE_H

#include "platform/code_page.h"
#include "platform/file.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

constexpr std::uint8_t kSpace = 0x20;
constexpr std::uint8_t kHyphen = 0x2D;
constexpr std::uint8_t kNoBreakSpace = 0xA0;
constexpr std::uint8_t kSoftHyphen = 0xAD;

constexpr std::size_t kLargestFontBytes = std::size_t{64} * 1024 * 1024;

// Tried for an outline font: below, no letter can be told from another; above, none fits 8 rows.
constexpr int kSmallestPixelSize = 5;
constexpr int kLargestPixelSize = 16;

using Library = std::unique_ptr<std::remove_pointer_t<FT_Library>, decltype(&FT_Done_FreeType)>;
using Face = std::unique_ptr<std::remove_pointer_t<FT_Face>, decltype(&FT_Done_Face)>;

/// A dark pixel, seen from the point where the glyph starts on the baseline: row -1 is the lowest above it.
struct Dot {
    int column;
    int row;
};

struct Drawing {
    std::vector<Dot> dots;
    int advance = 0;  ///< pixels to the next glyph
};

/// The font's drawings at one size; nothing where it lacks the character.
using Drawings = std::array<std::optional<Drawing>, 256>;

Library openLibrary() {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0)
        throw RuntimeError(ErrorNumber::outOfMemory, "FreeType could not be started");
    return {library, &FT_Done_FreeType};
}

/// The bytes have to live as long as the face.
Face openFace(FT_Library library, const ByteArray& bytes, const std::string& path) {
    FT_Face face = nullptr;
    if (FT_New_Memory_Face(library, bytes.data(), static_cast<FT_Long>(bytes.size()), 0, &face) != 0)
        throw RuntimeError(ErrorNumber::invalidFileFormat,
                           "\"" + path + "\" is no font; a bitmap or outline font that FreeType reads was expected");
    return {face, &FT_Done_Face};
}

Drawing drawingOf(FT_Library library, FT_GlyphSlot slot) {
    // One byte per pixel, whatever the font holds.
    FT_Bitmap pixels;
    FT_Bitmap_Init(&pixels);
    if (FT_Bitmap_Convert(library, &slot->bitmap, &pixels, 1) != 0)
        throw RuntimeError(ErrorNumber::outOfMemory, "FreeType could not convert a glyph's bitmap");

    Drawing drawing;
    drawing.advance = static_cast<int>((slot->advance.x + 32) / 64);
    for (unsigned row = 0; row < pixels.rows; ++row)
        for (unsigned column = 0; column < pixels.width; ++column) {
            const int grey = pixels.buffer[row * static_cast<unsigned>(pixels.pitch) + column];
            if (2 * grey >= pixels.num_grays)
                drawing.dots.push_back(
                    {slot->bitmap_left + static_cast<int>(column), static_cast<int>(row) - slot->bitmap_top});
        }
    FT_Bitmap_Done(library, &pixels);
    return drawing;
}

Drawings drawAll(FT_Library library, FT_Face face) {
    Drawings drawings;
    for (unsigned code = 0; code < drawings.size(); ++code) {
        const FT_UInt index = FT_Get_Char_Index(face, codePageCharacter(static_cast<std::uint8_t>(code)));
        if (index != 0 && FT_Load_Glyph(face, index, FT_LOAD_RENDER | FT_LOAD_TARGET_MONO) == 0)
            drawings[code] = drawingOf(library, face->glyph);
    }
    return drawings;
}

/// How far right a drawing is moved. A bitmap stays where its font has it, an outline comes to the middle, a spare
/// column being at the right; what would stick out is pushed in as far as it goes.
int columnShift(const Drawing& drawing, bool outline) {
    if (drawing.dots.empty())
        return 0;
    const auto [left, right] = std::minmax_element(drawing.dots.begin(), drawing.dots.end(),
                                                   [](const Dot& a, const Dot& b) { return a.column < b.column; });
    const int width = right->column - left->column + 1;
    if (width > kGlyphColumns)
        return (kGlyphColumns - width) / 2 - left->column;
    const int wanted = left->column + (outline ? (kGlyphColumns - drawing.advance) / 2 : 0);
    return std::clamp(wanted, 0, kGlyphColumns - width) - left->column;
}

/// How many dots are lost when that many rows lie above the baseline.
std::size_t dotsLost(const Drawings& drawings, int rowsAbove) {
    std::size_t lost = 0;
    for (const auto& drawing : drawings)
        if (drawing)
            lost += static_cast<std::size_t>(std::count_if(
                drawing->dots.begin(), drawing->dots.end(),
                [rowsAbove](const Dot& dot) { return dot.row + rowsAbove < 0 || dot.row + rowsAbove >= kBlockSize; }));
    return lost;
}

/// The rows above the one baseline of all glyphs: what loses least, spare rows being at the bottom.
int bestRowsAbove(const Drawings& drawings) {
    int best = 0;
    for (int rowsAbove = 1; rowsAbove <= kBlockSize; ++rowsAbove)
        if (dotsLost(drawings, rowsAbove) < dotsLost(drawings, best))
            best = rowsAbove;
    return best;
}

FontGlyphs placeInCells(const Drawings& drawings, bool outline, int pixelSize) {
    FontGlyphs glyphs;
    glyphs.pixelSize = pixelSize;
    const int rowsAbove = bestRowsAbove(drawings);
    for (unsigned code = 0; code < drawings.size(); ++code) {
        if (!drawings[code])
            continue;
        const int shift = columnShift(*drawings[code], outline);
        GlyphColumns& columns = glyphs.byCode[code].emplace();
        bool cut = false;
        for (const Dot& dot : drawings[code]->dots) {
            const int column = dot.column + shift;
            const int row = dot.row + rowsAbove;
            if (column < 0 || column >= kGlyphColumns || row < 0 || row >= kBlockSize)
                cut = true;
            else
                columns[static_cast<std::size_t>(column)] |= static_cast<std::uint8_t>(0x80 >> row);
        }
        if (cut)
            glyphs.cutCodes.push_back(static_cast<std::uint8_t>(code));
    }
    return glyphs;
}

/// What a font always needs and may lack.
void addBlanksAndHyphen(FontGlyphs& glyphs) {
    const auto fill = [&glyphs](std::uint8_t code, const std::optional<GlyphColumns>& likeness) {
        if (!glyphs.byCode[code])
            glyphs.byCode[code] = likeness;
    };
    fill(kSpace, GlyphColumns{});
    fill(kNoBreakSpace, glyphs.byCode[kSpace]);
    fill(kSoftHyphen, glyphs.byCode[kHyphen]);
}

struct FontSize {
    int pixels;
    std::optional<FT_Int> strike;  ///< the number of the font's own bitmaps of that size; an outline font has none
};

/// The sizes of a bitmap font, as "8, 10".
std::string listOf(const std::vector<FontSize>& sizes) {
    std::string list;
    for (const FontSize& size : sizes)
        list += (list.empty() ? "" : ", ") + std::to_string(size.pixels);
    return list;
}

/// Smallest first.
std::vector<FontSize> sizesToTry(FT_Face face, std::optional<int> wanted, const std::string& path) {
    std::vector<FontSize> sizes;
    if (FT_IS_SCALABLE(face)) {
        for (int pixels = wanted.value_or(kSmallestPixelSize); pixels <= wanted.value_or(kLargestPixelSize); ++pixels)
            sizes.push_back({pixels, std::nullopt});
        return sizes;
    }
    for (FT_Int strike = 0; strike < face->num_fixed_sizes; ++strike)
        sizes.push_back({static_cast<int>(face->available_sizes[strike].y_ppem / 64), strike});
    std::sort(sizes.begin(), sizes.end(), [](const FontSize& a, const FontSize& b) { return a.pixels < b.pixels; });
    if (!wanted)
        return sizes;
    const auto found =
        std::find_if(sizes.begin(), sizes.end(), [wanted](const FontSize& size) { return size.pixels == *wanted; });
    if (found == sizes.end())
        throw RuntimeError(ErrorNumber::invalidCall, "\"" + path + "\" is a bitmap font without the size " +
                                                         std::to_string(*wanted) + "; it has " + listOf(sizes));
    return {*found};
}

void select(FT_Face face, const FontSize& size, const std::string& path) {
    const FT_Error error = size.strike ? FT_Select_Size(face, *size.strike)
                                       : FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(size.pixels));
    if (error != 0)
        throw RuntimeError(ErrorNumber::invalidCall,
                           "\"" + path + "\" cannot be taken at size " + std::to_string(size.pixels));
}

/// Whether next to nothing is cut: at most one glyph in twenty.
bool fits(const FontGlyphs& glyphs) {
    return 20 * glyphs.cutCodes.size() <= static_cast<std::size_t>(glyphs.count());
}

}  // namespace

int FontGlyphs::count() const {
    return static_cast<int>(
        std::count_if(byCode.begin(), byCode.end(), [](const auto& glyph) { return glyph.has_value(); }));
}

FontGlyphs loadFontGlyphs(const std::string& path, std::optional<int> pixelSize) {
    const ByteArray bytes = readFile(path, kLargestFontBytes);
    const Library library = openLibrary();
    const Face face = openFace(library.get(), bytes, path);

    FontGlyphs best;
    for (const FontSize& size : sizesToTry(face.get(), pixelSize, path)) {
        select(face.get(), size, path);
        FontGlyphs glyphs = placeInCells(drawAll(library.get(), face.get()), FT_IS_SCALABLE(face.get()), size.pixels);
        if (best.pixelSize == 0 || fits(glyphs))
            best = std::move(glyphs);
    }
    if (best.count() == 0)
        throw RuntimeError(ErrorNumber::invalidFileFormat,
                           "font \"" + path + "\" has none of the characters of Windows-1252");
    addBlanksAndHyphen(best);
    return best;
}

}  // namespace opane
