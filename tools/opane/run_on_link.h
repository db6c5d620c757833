#pragma once

#include <functional>

#include "connection.h"

namespace opane::tool {

/// Runs it as often as --repeat asks for; each run ends its report.
/// @return the first end that is no success, after which it stops
ExitStatus repeatRuns(Session& session, const std::function<ExitStatus()>& run);

/// Connects, then runs it as often as --repeat asks for, on one link.
/// @return kModuleFailed when the module did not answer, else as repeatRuns
ExitStatus repeatOnModule(Session& session, const std::function<ExitStatus(Connection&)>& run);

/// What is to be said of the module besides, after a failure; empty: nothing.
using AtWorst = std::function<std::string(Connection&)>;

/// The same for a command that reads nothing: says how far it came when it did not succeed.
/// @param name  of the command
ExitStatus runOnModule(Session& session, const char* name, const std::function<bool(Connection&)>& run,
                       const AtWorst& atWorst = {});

/// The same for one operation of the link.
ExitStatus runOnLink(Session& session, const char* name, const std::function<bool(clsOPane&)>& operation,
                     const AtWorst& atWorst = {});

}  // namespace opane::tool
