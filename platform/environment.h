#pragma once

#include <string>

namespace opane {

/// What an environment variable holds, UTF-8; empty when it is not set.
std::string environmentText(const std::string& name);

}  // namespace opane
