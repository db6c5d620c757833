#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <iostream>
#include <memory>

#include "platform/file.h"
#include "run_on_link.h"
#include "shared/runtime_error.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

// Offsets in the file; every number is little-endian.
constexpr std::size_t kPixelOffset = 10;
constexpr std::size_t kHeaderSize = 14;  // and where the second header begins
constexpr std::size_t kHeadersEnd = 54;  // of the shortest second header, 40 bytes
constexpr std::size_t kColourBytes = 4;  // blue, green, red, unused

constexpr std::size_t kPixelBytes = std::size_t{64} * 16;  // 64 rows of 15 row bytes and a padding byte
constexpr std::size_t kPixelOffsetEnd = 256;               // the library reads one byte of the offset
/// One byte more than is ever looked at.
constexpr std::size_t kLongestFile = kPixelOffsetEnd + kPixelBytes;

struct Field {
    std::size_t offset;
    std::size_t bytes;
    std::int64_t expected;
    const char* name;
    const char* remark;
};
constexpr Field kFields[]{
    {18, 4, 120, "width", " pixels"},          {22, 4, 64, "height", " pixels, stored from the bottom row up"},
    {26, 2, 1, "number of colour planes", ""}, {28, 2, 1, "number of bits per pixel", ": black and white"},
    {30, 4, 0, "compression", ": none"},
};

/// A signed field of 2 or 4 bytes.
std::int64_t numberAt(const ByteArray& file, std::size_t offset, std::size_t bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        value |= std::uint32_t{file[offset + i]} << (8 * i);
    return bytes == 4 ? static_cast<std::int32_t>(value) : static_cast<std::int16_t>(value);
}

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw InputError("\"" + path + "\" " + why);
}

void checkHeaders(const ByteArray& file, const std::string& path) {
    if (file.empty())
        refuse(path, "is empty; expected a bitmap file");
    if (file.size() < 2 || file[0] != 'B' || file[1] != 'M')
        refuse(path, "is no bitmap file: it does not begin with \"BM\"");
    if (file.size() < kHeadersEnd)
        refuse(path, "ends within its header: it has " + std::to_string(file.size()) + " bytes; expected at least " +
                         std::to_string(kHeadersEnd));
    constexpr std::array<std::int64_t, 5> kHeaderSizes{40, 52, 56, 108, 124};
    const std::int64_t headerSize = numberAt(file, kHeaderSize, 4);
    if (std::find(kHeaderSizes.begin(), kHeaderSizes.end(), headerSize) == kHeaderSizes.end())
        refuse(path,
               "has a second header of " + std::to_string(headerSize) + " bytes; expected 40, 52, 56, 108 or 124");
    for (const Field& field : kFields) {
        const std::int64_t value = numberAt(file, field.offset, field.bytes);
        if (value != field.expected)
            refuse(path, "has the " + std::string(field.name) + " " + std::to_string(value) + "; expected " +
                             std::to_string(field.expected) + field.remark);
    }
    const std::int64_t pixels = numberAt(file, kPixelOffset, 4);
    const std::int64_t paletteEnd = std::int64_t{kHeaderSize} + headerSize + 2 * std::int64_t{kColourBytes};
    if (pixels < paletteEnd || pixels >= std::int64_t{kPixelOffsetEnd})
        refuse(path, "has its pixels at byte " + std::to_string(pixels) + "; expected " + std::to_string(paletteEnd) +
                         ", after two palette entries, to " + std::to_string(kPixelOffsetEnd - 1));
    const std::size_t there = file.size() - std::min(file.size(), static_cast<std::size_t>(pixels));
    if (there < kPixelBytes)
        refuse(path, "ends within its pixels: it has " + std::to_string(there) + " bytes of them; expected " +
                         std::to_string(kPixelBytes));
}

/// Warns when a clear bit, which is dark on the module, is not the darker colour of the file.
void checkPalette(const ByteArray& file, const std::string& path) {
    const std::size_t palette = kHeaderSize + static_cast<std::size_t>(numberAt(file, kHeaderSize, 4));
    const auto lightness = [&](std::size_t entry) {
        const std::size_t colour = palette + entry * kColourBytes;
        return file[colour] + 6 * file[colour + 1] + 3 * file[colour + 2];  // the eye's share of blue, green and red
    };
    if (lightness(0) >= lightness(1))
        std::cerr << "opane: warning: \"" << path
                  << "\" will be shown inverted: the first colour of its palette is not darker than the second\n";
}

void check(const std::string& path) {
    ByteArray file;
    try {
        file = readFile(path, kLongestFile);
    } catch (const RuntimeError& error) {
        throw InputError(error.what());
    }
    checkHeaders(file, path);
    checkPalette(file, path);
}

}  // namespace

Run setUpBitmap(CLI::App& command) {
    const auto path = std::make_shared<std::string>();
    command.add_option("FILE", *path, "bitmap file, 120 x 64 pixels of one bit; the first colour is black")->required();
    return [path](Session& session) {
        check(*path);
        return runOnModule(session, "bitmap", [&](Connection& connection) {
            std::int16_t status = 1;
            connection.object().DisplayBMP(*path, status);
            return status == 0;
        });
    };
}

}  // namespace opane::tool
