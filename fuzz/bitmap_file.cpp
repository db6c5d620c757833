// A bitmap file, whole.

#include "commands/bitmap_file.h"
#include "require.h"
#include "shared/runtime_error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using opane::fuzz::require;
    try {
        const opane::BitmapFile file = opane::BitmapFile::parse(std::span(data, size), "bitmap");
        require(file.height >= 0 && file.height <= opane::kScreenHeight, "the height is beyond the screen's");
        require(file.rowBytes >= 0 && file.rowBytes <= opane::kBlockColumns, "the width is beyond the screen's");
        for (int row = 0; row < opane::kScreenHeight; ++row) {
            for (int column = 0; column < opane::kBlockColumns; ++column) {
                const bool inside = row < file.height && column < file.rowBytes;
                require(inside || file.image[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] == 0,
                        "a pixel outside the picture is dark");
            }
        }
    } catch (const opane::RuntimeError& error) {
        require(error.number() == opane::ErrorNumber::subscript, "an error of another number");
    }
    return 0;
}
