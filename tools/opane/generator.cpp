#include "generator.h"

#include "platform/file.h"
#include "platform/folders.h"
#include "shared/runtime_error.h"

namespace opane::tool {

std::string defaultGenerator() {
    const std::string folder = dataFolder();
    if (folder.empty())
        throw InputError("no character generator came with this program; name one with --generator");
    return folder + kPathSeparator + "latin1.gen";
}

GlyphFile readGenerator(const std::string& path) {
    try {
        GlyphFile glyphs = GlyphFile::read(path);
        if (glyphs.count() == 0)
            throw InputError("\"" + path + "\" holds no character; expected a character generator");
        return glyphs;
    } catch (const RuntimeError& error) {
        throw InputError("character generator: " + std::string(error.what()));
    }
}

}  // namespace opane::tool
