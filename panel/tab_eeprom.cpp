#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "commands/eeprom.h"
#include "panel/frmOPane.h"
#include "panel/number_text.h"
#include "panel/panel_texts.h"
#include "platform/dialogs.h"
#include "platform/file.h"
#include "platform/whole_file.h"

namespace opane {
namespace {

constexpr std::size_t kLineBytes = 16;  // of a text
constexpr auto kLineEnd = "\r\n";

const Eeprom& chosenEeprom(const frmOPane& form) {
    return form.optEEPROMType.selected() == 0 ? kUserEeprom : kSystemEeprom;
}

std::string nameOf(const Eeprom& eeprom) {
    return &eeprom == &kUserEeprom ? "User EEPROM" : "System EEPROM";
}

std::size_t blocksOf(const Eeprom& eeprom) {
    return eeprom.size / kMostEepromBytes;
}

/// Reads a range. What comes short of its length counts as not read, what is beyond it is dropped.
std::optional<ByteArray> readRange(clsOPane& link, const Eeprom& eeprom, std::int16_t base, std::int16_t length) {
    ByteArray bytes;
    if (!(link.*eeprom.read)(base, length, bytes) || bytes.size() < static_cast<std::size_t>(length))
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

/// What came of the blocks of an EEPROM, one after the other.
struct BlockResults {
    std::size_t good = 0;
    bool last = false;       // result of the last block; false when one was left out
    bool cancelled = false;  // also in the last block, when there was nothing to leave out any more
};

/// Does something to every block, whatever came of the ones before it, until the operator cancels.
/// @param atBlock  its argument is the block's base address, its result whether it succeeded
template <class AtBlock>
BlockResults forEachBlock(window::Form& form, const Eeprom& eeprom, const char* what, AtBlock atBlock) {
    window::LongWork work(form, what + nameOf(eeprom), static_cast<int>(blocksOf(eeprom)));
    BlockResults results;
    for (std::size_t block = 0; block < blocksOf(eeprom); ++block) {
        if (!work.advance(static_cast<int>(block)))
            return {results.good, false, true};
        results.last = atBlock(static_cast<std::int16_t>(block * kMostEepromBytes));
        results.good += results.last ? 1 : 0;
    }
    results.cancelled = !work.advance(static_cast<int>(blocksOf(eeprom)));
    return results;
}

std::string dumpLines(const std::optional<ByteArray>& block) {
    std::string text;
    for (std::size_t i = 0; i < kMostEepromBytes; ++i) {
        text += block ? hexByteText((*block)[i]) : "--";
        text += ' ';
        if (i % kLineBytes == kLineBytes - 1)
            text += kLineEnd;
    }
    return text;
}

std::string rangeText(const ByteArray& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i != 0 && i % kLineBytes == 0)
            text += kLineEnd;
        text += hexByteText(bytes[i]);
    }
    return text;
}

struct Range {
    std::int16_t base;
    std::int16_t length;
};

/// The range that is typed; nothing when it is refused. Whether it lies in the EEPROM, the command decides.
std::optional<Range> typedRange(const frmOPane& form) {
    const std::string& base = form.txtEEPROMBaseAdress.text();
    const std::string& length = form.txtEEPROMLength.text();
    const auto baseNumber = hexNumber(base);
    const auto lengthNumber = hexNumber(length);
    if (base.empty() || length.empty())
        panel::refuse(panel_texts::kRangeEmpty, panel_texts::kEepromTitle);
    else if (!baseNumber)
        panel::refuse(panel_texts::kBaseNumber, panel_texts::kEepromTitle);
    else if (!lengthNumber)
        panel::refuse(panel_texts::kLengthNumber, panel_texts::kEepromTitle);
    else
        return Range{*baseNumber, *lengthNumber};
    return std::nullopt;
}

}  // namespace

void frmOPane::cmdReadAllEEPROM_Click() {
    const panel::Link link;
    const Eeprom& eeprom = chosenEeprom(*this);
    std::vector<std::optional<ByteArray>> blocks;
    const BlockResults results = forEachBlock(*this, eeprom, "Reading the ", [&](std::int16_t base) {
        blocks.push_back(readRange(*link, eeprom, base, kMostEepromBytes));
        return blocks.back().has_value();
    });
    blocks.resize(blocksOf(eeprom));
    std::string strDump;
    for (const auto& block : blocks)
        strDump += dumpLines(block);
    txtEEPROMData.text(strDump);
    DisplayCommandStatus(results.last);
}

void frmOPane::cmdSaveBINFile_Click() {
    const panel::Link link;
    std::string strFileName;
    if (!link->SaveBINFile(strFileName)) {
        DisplayCommandStatus(false);
        return;
    }
    checkWholeFile(strFileName);  // before the EEPROM is read; what is there stays until all has been read
    ByteArray image;
    const BlockResults results = forEachBlock(*this, kSystemEeprom, "Saving the ", [&](std::int16_t base) {
        const auto block = readRange(*link, kSystemEeprom, base, kMostEepromBytes);
        if (block)
            image.insert(image.end(), block->begin(), block->end());
        return block.has_value();
    });
    if (results.cancelled)
        panel::refuse(panel_texts::kSaveCancelled, panel_texts::kEepromTitle);
    else if (results.good != blocksOf(kSystemEeprom))
        panel::refuse(panel_texts::kNothingSaved, panel_texts::kEepromTitle);
    else
        writeWholeFile(strFileName, image);
    DisplayCommandStatus(results.last && !results.cancelled);
}

void frmOPane::cmdWriteAllEEPROM_Click() {
    const panel::Link link;
    std::string strFileName;
    if (!link->OpenBINFile(strFileName)) {
        DisplayCommandStatus(false);
        return;
    }
    const ByteArray image = readFile(strFileName, kSystemEeprom.size + 1);
    if (image.size() != kSystemEeprom.size)
        return panel::refuse(panel_texts::kImageSize, panel_texts::kEepromTitle);
    const BlockResults results = forEachBlock(*this, kSystemEeprom, "Writing the ", [&](std::int16_t base) {
        const auto block = image.begin() + base;
        return (*link.*kSystemEeprom.write)(base, kMostEepromBytes, ByteArray(block, block + kMostEepromBytes));
    });
    if (results.good != blocksOf(kSystemEeprom))
        panel::refuse(("Only " + std::to_string(results.good) + " of " + std::to_string(blocksOf(kSystemEeprom)) +
                       " blocks of the System EEPROM were written.")
                          .c_str(),
                      panel_texts::kEepromTitle);
    DisplayCommandStatus(results.last);
}

void frmOPane::cmdReadEEPROM_Click() {
    const auto range = typedRange(*this);
    if (!range)
        return;
    const auto bytes = readRange(*panel::Link(), chosenEeprom(*this), range->base, range->length);
    if (bytes)
        txtEEPROMDataSmall.text(rangeText(*bytes));
    DisplayCommandStatus(bytes.has_value());
}

void frmOPane::cmdWriteEEPROM_Click() {
    const auto range = typedRange(*this);
    if (!range)
        return;
    const std::string& text = txtEEPROMDataSmall.text();
    if (characterCount(text) != 2 * static_cast<std::size_t>(range->length))
        return panel::refuse(panel_texts::kDataLength, panel_texts::kEepromTitle);
    const auto data = hexBytes(text);
    if (!data)
        return panel::refuse(panel_texts::kDataDigits, panel_texts::kEepromTitle);
    DisplayCommandStatus((*panel::Link().*chosenEeprom(*this).write)(range->base, range->length, *data));
}

void frmOPane::cmdEEPROMClearText_Click() {
    txtEEPROMDataSmall.text("");
}

}  // namespace opane
