#pragma once

#include <string>

#include "arguments.h"

namespace opane::tool {

/// Prints one value that was read: alone on its line, or as a JSON object with that key.
void printValue(const Arguments& arguments, const std::string& key, const std::string& value);

/// Reports how a command ended that reads nothing: nothing for a person when it succeeded.
ExitStatus reportCommand(const Arguments& arguments, const std::string& command, bool succeeded);

}  // namespace opane::tool
