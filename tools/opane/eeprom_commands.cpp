#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "eeprom_transfer.h"
#include "platform/file.h"
#include "platform/whole_file.h"
#include "report.h"
#include "run_on_link.h"
#include "shared/runtime_error.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

using Json = nlohmann::ordered_json;

struct EepromOptions {
    bool user = false;
    std::string address;
    std::string length;
    std::string bytes;
    std::string file;
    bool dryRun = false;

    const Eeprom& eeprom() const { return user ? kUserEeprom : kSystemEeprom; }
};
using Options = std::shared_ptr<EepromOptions>;

Options addEeprom(CLI::App& command) {
    auto options = std::make_shared<EepromOptions>();
    command.add_flag("--user", options->user, "the User EEPROM of 512 bytes; without it the System EEPROM of 1024");
    return options;
}

Options addEepromAndRange(CLI::App& command) {
    Options options = addEeprom(command);
    command.add_option("--address", options->address, "first address, decimal or 0x..; 0 without it");
    command.add_option("--length", options->length, "number of bytes; up to the end without it");
    return options;
}

Options addEepromAndFile(CLI::App& command, const char* help) {
    Options options = addEeprom(command);
    command.add_option("FILE", options->file, help)->required();
    return options;
}

std::size_t parseAddress(const EepromOptions& options) {
    const int last = static_cast<int>(options.eeprom().size) - 1;
    if (options.address.empty())
        return 0;
    return static_cast<std::size_t>(
        parseNumber(options.address, "the address", 0, last,
                    "0 to " + std::to_string(last) + " (" + hexText(static_cast<std::size_t>(last), 3) + "), as the " +
                        options.eeprom().name + " EEPROM has " + std::to_string(last + 1) + " bytes"));
}

AddressRange parseRange(const EepromOptions& options) {
    const std::size_t address = parseAddress(options);
    const std::size_t rest = options.eeprom().size - address;
    if (options.length.empty())
        return {address, rest};
    const int length =
        parseNumber(options.length, "the length", 1, static_cast<int>(rest),
                    "1 to " + std::to_string(rest) + ", where the " + options.eeprom().name + " EEPROM ends");
    return {address, static_cast<std::size_t>(length)};
}

/// Runs a command on the EEPROM that its options name.
ExitStatus onEeprom(Session& session, const EepromOptions& options,
                    const std::function<ExitStatus(EepromTransfer&)>& run) {
    return repeatOnModule(session, [&](Connection& connection) {
        EepromTransfer transfer(connection, options.eeprom());
        return run(transfer);
    });
}

std::string hexDigits(std::uint8_t byte) {
    return hexText(byte, 2).substr(2);
}

/// Null where a byte is missing.
void reportBytes(EepromTransfer& transfer, std::size_t address, const RangeRead& read) {
    Json bytes = Json::array();
    for (std::size_t i = 0; i < read.bytes.size(); ++i)
        bytes.push_back(read.isMissing(address + i) ? Json() : Json(read.bytes[i]));
    transfer.report().values() = {{"eeprom", transfer.eeprom().name}, {"address", address}, {"bytes", bytes}};
}

/// Rows of 16: address, bytes, and their ASCII characters; "--" where a byte is missing.
void printDump(std::size_t address, const RangeRead& read) {
    constexpr std::size_t kRow = 16;
    for (std::size_t row = 0; row < read.bytes.size(); row += kRow) {
        std::string digits;
        std::string characters;
        for (std::size_t i = row; i < std::min(row + kRow, read.bytes.size()); ++i) {
            const std::uint8_t byte = read.bytes[i];
            const bool missing = read.isMissing(address + i);
            digits += (i == row + kRow / 2 ? "  " : " ") + (missing ? "--" : hexDigits(byte));
            characters += missing ? ' ' : byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        }
        digits.resize(3 * kRow + 1, ' ');
        std::cout << hexText(address + row, 3) << ' ' << digits << "  |" << characters << "|\n";
    }
}

/// The file's bytes, exactly as many as the EEPROM has.
ByteArray readImage(const EepromOptions& options) {
    const std::size_t size = options.eeprom().size;
    ByteArray image;
    try {
        image = readFile(options.file, size + 1);
    } catch (const RuntimeError& error) {
        throw InputError(error.what());
    }
    if (image.size() != size)
        throw InputError("\"" + options.file + "\" has " +
                         (image.size() > size ? "more than " + std::to_string(size) : std::to_string(image.size())) +
                         " bytes; expected " + std::to_string(size) + ", the size of the " + options.eeprom().name +
                         " EEPROM");
    return image;
}

/// What would be found only after the reading.
void checkTarget(const std::string& file) {
    try {
        checkWholeFile(file);
    } catch (const RuntimeError& error) {
        throw InputError(error.what());
    }
}

/// The blocks in which something differs.
std::vector<AddressRange> blocksToWrite(const Eeprom& eeprom, const ByteArray& held, const ByteArray& image) {
    std::vector<AddressRange> blocks = blocksOf({0, eeprom.size});
    std::erase_if(blocks, [&](const AddressRange& block) {
        const auto part = [block](const ByteArray& bytes) {
            return std::span(bytes).subspan(block.address, block.length);
        };
        return differences(part(held), part(image)).empty();
    });
    return blocks;
}

/// What differs between EEPROM and file.
void showDifferences(EepromTransfer& transfer, const std::vector<AddressRange>& differing) {
    transfer.report().values()["differing"] = rangesJson(differing);
    if (transfer.report().json())
        return;
    if (differing.empty())
        std::cout << "no difference\n";
    else
        std::cout << "difference at " << rangesText(differing) << " (" << totalLength(differing) << " of "
                  << transfer.eeprom().size << " bytes)\n";
}

/// What a restore has written, or would write.
void showWritten(EepromTransfer& transfer, std::size_t written, const std::vector<AddressRange>& wouldWrite) {
    transfer.report().values()["written"] = written;
    transfer.report().done(std::to_string(written) + " bytes were written and read back");
    if (!wouldWrite.empty())
        transfer.report().values()["wouldWrite"] = rangesJson(wouldWrite);
    if (transfer.report().json())
        return;
    if (!wouldWrite.empty())
        std::cout << "would write " << rangesText(wouldWrite) << " (" << totalLength(wouldWrite)
                  << " bytes, in whole blocks of 128)\n";
    std::cout << written << " bytes written and read back\n";
}

}  // namespace

Run setUpEepromDump(CLI::App& command) {
    const Options options = addEepromAndRange(command);
    return [options](Session& session) {
        const AddressRange range = parseRange(*options);
        return onEeprom(session, *options, [&](EepromTransfer& transfer) {
            const RangeRead read = transfer.read(range);
            if (transfer.report().json())
                reportBytes(transfer, range.address, read);
            else
                printDump(range.address, read);
            read.rethrow();
            return read.isWhole() ? kSuccess : kModuleFailed;
        });
    };
}

Run setUpEepromRead(CLI::App& command) {
    const Options options = addEepromAndRange(command);
    return [options](Session& session) {
        const AddressRange range = parseRange(*options);
        return onEeprom(session, *options, [&](EepromTransfer& transfer) {
            const RangeRead read = transfer.read(range);
            if (transfer.report().json()) {
                reportBytes(transfer, range.address, read);
            } else if (read.isWhole()) {
                for (const std::uint8_t byte : read.bytes)
                    std::cout << hexDigits(byte);
                std::cout << '\n';
            }
            read.rethrow();
            return read.isWhole() ? kSuccess : kModuleFailed;
        });
    };
}

Run setUpEepromWrite(CLI::App& command) {
    const Options options = addEeprom(command);
    command.add_option("--address", options->address, "first address, decimal or 0x..")->required();
    command.add_option("BYTES", options->bytes, "two hexadecimal digits each")->required();
    return [options](Session& session) {
        const std::size_t address = parseAddress(*options);
        const ByteArray bytes = parseHexBytes(options->bytes, "the bytes");
        const Eeprom& eeprom = options->eeprom();
        if (bytes.size() > eeprom.size - address)
            throw InputError(std::to_string(bytes.size()) + " bytes from address " + hexText(address, 3) +
                             " on do not fit: the " + eeprom.name + " EEPROM ends at " + hexText(eeprom.size - 1, 3));
        return onEeprom(session, *options, [&](EepromTransfer& transfer) {
            const std::size_t written = transfer.write(blocksOf({address, bytes.size()}), bytes, address);
            return written == bytes.size() ? kSuccess : kModuleFailed;
        });
    };
}

Run setUpEepromSave(CLI::App& command) {
    const Options options = addEepromAndFile(command, "file to write; replaced only when all bytes were read");
    return [options](Session& session) {
        checkTarget(options->file);
        return onEeprom(session, *options, [&](EepromTransfer& transfer) {
            const RangeRead read = transfer.readAll();
            if (read.isWhole())
                writeWholeFile(options->file, read.bytes);
            else
                transfer.report().fail("\"" + options->file + "\" was not written");
            read.rethrow();
            return read.isWhole() ? kSuccess : kModuleFailed;
        });
    };
}

Run setUpEepromRestore(CLI::App& command) {
    const Options options = addEepromAndFile(command, "file of exactly the EEPROM's size");
    command.add_flag("--dry-run", options->dryRun, "say what differs and write nothing");
    return [options](Session& session) {
        const ByteArray image = readImage(*options);
        return onEeprom(session, *options, [&](EepromTransfer& transfer) {
            const RangeRead held = transfer.readAll();
            transfer.report().values()["eeprom"] = transfer.eeprom().name;
            transfer.report().values()["differing"] = nullptr;
            if (!held.isWhole()) {
                transfer.report().fail("nothing was written");
                held.rethrow();
                return kModuleFailed;
            }
            showDifferences(transfer, differences(held.bytes, image));
            const std::vector<AddressRange> blocks = blocksToWrite(transfer.eeprom(), held.bytes, image);
            if (options->dryRun) {
                showWritten(transfer, 0, blocks);
                return kSuccess;
            }
            const std::size_t written = transfer.write(blocks, image, 0);
            showWritten(transfer, written, {});
            return written == totalLength(blocks) ? kSuccess : kModuleFailed;
        });
    };
}

Run setUpEepromVerify(CLI::App& command) {
    const Options options = addEepromAndFile(command, "file of exactly the EEPROM's size");
    return [options](Session& session) {
        const ByteArray image = readImage(*options);
        return onEeprom(session, *options, [&](EepromTransfer& transfer) {
            const RangeRead held = transfer.readAll();
            transfer.report().values()["eeprom"] = transfer.eeprom().name;
            transfer.report().values()["differing"] = nullptr;
            held.rethrow();
            if (!held.isWhole())
                return kModuleFailed;
            const auto differing = differences(held.bytes, image);
            showDifferences(transfer, differing);
            if (!differing.empty())
                transfer.report().fail(std::string("the ") + transfer.eeprom().name + " EEPROM differs from \"" +
                                       options->file + "\"");
            return differing.empty() ? kSuccess : kModuleFailed;
        });
    };
}

}  // namespace opane::tool
