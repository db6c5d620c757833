#pragma once

#include <string>

#include "arguments.h"
#include "platform/file.h"
#include "platform/folders.h"

namespace opane::tool {

/// The character generator that comes with the library.
inline std::string defaultGenerator() {
    const std::string folder = dataFolder();
    if (folder.empty())
        throw InputError("no character generator came with this program; name one with --generator");
    return folder + kPathSeparator + "latin1.gen";
}

}  // namespace opane::tool
