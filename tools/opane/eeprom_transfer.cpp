#include "eeprom_transfer.h"

#include <algorithm>
#include <iostream>

#include "print.h"
#include "progress_bar.h"

namespace opane::tool {
namespace {

constexpr std::size_t kLongestBlock = 128;  // of one exchange
constexpr int kAddressDigits = 3;

void append(std::vector<AddressRange>& ranges, AddressRange next) {
    if (!ranges.empty() && ranges.back().address + ranges.back().length == next.address)
        ranges.back().length += next.length;
    else
        ranges.push_back(next);
}

/// Which blocks of a write that was cut short are written; the one after those is in doubt.
void reportUnfinished(const std::vector<AddressRange>& blocks, std::size_t confirmed) {
    const auto inDoubt = blocks.begin() + static_cast<std::ptrdiff_t>(confirmed);
    const auto report = [](const char* what, const std::vector<AddressRange>& ranges) {
        if (!ranges.empty())
            std::cerr << "opane: " << what << ": " << rangesText(ranges) << '\n';
    };
    report("written and read back", {blocks.begin(), inDoubt});
    report("perhaps written", {*inDoubt});
    report("not written", {inDoubt + 1, blocks.end()});
}

}  // namespace

const Eeprom kSystemEeprom{"system", 1024, &clsOPane::OPaneCmd_ReadEEPROMSystem, &clsOPane::OPaneCmd_WriteEEPROMSystem};
const Eeprom kUserEeprom{"user", 512, &clsOPane::OPaneCmd_ReadEEPROMUser, &clsOPane::OPaneCmd_WriteEEPROMUser};

std::string rangesText(const std::vector<AddressRange>& ranges) {
    std::vector<AddressRange> joined;
    for (const AddressRange& range : ranges)
        append(joined, range);
    std::string text;
    for (const auto& [address, length] : joined) {
        text += (text.empty() ? "" : ", ") + hexText(address, kAddressDigits);
        if (length > 1)
            text += " to " + hexText(address + length - 1, kAddressDigits);
    }
    return text;
}

std::size_t totalLength(const std::vector<AddressRange>& ranges) {
    std::size_t total = 0;
    for (const AddressRange& range : ranges)
        total += range.length;
    return total;
}

std::vector<AddressRange> blocksOf(AddressRange range) {
    std::vector<AddressRange> blocks;
    for (std::size_t done = 0; done < range.length; done += kLongestBlock)
        blocks.push_back({range.address + done, std::min(kLongestBlock, range.length - done)});
    return blocks;
}

std::vector<AddressRange> differences(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other) {
    std::vector<AddressRange> found;
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (one[i] != other[i])
            append(found, {i, 1});
    }
    return found;
}

bool RangeRead::isMissing(std::size_t address) const {
    return std::any_of(missing.begin(), missing.end(), [address](const AddressRange& range) {
        return address >= range.address && address < range.address + range.length;
    });
}

bool EepromTransfer::readBlock(AddressRange block, ByteArray& bytes) {
    return (link_.*eeprom_.read)(static_cast<std::int16_t>(block.address), static_cast<std::int16_t>(block.length),
                                 bytes) &&
           bytes.size() == block.length;
}

RangeRead EepromTransfer::read(AddressRange range) {
    RangeRead result{ByteArray(range.length), {}};
    {
        ProgressBar bar("reading", range.length, showProgress_);
        for (const AddressRange& block : blocksOf(range)) {
            ByteArray bytes;
            // A module that has stopped answering is not asked again: each attempt would take its 18 seconds.
            if ((result.missing.empty() || link_.IsSynchronized()) && readBlock(block, bytes))
                std::copy(bytes.begin(), bytes.end(),
                          result.bytes.begin() + static_cast<std::ptrdiff_t>(block.address - range.address));
            else
                append(result.missing, block);
            bar.advance(block.length);
        }
    }
    if (!result.missing.empty())
        std::cerr << "opane: " << rangesText(result.missing) << " of the " << eeprom_.name
                  << " EEPROM could not be read: the module refused, did not answer or sent another number of bytes\n";
    return result;
}

/// @return why it failed; empty when it succeeded
std::string EepromTransfer::writeBlock(AddressRange block, const ByteArray& bytes) {
    if (!(link_.*eeprom_.write)(static_cast<std::int16_t>(block.address), static_cast<std::int16_t>(block.length),
                                bytes))
        return "the module refused it or did not answer";
    ByteArray readBack;
    if (!readBlock(block, readBack))
        return "it could not be read back";
    return readBack == bytes ? "" : "it reads back as something else";
}

std::size_t EepromTransfer::write(const std::vector<AddressRange>& blocks, std::span<const std::uint8_t> content,
                                  std::size_t base) {
    std::size_t confirmed = 0;
    std::string failure;
    try {
        ProgressBar bar("writing", totalLength(blocks), showProgress_);
        for (; confirmed < blocks.size(); ++confirmed) {
            const AddressRange block = blocks[confirmed];
            const auto bytes = content.subspan(block.address - base, block.length);
            failure = writeBlock(block, {bytes.begin(), bytes.end()});
            if (!failure.empty())
                break;
            bar.advance(block.length);
        }
    } catch (...) {
        reportUnfinished(blocks, confirmed);
        throw;
    }
    if (!failure.empty()) {
        std::cerr << "opane: " << rangesText({blocks[confirmed]}) << " of the " << eeprom_.name
                  << " EEPROM: " << failure << '\n';
        reportUnfinished(blocks, confirmed);
    }
    return totalLength({blocks.begin(), blocks.begin() + static_cast<std::ptrdiff_t>(confirmed)});
}

}  // namespace opane::tool
