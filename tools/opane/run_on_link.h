#pragma once

#include <functional>

#include "arguments.h"
#include "connection.h"

namespace opane::tool {

/// Connects, then runs it as often as --repeat asks for, on one link.
/// @return kModuleFailed when the module did not answer, else the first end that is no success, after which it stops
ExitStatus repeatOnModule(const Arguments& arguments, const std::function<ExitStatus(Connection&)>& run);

/// The same for a command that reads nothing: says at the end, once, whether all runs succeeded.
/// @param name  of the command
ExitStatus runOnModule(const Arguments& arguments, const char* name, const std::function<bool(Connection&)>& run);

/// The same for one operation of the link.
ExitStatus runOnLink(const Arguments& arguments, const char* name, const std::function<bool(clsOPane&)>& operation);

}  // namespace opane::tool
