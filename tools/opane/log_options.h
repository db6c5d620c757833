#pragma once

#include "arguments.h"
#include "log/clsLog.h"

namespace opane::tool {

/// Makes the folder that the options or the environment name for the log, and looks whether the file of the day can be
/// written. Nothing when the log writes nothing.
/// @throws InputError for what the options or the environment name, RuntimeError 76 when the library's own folder of
///         the log is missing
void prepareLog(const Arguments& arguments);

/// Gives a new log what the options say.
void setLog(const Arguments& arguments, clsLog& log);

}  // namespace opane::tool
