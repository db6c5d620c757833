#pragma once

namespace opane {

/// Whether somebody can see and answer a window of this process: not in a service, for instance.
bool hasVisibleDesktop();

}  // namespace opane
