#pragma once

#include <string>

namespace opane {

/// What an environment variable holds, UTF-8; empty when it is not set. Also in a program that runs with rights that
/// its caller lacks (set-user-id, set-group-id, capabilities): what its caller tells it does not count.
std::string environmentText(const std::string& name);

}  // namespace opane
