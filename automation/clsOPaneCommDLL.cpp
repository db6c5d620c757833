#include "automation/clsOPaneCommDLL.h"

#include <algorithm>
#include <array>

#include "automation/glyph_file.h"
#include "automation/infrared_key.h"
#include "automation/text_layout.h"
#include "link/clsOPane.h"
#include "link/connection.h"
#include "log/clsLog.h"

namespace opane {
namespace {

constexpr std::int16_t kQuartzType = 2;
constexpr std::int16_t kInfraredKey = 1;  // parameter of the reading

}  // namespace

clsOPaneCommDLL::clsOPaneCommDLL() : arrActualImage(std::make_shared<ScreenImage>()) {
    holder_.adopt(clsOPane::create());
    holder_.adopt(std::make_shared<clsLog>());
    Globals& globals = holder_.globals();
    globals.gintCommPort = 1;
    globals.gintNodeNumber = 3;
    const auto link = threadLink();
    link->Initialize();
    link->CommunicationType("RS232");
}

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

void clsOPaneCommDLL::Synchronize(std::int16_t intComPort, std::int32_t lngBaudrate, std::int16_t intNode,
                                  std::int16_t& intReturnStatus) {
    const auto link = threadLink();
    intReturnStatus = makeConnection(*link, {intComPort, lngBaudrate, intNode, "RS232"}) ? 0 : 1;
}

void clsOPaneCommDLL::Version(std::string& strVersion) {
    strVersion = "OpaneCommDLL V" OPANE_VERSION;
}

void clsOPaneCommDLL::ChangeBaudrate(std::int32_t lngNewBaudrate, std::int16_t& intReturnStatus) {
    intReturnStatus = threadLink()->OPaneCmd_RS232Baudrate(lngNewBaudrate, kQuartzType) ? 0 : 1;
}

void clsOPaneCommDLL::ReadStatus(std::int16_t& intUpSideDown, std::int16_t& intInvertedDisplay,
                                 std::int16_t& intCadreON, std::int16_t& intLCDOn,
                                 std::int16_t& intAutomaticBacklightON, std::int16_t& intReturnStatus) {
    std::array<bool, 5> flags{};
    bool automaticVlcd = false;  // not passed to the host
    const bool read =
        threadLink()->OPaneCmd_ReadStatus(flags[0], flags[1], flags[2], flags[3], flags[4], automaticVlcd);
    const std::array outputs{&intUpSideDown, &intInvertedDisplay, &intCadreON, &intLCDOn, &intAutomaticBacklightON};
    for (std::size_t i = 0; i < outputs.size(); ++i)
        *outputs[i] = read && flags[i] ? 1 : 0;
    intReturnStatus = read ? 0 : 1;
}

void clsOPaneCommDLL::WriteStatus(std::int16_t intUpSideDown, std::int16_t intInvertedDisplay, std::int16_t intCadreON,
                                  std::int16_t intLCDOn, std::int16_t intAutomaticBacklightON,
                                  std::int16_t& intReturnStatus) {
    const std::array flags{intUpSideDown, intInvertedDisplay, intCadreON, intLCDOn, intAutomaticBacklightON};
    intReturnStatus = std::all_of(flags.begin(), flags.end(), [](auto flag) { return flag == 0 || flag == 1; }) ? 0 : 1;
    if (intReturnStatus != 0)
        return;
    const auto link = threadLink();
    const clsOPane::Running running(*link);
    const bool written = link->OPaneCmd_Cadre(intCadreON == 1 ? clsOPane::kFrameDrawn : clsOPane::kNoFrame) &&
                         link->OPaneCmd_WriteStatus(intUpSideDown == 1, intInvertedDisplay == 1, intLCDOn == 1,
                                                    intAutomaticBacklightON == 1, true);
    intReturnStatus = written ? 0 : 1;
}

void clsOPaneCommDLL::DisplayBMP(const std::string& strFileNameWithPath, std::int16_t& intReturnStatus) {
    const auto link = threadLink();
    const auto image = arrActualImage;
    intReturnStatus = link->OPaneCmd_AfficheBMP(strFileNameWithPath, *image) ? 0 : 1;
}

void clsOPaneCommDLL::ReadIRLastKey(std::int16_t& intLastKeyNumber, std::int16_t& intToggleOn,
                                    std::int16_t& intReturnStatus) {
    std::int32_t code = 0;
    if (!threadLink()->OPaneCmd_TempIRandVLCD(kInfraredKey, code)) {
        intReturnStatus = 1;
        intLastKeyNumber = -1;
        intToggleOn = 0;
        return;
    }
    intReturnStatus = 0;
    if (const auto key = decodeInfraredKey(code)) {
        intLastKeyNumber = key->number;
        intToggleOn = key->toggle;
    }
}

}  // namespace opane
