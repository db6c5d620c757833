#include "eeprom_transfer.h"

#include <algorithm>

#include "progress_bar.h"
#include "shared/runtime_error.h"

namespace opane::tool {
namespace {

constexpr int kAddressDigits = 3;

void append(std::vector<AddressRange>& ranges, AddressRange next) {
    if (!ranges.empty() && ranges.back().address + ranges.back().length == next.address)
        ranges.back().length += next.length;
    else
        ranges.push_back(next);
}

std::vector<AddressRange> joined(const std::vector<AddressRange>& ranges) {
    std::vector<AddressRange> result;
    for (const AddressRange& range : ranges)
        append(result, range);
    return result;
}

}  // namespace

std::string rangesText(const std::vector<AddressRange>& ranges) {
    std::string text;
    for (const auto& [address, length] : joined(ranges)) {
        text += (text.empty() ? "" : ", ") + hexText(address, kAddressDigits);
        if (length > 1)
            text += " to " + hexText(address + length - 1, kAddressDigits);
    }
    return text;
}

nlohmann::ordered_json rangesJson(const std::vector<AddressRange>& ranges) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& [address, length] : joined(ranges))
        list.push_back({{"address", address}, {"length", length}});
    return list;
}

std::size_t totalLength(const std::vector<AddressRange>& ranges) {
    std::size_t total = 0;
    for (const AddressRange& range : ranges)
        total += range.length;
    return total;
}

std::vector<AddressRange> blocksOf(AddressRange range) {
    std::vector<AddressRange> blocks;
    for (std::size_t done = 0; done < range.length; done += kMostEepromBytes)
        blocks.push_back({range.address + done, std::min(kMostEepromBytes, range.length - done)});
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

/// Where a bar would break the lines of a trace, there is none.
bool EepromTransfer::showsProgress() {
    return !session().arguments().trace;
}

/// Which blocks of a write that was cut short are written. The one after those came to some other end.
void EepromTransfer::sayUnfinished(const std::vector<AddressRange>& blocks, std::size_t confirmed, BlockEnd end) {
    const auto cut = blocks.begin() + static_cast<std::ptrdiff_t>(confirmed);
    const auto cutIf = [&](BlockEnd asked) {
        return end == asked ? std::vector<AddressRange>{*cut} : std::vector<AddressRange>{};
    };
    const auto say = [this](const char* what, const char* key, const std::vector<AddressRange>& ranges) {
        if (!ranges.empty())
            report().fail(std::string(what) + ": " + rangesText(ranges));
        report().values()[key] = rangesJson(ranges);
    };
    say("written and read back", "writtenAndReadBack", {blocks.begin(), cut});
    say("written, not read back", "writtenNotReadBack", cutIf(BlockEnd::written));
    say("perhaps written", "perhapsWritten", cutIf(BlockEnd::sent));
    report().values()["written"] = totalLength({blocks.begin(), cut});
    say("not written", "notWritten", {end == BlockEnd::notSent ? cut : cut + 1, blocks.end()});
}

bool EepromTransfer::readBlock(AddressRange block, ByteArray& bytes) {
    return (connection_.link().*eeprom_.read)(static_cast<std::int16_t>(block.address),
                                              static_cast<std::int16_t>(block.length), bytes) &&
           bytes.size() == block.length;
}

RangeRead EepromTransfer::read(AddressRange range) {
    RangeRead result{ByteArray(range.length), {}, nullptr};
    {
        ProgressBar bar("reading", range.length, showsProgress());
        for (const AddressRange& block : blocksOf(range)) {
            ByteArray bytes;
            // A module that has stopped answering is not asked again: each attempt would take long (docs/bounds.md).
            const bool isAsked = result.isWhole() || connection_.link().IsSynchronized();
            bool isRead = false;
            try {
                isRead = isAsked && !result.raised && !session().isCancelled() && readBlock(block, bytes);
            } catch (const RuntimeError&) {
                result.raised = std::current_exception();
            }
            if (isRead)
                std::copy(bytes.begin(), bytes.end(),
                          result.bytes.begin() + static_cast<std::ptrdiff_t>(block.address - range.address));
            else
                append(result.missing, block);
            bar.advance(block.length);
        }
    }
    const std::string what = rangesText(result.missing) + " of the " + eeprom_.name + " EEPROM could not be read";
    if (result.raised)
        report().fail(what);
    else if (!result.isWhole())
        report().fail(what + ": " +
                      (session().isCancelled() ? session().whyNot()
                                               : "the module refused, did not answer or sent another number of bytes"));
    return result;
}

/// @param end  how far it came, also when an error is raised
/// @return why it failed; empty when it succeeded
std::string EepromTransfer::writeBlock(AddressRange block, const ByteArray& bytes, BlockEnd& end) {
    struct Sending {
        const Watcher& watcher;
        BlockEnd& end;
        int before = watcher.framesSent();
        ~Sending() {
            if (end == BlockEnd::notSent && watcher.framesSent() > before)
                end = BlockEnd::sent;
        }
    };
    end = BlockEnd::notSent;
    const Sending sending{connection_.watcher(), end};
    if (!(connection_.link().*eeprom_.write)(static_cast<std::int16_t>(block.address),
                                             static_cast<std::int16_t>(block.length), bytes))
        return session().isCancelled() ? session().whyNot() : "the module refused it or did not answer";
    end = BlockEnd::written;
    ByteArray readBack;
    if (!readBlock(block, readBack))
        return session().isCancelled() ? session().whyNot() : "it could not be read back";
    if (readBack == bytes)
        return "";
    end = BlockEnd::sent;
    return "it reads back as something else";
}

std::size_t EepromTransfer::write(const std::vector<AddressRange>& blocks, std::span<const std::uint8_t> content,
                                  std::size_t base) {
    std::size_t confirmed = 0;
    BlockEnd end = BlockEnd::notSent;  // of the block that is not confirmed yet
    std::string failure;
    try {
        ProgressBar bar("writing", totalLength(blocks), showsProgress());
        for (; confirmed < blocks.size(); ++confirmed) {
            const AddressRange block = blocks[confirmed];
            const auto bytes = content.subspan(block.address - base, block.length);
            failure = writeBlock(block, {bytes.begin(), bytes.end()}, end);
            if (!failure.empty())
                break;
            bar.advance(block.length);
        }
    } catch (...) {
        sayUnfinished(blocks, confirmed, end);
        throw;
    }
    if (!failure.empty()) {
        report().fail(rangesText({blocks[confirmed]}) + " of the " + eeprom_.name + " EEPROM: " + failure);
        sayUnfinished(blocks, confirmed, end);
    }
    return totalLength({blocks.begin(), blocks.begin() + static_cast<std::ptrdiff_t>(confirmed)});
}

}  // namespace opane::tool
