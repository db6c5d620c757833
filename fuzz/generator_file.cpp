// A character generator file, whole, and a text shown with it.

#include "automation/glyph_file.h"
#include "automation/text_layout.h"
#include "require.h"
#include "shared/runtime_error.h"

namespace opane::fuzz {
namespace {

template <class Use>
void allowingErrors(Use&& use) {
    try {
        use();
    } catch (const RuntimeError& error) {
        require(error.what()[0] != '\0', "an error without a text");
    }
}

void tryFile(std::span<const std::uint8_t> bytes) {
    const GlyphFile glyphs = GlyphFile::parse(bytes, "generator");
    TextCodes text;
    int shown = 0;
    for (int code = 0; code < kGlyphRecords; ++code) {
        const auto byte = static_cast<std::uint8_t>(code);
        if (!glyphs.has(byte))
            continue;
        ++shown;
        if (text.size() < 20)
            text.emplace_back(byte);
        for (int column = 0; column < kGlyphColumns; ++column) {
            allowingErrors([&] { glyphs.column(byte, column, false); });
            allowingErrors([&] { glyphs.column(byte, column, true); });
        }
    }
    require(shown == glyphs.count(), "the count of characters is not what it has");
    allowingErrors([&] {
        const auto placement = placeText(text.size(), 0, 0);
        if (placement)
            renderText(text, *placement, 7, bytes.size() % 2 == 1, glyphs, ScreenImage{});
    });
}

}  // namespace
}  // namespace opane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    opane::fuzz::allowingErrors([&] { opane::fuzz::tryFile(std::span(data, size)); });
    return 0;
}
