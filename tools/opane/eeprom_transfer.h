#pragma once

#include <cstddef>
#include <exception>
#include <span>
#include <string>
#include <vector>

#include "commands/eeprom.h"
#include "connection.h"

namespace opane::tool {

struct AddressRange {
    std::size_t address;
    std::size_t length;
};

/// "0x080 to 0x0FF, 0x3FF"; neighbours are joined.
std::string rangesText(const std::vector<AddressRange>& ranges);

/// The same as a list of objects with "address" and "length".
nlohmann::ordered_json rangesJson(const std::vector<AddressRange>& ranges);

std::size_t totalLength(const std::vector<AddressRange>& ranges);

/// The range in pieces that one exchange carries, each but the last of 128 bytes.
std::vector<AddressRange> blocksOf(AddressRange range);

/// Where two arrays of one size differ.
std::vector<AddressRange> differences(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other);

/// What came of a range. An answer of another length than asked for counts as missing.
struct RangeRead {
    ByteArray bytes;                    ///< of the whole range; 0 where missing
    std::vector<AddressRange> missing;  ///< refused or not answered; the report says so
    std::exception_ptr raised;          ///< an error that has ended the reading; null: none
    bool isMissing(std::size_t address) const;
    bool isWhole() const { return missing.empty(); }
    /// @throws what has ended the reading
    void rethrow() const {
        if (raised)
            std::rethrow_exception(raised);
    }
};

/// Reads and writes ranges of any length that lie in one EEPROM, block by block, with a progress bar.
class EepromTransfer {
public:
    EepromTransfer(Connection& connection, const Eeprom& eeprom) : connection_(connection), eeprom_(eeprom) {}

    const Eeprom& eeprom() const { return eeprom_; }
    Session& session() { return connection_.session(); }
    Report& report() { return connection_.report(); }

    /// An error that is raised ends it, and is kept for after what was read has been shown.
    RangeRead read(AddressRange range);
    RangeRead readAll() { return read({0, eeprom_.size}); }

    /// Writes each block and reads it back; stops at the first one that does not hold then what was written. When not
    /// all are written, also because of an error that is raised, the report says which addresses are and which not.
    /// @param blocks   in the order in which they are written
    /// @param content  what the EEPROM shall hold from address base on
    /// @return how many bytes were written and confirmed: those of all blocks when it succeeded
    std::size_t write(const std::vector<AddressRange>& blocks, std::span<const std::uint8_t> content, std::size_t base);

private:
    enum class BlockEnd { notSent, sent, written };

    bool readBlock(AddressRange block, ByteArray& bytes);
    std::string writeBlock(AddressRange block, const ByteArray& bytes, BlockEnd& end);
    bool showsProgress();
    void sayUnfinished(const std::vector<AddressRange>& blocks, std::size_t confirmed, BlockEnd end);

    Connection& connection_;
    const Eeprom& eeprom_;
};

}  // namespace opane::tool
