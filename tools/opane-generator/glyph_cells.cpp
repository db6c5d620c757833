#include "tools/opane-generator/glyph_cells.h"

#include <optional>

#include "platform/code_page.h"
#include "shared/runtime_error.h"
#include "shared/utf8.h"

namespace opane {
namespace {

Cell filled(Ink ink) {
    Cell cell;
    for (auto& row : cell)
        row.fill(ink);
    return cell;
}

}  // namespace

GlyphCells glyphCells(const GlyphFile& generator, std::span<const std::uint8_t> codes) {
    GlyphCells result;
    for (const std::uint8_t code : codes) {
        if (!generator.has(code)) {
            result.cells.push_back(filled(Ink::absent));
            continue;
        }
        Cell cell = filled(Ink::faulty);
        for (unsigned column = 0; column < kGlyphColumns; ++column) {
            try {
                const unsigned columnByte = generator.column(code, static_cast<int>(column), false);
                for (unsigned row = 0; row < kBlockSize; ++row)
                    cell[row][column] = (columnByte & (0x80U >> row)) != 0 ? Ink::dark : Ink::light;
            } catch (const RuntimeError& error) {
                result.faults.push_back("code " + std::to_string(code) + ", column " + std::to_string(column) + ": " +
                                        error.what());
            }
        }
        result.cells.push_back(cell);
    }
    return result;
}

std::vector<std::uint8_t> codesOfText(const GlyphFile& generator, const std::string& text) {
    const auto refuse = [](const std::string& why) { throw RuntimeError(ErrorNumber::invalidCall, why); };
    if (text.empty())
        refuse("the text is empty; at least one character was expected");
    if (!isValidUtf8(text))
        refuse("the text is not valid UTF-8");
    std::vector<std::uint8_t> codes;
    for (const char32_t character : decodeUtf8(text)) {
        std::string shown;
        appendUtf8(shown, character);
        const std::optional<std::uint8_t> code = codePageByte(character);
        if (!code)
            refuse("the text's character \"" + shown + "\" is not one of Windows-1252");
        if (!generator.has(*code))
            refuse("the text's character \"" + shown + "\" (code " + std::to_string(*code) +
                   ") is not in the generator");
        codes.push_back(*code);
    }
    return codes;
}

}  // namespace opane
