#include "platform/file.h"

#include <algorithm>

namespace opane {

ByteArray readFile(const std::string& path, std::size_t maxBytes) {
    const auto file = openToRead(path);
    ByteArray content;
    std::uint8_t chunk[16384];
    std::size_t got = 0;
    do {
        got = file->read(std::span(chunk).first(std::min(sizeof chunk, maxBytes - content.size())));
        content.insert(content.end(), chunk, chunk + got);
    } while (got == sizeof chunk);
    return content;
}

}  // namespace opane
