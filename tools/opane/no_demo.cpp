#include "subcommands.h"

namespace opane::tool {

std::span<const Subcommand> demoCommands() {
    return {};
}

}  // namespace opane::tool
