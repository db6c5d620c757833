#include "automation/clsOPaneCommDLL.h"
#include "automation/glyph_file.h"
#include "automation/text_layout.h"
#include "link/clsOPane.h"

namespace opane {

void clsOPaneCommDLL::DisplayString(const std::string& strString, std::int16_t intLignePos, std::int16_t intColumnPos,
                                    std::int16_t intPreGap, std::int16_t intInvertedText,
                                    const std::string& strGenCarFile, std::int16_t& intReturnStatus) {
    intReturnStatus = 0;
    if (intInvertedText != 0 && intInvertedText != 1) {
        intReturnStatus = 1;
        return;
    }
    const GlyphFile glyphs = GlyphFile::read(strGenCarFile);
    const TextCodes text = textCodes(strString);
    const auto placement = placeText(text.size(), intColumnPos, intPreGap);
    if (!placement) {
        intReturnStatus = 1;
        return;
    }
    const auto blocks = renderText(text, *placement, intLignePos, intInvertedText == 1, glyphs, *arrActualImage);
    if (!blocks) {
        intReturnStatus = 1;
        return;
    }

    const auto link = threadLink();
    const clsOPane::Running running(*link);
    const auto image = arrActualImage;
    bool allShown = true;
    std::int16_t blockColumn = placement->firstBlock;
    for (const BlockRows& rows : *blocks) {
        allShown = link->OPaneCmd_AffBloc1(intLignePos, blockColumn, ByteArray(rows.begin(), rows.end())) && allShown;
        putBlock(*image, kBlockSize * intLignePos, blockColumn, rows);
        ++blockColumn;
    }
    intReturnStatus = allShown ? 0 : 1;
}

}  // namespace opane
