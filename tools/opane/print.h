#pragma once

#include <cstddef>
#include <string>

#include "arguments.h"

namespace opane::tool {

/// Prints one value that was read: alone on its line, or as a JSON object with that key.
void printValue(const Arguments& arguments, const std::string& key, const std::string& value);

/// Says on standard error, and with --json also as an object, why the program ends with that status.
void reportFailure(const Arguments& arguments, ExitStatus status, const std::string& text);

/// Reports how a command ended that reads nothing: nothing for a person when it succeeded.
ExitStatus reportCommand(const Arguments& arguments, const std::string& command, bool succeeded);

/// A number in upper-case hexadecimal after 0x, with at least that many digits.
std::string hexText(std::size_t value, int digits);

}  // namespace opane::tool
