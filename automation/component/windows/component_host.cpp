#include "automation/component/component_host.h"

namespace opane::component {

// A host has the system's own message queue, boxes and dialogs.
ComponentHostScope::ComponentHostScope() = default;

}  // namespace opane::component
